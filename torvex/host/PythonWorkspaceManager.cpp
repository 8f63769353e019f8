#include "NumpyArrays.h" // Python's headers before Qt's
#include <pybind11/eval.h>
#include <pybind11/stl.h>

#include "AppContext.h"
#include "PythonInterpreter.h"
#include "PythonWorkspaceManager.h"

#include <QFile>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace py = pybind11;

namespace torvex {

bool usePythonWorkspace()
{
    AppContext::setWorkspaceFactory([]() -> std::unique_ptr<WorkspaceManager> {
        return std::make_unique<PythonWorkspaceManager>();
    });
    return true;
}

namespace {

// An exception that escaped the console's own handler (a Stop that lands
// between statements) shown as Python shows it, "KeyboardInterrupt" and all.
// Called with the GIL held.
QString exceptionText(const py::error_already_set& e)
{
    try {
        const py::object lines = py::module_::import("traceback").attr("format_exception_only")(e.type(), e.value());
        return QString::fromStdString(py::str("").attr("join")(lines).cast<std::string>());
    } catch (const py::error_already_set&) {
        return QString::fromUtf8(e.what()) + "\n";
    }
}

py::str pyText(const QString& text) { return py::str(text.toStdString()); }

// Whether two arrays are the same view of the same bytes.
bool sameView(const NdArray& a, const NdArray& b)
{
    return a.sharesStorageWith(b) && !a.is_picked() && !b.is_picked() && a.data() == b.data()
           && a.shape() == b.shape() && a.byteStrides() == b.byteStrides() && a.dtype() == b.dtype()
           && a.byteOrder() == b.byteOrder();
}

} // namespace

// The Python objects of one workspace; they are touched with the GIL only.
struct PythonWorkspaceManager::Python {
    py::object console; // workspace_console.py
    py::object names;   // the namespace dict
    // What the map last put under each name: the NumPy object and its array.
    struct Pushed {
        py::object value;
        NdArray array;
    };
    std::map<QString, Pushed> pushed;

    ~Python()
    {
        py::gil_scoped_acquire gil;
        pushed.clear();
        names = py::object();
        console = py::object();
    }
};

// One console statement on its thread. Its mutex guards the fields below it.
struct PythonWorkspaceManager::Run {
    // Read and written with the GIL held: the statement's thread while it
    // runs, and a Stop that came before it began.
    unsigned long threadId = 0;
    bool stopRequested = false;
    std::mutex mutex;
    std::condition_variable doneChanged;
    PythonWorkspaceManager* manager; // null once the manager has gone
    QString pending;
    bool flushPosted = false;
    bool done = false;
    bool failed = false; // written by the statement's thread before finish()

    explicit Run(PythonWorkspaceManager* m) : manager(m) {}

    void append(const QString& text)
    {
        std::lock_guard lock(mutex);
        pending += text;
        // One queued flush for any number of writes: a print loop must not
        // flood the event queue.
        if (manager && !flushPosted) {
            flushPosted = true;
            QMetaObject::invokeMethod(manager, [m = manager] { m->flushOutput(); }, Qt::QueuedConnection);
        }
    }
    void finish()
    {
        std::lock_guard lock(mutex);
        done = true;
        doneChanged.notify_all();
        if (manager)
            QMetaObject::invokeMethod(manager, [m = manager] { m->onRunFinished(); }, Qt::QueuedConnection);
    }
};

PythonWorkspaceManager::PythonWorkspaceManager(QObject* parent)
    : WorkspaceManager(parent), unavailable_(startPythonInterpreter())
{
    if (!unavailable_.isEmpty()) return;
    QFile source(":/host/workspace_console.py");
    if (!source.open(QIODevice::ReadOnly)) {
        unavailable_ = "The console's Python code is missing from this build";
        return;
    }
    py::gil_scoped_acquire gil;
    try {
        auto python = std::make_shared<Python>();
        const py::object console = py::module_::import("types").attr("ModuleType")("workspace_console");
        py::exec(source.readAll().toStdString(), console.attr("__dict__"));
        python->console = console;
        py::dict names;
        names["__name__"] = "__main__";
        names["__builtins__"] = py::module_::import("builtins");
        names["np"] = py::module_::import("numpy");
        python->names = names;
        python_ = std::move(python);
    } catch (const py::error_already_set& e) {
        unavailable_ = QString("The Python console could not be set up: ") + e.what();
    }
}

PythonWorkspaceManager::~PythonWorkspaceManager()
{
    if (!run_) return;
    // Closing while a statement runs: stop it, but never wait long for a
    // statement stuck in a C call; its thread then ends with the process.
    interrupt();
    std::unique_lock lock(run_->mutex);
    const bool done = run_->doneChanged.wait_for(lock, std::chrono::seconds(3), [this] { return run_->done; });
    run_->manager = nullptr;
    lock.unlock();
    if (done) thread_.join();
    else thread_.detach(); // it holds its own reference to the namespace
}

void PythonWorkspaceManager::update_workspace_data(std::map<QString, NdArray>& workspace_data)
{
    QString notes;
    if (python_ && isRunning()) syncPending_ = true; // the statement holds the GIL: catch up when it ends
    else if (python_) notes = syncNamespace(workspace_data);
    WorkspaceManager::update_workspace_data(workspace_data);
    if (!notes.isEmpty()) emit output(notes);
}

QString PythonWorkspaceManager::syncNamespace(const std::map<QString, NdArray>& data)
{
    QString notes;
    py::gil_scoped_acquire gil;
    py::dict names = python_->names;
    auto& pushed = python_->pushed;
    for (auto it = pushed.begin(); it != pushed.end();) {
        if (data.count(it->first)) {
            ++it;
            continue;
        }
        const py::str key = pyText(it->first);
        if (names.contains(key) && py::object(names[key]).is(it->second.value)) PyDict_DelItem(names.ptr(), key.ptr());
        it = pushed.erase(it);
    }
    for (const auto& [name, array] : data) {
        const auto known = pushed.find(name);
        if (known != pushed.end() && sameView(known->second.array, array)) continue;
        const py::str key = pyText(name);
        if (names.contains(key) && (known == pushed.end() || !py::object(names[key]).is(known->second.value))) {
            // The console's own value under that name is kept, under a free name.
            QString kept = name + "_old";
            for (int n = 2; names.contains(pyText(kept)); ++n) kept = name + "_old" + QString::number(n);
            names[pyText(kept)] = names[key];
            notes += "The console's " + name + " is now " + kept + ": " + name + " is the imported array.\n";
        }
        try {
            const py::array view = numpyView(array);
            names[key] = view;
            pushed.insert_or_assign(name, Python::Pushed{view, array});
        } catch (const std::exception& e) {
            notes += name + " could not be shown to Python: " + QString::fromUtf8(e.what()) + "\n";
        }
    }
    return notes;
}

QString PythonWorkspaceManager::takeConsoleChanges()
{
    QString notes;
    std::map<QString, NdArray>& data = get_workspace_data();
    bool changed = false;
    {
        py::gil_scoped_acquire gil;
        py::dict names = python_->names;
        auto& pushed = python_->pushed;
        for (auto it = pushed.begin(); it != pushed.end();) {
            const QString& name = it->first;
            const py::str key = pyText(name);
            if (names.contains(key) && py::object(names[key]).is(it->second.value)) {
                ++it;
                continue;
            }
            changed = true;
            if (!names.contains(key)) {
                notes += name + " was deleted in the console, so it has left the workspace.\n";
            } else {
                const py::object value = names[key];
                const py::object copy = python_->console.attr("workspace_copy")(value);
                if (const auto array = copy.is_none() ? std::nullopt : ndArrayCopy(copy)) {
                    data.insert_or_assign(name, *array);
                    it->second = {value, *array};
                    ++it;
                    continue;
                }
                const std::string kind = py::str(python_->console.attr("describe")(value));
                notes += name + " is now " + QString::fromStdString(kind)
                         + ", which the workspace cannot hold: it stays in the console only.\n";
            }
            data.erase(name);
            it = pushed.erase(it);
        }
    }
    if (changed) WorkspaceManager::update_workspace_data(data);
    return notes;
}

QString PythonWorkspaceManager::run_python(const QString& code)
{
    if (!python_) return unavailable_ + "\n";
    if (isRunning()) return "The console is still running a statement: stop it or wait for it first.\n";
    QString printed;
    {
        py::gil_scoped_acquire gil;
        try {
            const py::cpp_function emitText([&printed](const py::str& text) { printed += QString::fromStdString(text); });
            python_->console.attr("run")(pyText(code), python_->names, emitText);
        } catch (const py::error_already_set& e) {
            printed += exceptionText(e);
        }
    }
    printed += takeConsoleChanges();
    emit workspaceChanged();
    return printed;
}

bool PythonWorkspaceManager::start(const QString& code, const QString& fileName, bool interactive)
{
    if (!python_ || isRunning()) return false;
    run_ = std::make_shared<Run>(this);
    thread_ = std::thread([python = python_, run = run_, code = code.toStdString(), fileName = fileName.toStdString(),
                           interactive] {
        {
            py::gil_scoped_acquire gil;
            run->threadId = PyThread_get_thread_ident();
            if (run->stopRequested) PyThreadState_SetAsyncExc(run->threadId, PyExc_KeyboardInterrupt);
            try {
                const py::cpp_function emitText([run](const py::str& text) { run->append(QString::fromStdString(text)); });
                run->failed = python->console.attr("run")(code, python->names, emitText, fileName, interactive).cast<bool>();
            } catch (const py::error_already_set& e) {
                run->failed = true;
                run->append(exceptionText(e));
            }
            // A Stop that came after the statement's end must not hit later code.
            PyThreadState_SetAsyncExc(run->threadId, nullptr);
            run->threadId = 0;
        }
        run->finish();
    });
    emit started();
    return true;
}

void PythonWorkspaceManager::interrupt()
{
    if (!run_) return;
    // Taking the GIL waits for the statement's next switch: not on the GUI thread.
    std::thread([run = run_] {
        py::gil_scoped_acquire gil;
        if (run->threadId) PyThreadState_SetAsyncExc(run->threadId, PyExc_KeyboardInterrupt);
        else run->stopRequested = true;
    }).detach();
}

void PythonWorkspaceManager::flushOutput()
{
    if (!run_) return;
    QString text;
    {
        std::lock_guard lock(run_->mutex);
        text.swap(run_->pending);
        run_->flushPosted = false;
    }
    if (!text.isEmpty()) emit output(text);
}

void PythonWorkspaceManager::onRunFinished()
{
    thread_.join();
    flushOutput();
    const bool failed = run_->failed;
    run_.reset();
    QString notes = takeConsoleChanges();
    if (syncPending_) {
        syncPending_ = false;
        notes += syncNamespace(get_workspace_data());
    }
    if (!notes.isEmpty()) emit output(notes);
    emit workspaceChanged(); // the console may have made or dropped arrays
    emit finished(failed);
}

const std::vector<WorkspaceVariable>& PythonWorkspaceManager::variables()
{
    if (isRunning()) return variables_;
    variables_.clear();
    if (!python_) {
        for (const auto& [name, array] : get_workspace_data())
            variables_.push_back({name, array.shape(), QString::fromStdString(dtypeName(array.dtype())), array.nbytes()});
        return variables_;
    }
    py::gil_scoped_acquire gil;
    for (const py::handle row : python_->console.attr("arrays")(python_->names)) {
        const auto [name, shape, type, bytes] = row.cast<std::tuple<std::string, std::vector<int64_t>, std::string, int64_t>>();
        variables_.push_back({QString::fromStdString(name), shape, QString::fromStdString(type), bytes});
    }
    return variables_;
}

QString PythonWorkspaceManager::saveVariable(const QString& name, const QString& path)
{
    std::optional<NdArray> array;
    if (!python_) {
        const auto found = get_workspace_data().find(name);
        if (found != get_workspace_data().end()) array = found->second;
    } else if (isRunning()) {
        return "The console is running a statement: save when it has finished";
    } else {
        py::gil_scoped_acquire gil;
        py::dict names = python_->names;
        const py::str key = pyText(name);
        const auto pushed = python_->pushed.find(name);
        const bool isArray = names.contains(key) && py::isinstance<py::array>(names[key]);
        if (isArray && pushed != python_->pushed.end() && py::object(names[key]).is(pushed->second.value)) {
            array = pushed->second.array; // written by the tool's own writer, outside the GIL
        } else if (isArray) {
            try {
                python_->console.attr("save")(names[key], pyText(path));
                return {};
            } catch (const py::error_already_set& e) {
                return QString::fromUtf8(e.what());
            }
        }
    }
    if (!array) return "The variable " + name + " is no longer in the workspace";
    try {
        saveNpy(*array, path);
    } catch (const std::exception& e) {
        return QString::fromStdString(e.what());
    }
    return {};
}

} // namespace torvex
