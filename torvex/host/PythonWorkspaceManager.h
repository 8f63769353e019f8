#pragma once

#include "toolboxes/importData/model/AppContext.h"

#include <memory>
#include <thread>
#include <vector>

namespace torvex {

// One NumPy array of the workspace as the host lists it.
struct WorkspaceVariable {
    QString name;
    Shape shape;
    QString type; // NumPy's name: "uint16", ">f4", "int64", ...
    int64_t bytes;
};

// The workspace as a Python namespace in the embedded interpreter: each
// variable of the map is a NumPy array there under its name, sharing the
// NdArray's memory; names the user makes in the console live beside them.
// A console statement runs on a thread of its own holding the GIL, so that
// the window keeps painting and its Stop button works while it runs (chunking
// cannot split one long NumPy call). All other Python work happens on the
// GUI thread while no statement runs. Where the interpreter cannot start,
// the workspace is the map alone and the console says why.
class PythonWorkspaceManager : public WorkspaceManager {
    Q_OBJECT
public:
    explicit PythonWorkspaceManager(QObject* parent = nullptr);
    ~PythonWorkspaceManager() override;

    void update_workspace_data(std::map<QString, NdArray>& workspace_data) override;
    // Runs the code as the console does, but on the calling thread, and
    // returns all it printed; refused while a console statement runs.
    QString run_python(const QString& code) override;

    // Empty while Python runs here, else why it does not.
    QString unavailableReason() const { return unavailable_; }
    // Starts the code on its own thread: what it prints comes through
    // output(), then finished(), which tells whether the code failed.
    // Interactive code shows the value of each expression statement; a
    // script does not. False, and nothing starts, without Python or while
    // another statement runs.
    bool start(const QString& code, const QString& fileName = "<console>", bool interactive = true);
    bool isRunning() const { return run_ != nullptr; }
    // Raises KeyboardInterrupt in the running statement at its next Python
    // step: a C call that holds the GIL finishes first.
    void interrupt();

    // The NumPy arrays of the namespace by name (the map's without Python;
    // the last listing while a statement runs).
    const std::vector<WorkspaceVariable>& variables();
    // Writes that variable to path as NumPy .npy; the failure text, or empty.
    QString saveVariable(const QString& name, const QString& path);

signals:
    void output(const QString& text);
    void started();
    void finished(bool failed);

private:
    struct Python;
    struct Run;

    QString syncNamespace(const std::map<QString, NdArray>& data);
    QString takeConsoleChanges();
    void flushOutput();
    void onRunFinished();

    QString unavailable_;
    std::shared_ptr<Python> python_;
    std::shared_ptr<Run> run_;
    std::thread thread_;
    bool syncPending_ = false;
    std::vector<WorkspaceVariable> variables_;
};

} // namespace torvex
