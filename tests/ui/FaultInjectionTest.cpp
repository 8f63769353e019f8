// The window under faults from outside. Some need a process of their own (root
// ignores permissions; a lowered address-space limit must not reach other
// tests): such a test runs this binary again, filtered to itself, with
// TORVEX_FAULT_DIR set, and the child does that part.
#include "toolboxes/importData/sequence/PlaceholderFrame.h"

#include "FunctionDialogSteps.h"
#include "toolboxes/importData/model/AppContext.h"
#include "toolboxes/importData/ui/ProgressRun.h"
#include "../support/ModalWatcher.h"
#include "../support/WaitUntil.h"

#include <QRegularExpression>
#include <QThread>

#include <csignal>
#include <mutex>

#include <fcntl.h>
#include <grp.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace torvex {
namespace {

using namespace test;

constexpr uid_t kNobody = 65534;
constexpr int kCannotDropPrivileges = 77;

QString childDir() { return qEnvironmentVariable("TORVEX_FAULT_DIR"); }
QByteArray native(const QString& path) { return QFile::encodeName(path); }
bool loaded(const ImportData& w) { return w.imageSequence && !(w._loader_thread && w._loader_thread->isRunning()); }

mode_t fileTypeOf(const QString& path)
{
    struct stat info {};
    return ::lstat(native(path), &info) == 0 ? info.st_mode & S_IFMT : 0;
}

QByteArray bytesOf(const NdArray& array)
{
    const NdArray dense = array.is_contiguous() ? array : array.copy();
    return QByteArray(reinterpret_cast<const char*>(dense.data()), static_cast<qsizetype>(dense.nbytes()));
}

// Gray images, each of one value that tells which file it is.
void writeGrayImages(const QString& folder, int count, int width, int height)
{
    QDir().mkpath(folder);
    for (int i = 0; i < count; ++i)
        writeGrayImage(folder + QString("/img%1.png").arg(i, 3, 10, QChar('0')), width, height, i * 8 + 1);
}

// Runs the current test again in a child that works in `dir`; with `asNobody`
// the child gives up root first. Skips when the child cannot play its part.
void expectChildPasses(const QString& dir, bool asNobody)
{
    QProcess child;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("TORVEX_FAULT_DIR", dir);
    env.insert("HOME", dir);
    child.setProcessEnvironment(env);
    child.setProcessChannelMode(QProcess::MergedChannels);
    if (asNobody && ::geteuid() == 0) {
        ::chmod(native(QFileInfo(dir).path()), 0755);
        EXPECT_EQ(::chown(native(dir), kNobody, kNobody), 0);
        child.setChildProcessModifier([] {
            if (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)
                ::_exit(kCannotDropPrivileges);
        });
    }
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    child.start(QCoreApplication::applicationFilePath(),
                {QString("--gtest_filter=%1.%2").arg(test->test_suite_name(), test->name())});
    if (!child.waitForFinished(120000)) child.kill();
    const std::string out = (child.errorString() + "\n" + child.readAll()).toStdString();
    if (child.error() == QProcess::FailedToStart || child.exitCode() == kCannotDropPrivileges)
        GTEST_SKIP() << "no child as another user: " << out;
    if (out.find("[  SKIPPED ]") != std::string::npos) GTEST_SKIP() << "the child skipped:\n" << out;
    EXPECT_NE(out.find("[  PASSED  ] 1 test."), std::string::npos) << out;
    EXPECT_EQ(child.exitStatus() == QProcess::NormalExit ? child.exitCode() : -1, 0) << out;
}

// One window has loaded the folder whole; a second is still loading it when
// every odd file goes (or, in the child, loses read permission). There each is
// its image or its placeholder, whichever the loader met; loaded again by the
// first window, as when the user confirms the filter, each is its placeholder.
void loseFilesAroundALoad(const QString& folder, bool unreadable)
{
    constexpr int kFiles = 24, kWidth = 40, kHeight = 30;
    writeGrayImages(folder, kFiles, kWidth, kHeight);
    ImportData listed(nullptr, nullptr, {}, folder, true);
    ASSERT_TRUE(waitUntil([&] { return loaded(listed); }));
    const NdArray whole = *listed.imageSequence;
    const QStringList files = *listed.filteredList;
    const auto placeholder = [&](int i) { return bytesOf(renderPlaceholderFrame(files[i], kWidth, kHeight, 1)); };

    ImportData racing(nullptr, nullptr, {}, folder, true);
    for (int i = 1; i < kFiles; i += 2)
        EXPECT_TRUE(unreadable ? ::chmod(native(files[i]), 0) == 0 : QFile::remove(files[i])) << i;
    if (unreadable && QFile(files[1]).open(QIODevice::ReadOnly)) GTEST_SKIP() << "read permission is not enforced";
    listed.onFilterChanged();
    ASSERT_TRUE(waitUntil([&] { return loaded(racing) && loaded(listed); }));
    ASSERT_EQ(whole.shape(), (Shape{kFiles, kHeight, kWidth}));
    ASSERT_EQ(racing.imageSequence->shape(), whole.shape());
    ASSERT_EQ(listed.imageSequence->shape(), whole.shape());
    for (int i = 0; i < kFiles; ++i) {
        const QByteArray image = bytesOf(whole.index(i)), frame = bytesOf(racing.imageSequence->index(i));
        EXPECT_EQ(bytesOf(listed.imageSequence->index(i)), i % 2 ? placeholder(i) : image) << i;
        EXPECT_TRUE(frame == image || (i % 2 && frame == placeholder(i))) << i;
    }
}

TEST(FaultInjection, FilesLostBetweenListingAndLoadingBecomePlaceholders)
{
    if (!childDir().isEmpty()) return loseFilesAroundALoad(childDir() + "/images", true);
    QTemporaryDir dir;
    loseFilesAroundALoad(dir.filePath("images"), false);
    QDir(dir.path()).mkdir("child");
    expectChildPasses(dir.filePath("child"), true);
}

const LoadFunctionParams kSmallPanel{.imgType = "8-bit", .width = 4, .height = 4, .frame = 1};
const QString kSaved = "Success|Function saved successfully.", kFailed = "Error|Failed to save function: ";
const QRegularExpression kReason("(function: ).*");

// Saves the text of a small panel to each target in turn from one dialog and
// returns the messages; `before` and `after` frame the first save. The last
// target, when it is a file, then holds the text.
QStringList saveInTurn(const QStringList& targets, std::function<void()> before = {}, std::function<void()> after = {})
{
    ImportData w;
    setVolumePanel(w, kSmallPanel);
    QStringList boxes;
    std::vector<Step> steps;
    for (const QString& target : targets) {
        steps.insert(steps.end(), {press("Save to File"), saveAs(target, before), messageBox(boxes, after)});
        before = after = {};
    }
    steps.push_back(press("OK"));
    play(w, steps);
    if (fileTypeOf(targets.last()) == S_IFREG) EXPECT_EQ(readFile(targets.last()), w._gen_function(kSmallPanel));
    return boxes;
}

// In the child: a file nobody may write, in a folder nobody may write into.
TEST(FaultInjection, SavesThatFailLeaveTheTargetAsItWasAndTheDialogForAnotherTry)
{
    if (const QString dir = childDir(); !dir.isEmpty()) {
        if (QFile(dir + "/locked/probe").open(QIODevice::WriteOnly)) GTEST_SKIP() << "permissions are not enforced";
        EXPECT_EQ(saveInTurn({dir + "/locked/load.py", dir + "/open/load.py"}).replaceInStrings(kReason, "\\1"),
                  QStringList({kFailed, kSaved}));
        EXPECT_EQ(readFile(dir + "/locked/load.py"), "earlier");
        EXPECT_EQ(QDir(dir + "/locked").entryList(QDir::Files | QDir::Hidden), QStringList{"load.py"});
        return;
    }
    QTemporaryDir dir;
    const QString fifo = dir.filePath("pipe"), cut = writeFile(dir.filePath("cut.py"), "earlier");
    // A FIFO is written in place, not replaced by a file; with nobody reading it
    // the save fails at once instead of waiting, with a reader the text arrives.
    ASSERT_EQ(::mkfifo(native(fifo), 0600), 0);
    EXPECT_EQ(saveInTurn({fifo, dir.filePath("fine.py")}), QStringList({kFailed + std::strerror(ENXIO), kSaved}));
    const int reader = ::open(native(fifo), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_EQ(saveInTurn({fifo}), QStringList{kSaved});
    QByteArray received(10000, '\0');
    received.truncate(std::max<ssize_t>(::read(reader, received.data(), received.size()), 0));
    ::close(reader);
    EXPECT_EQ(received, readFile(dir.filePath("fine.py")));

    // A file-size limit cuts the write short, as a full disk would.
    rlimit old{};
    ::getrlimit(RLIMIT_FSIZE, &old);
    const rlimit tiny{16, old.rlim_max};
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    EXPECT_EQ(saveInTurn({cut, dir.filePath("fine.py")}, [&] { ::setrlimit(RLIMIT_FSIZE, &tiny); },
                         [&] { ::setrlimit(RLIMIT_FSIZE, &old); }).replaceInStrings(kReason, "\\1"),
              QStringList({kFailed, kSaved}));
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(readFile(cut), "earlier");
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), (QStringList{"cut.py", "fine.py"}));

    const QString child = dir.filePath("child");
    QDir().mkpath(child + "/locked");
    QDir().mkpath(child + "/open");
    writeFile(child + "/locked/load.py", "earlier");
    if (::geteuid() == 0) EXPECT_EQ(::chown(native(child + "/locked/load.py"), kNobody, kNobody), 0);
    ::chmod(native(child + "/locked"), 0555);
    ::chmod(native(child + "/open"), 0777);
    expectChildPasses(child, true);
    ::chmod(native(child + "/locked"), 0755);

    // Only now that a node is known to stay a node: the real full device.
    ASSERT_EQ(fileTypeOf(fifo), S_IFIFO);
    if (fileTypeOf("/dev/full") != S_IFCHR) GTEST_SKIP() << "no /dev/full";
    EXPECT_EQ(saveInTurn({"/dev/full", dir.filePath("ok.py")}), QStringList({kFailed + std::strerror(ENOSPC), kSaved}));
    EXPECT_THROW(saveNpy(NdArray::zeros({64, 64}, DType::UInt8), "/dev/full"), std::runtime_error);
    EXPECT_EQ(fileTypeOf("/dev/full"), S_IFCHR);
}

// What cannot be mapped is turned away at once with a clear error, and the
// window keeps its entry: a FIFO that nobody writes, a device, and in a child
// with a tight address-space limit a sparse 64 GiB file, which opens at once
// without that limit.
TEST(FaultInjection, RawFilesThatCannotBeMappedGiveAClearError)
{
    QTemporaryDir parentDir;
    const bool child = !childDir().isEmpty();
    const QString dir = child ? childDir() : parentDir.path(), huge = dir + "/huge.raw";
    if (child) {
        QFile statm("/proc/self/statm");
        ASSERT_TRUE(statm.open(QIODevice::ReadOnly));
        rlimit limit{};
        ::getrlimit(RLIMIT_AS, &limit);
        limit.rlim_cur = statm.readAll().split(' ').first().toULongLong() * ::sysconf(_SC_PAGESIZE) + (1ull << 30);
        if (QFileInfo(huge).size() <= qint64(limit.rlim_cur)) GTEST_SKIP() << "too much address space in use";
        ASSERT_EQ(::setrlimit(RLIMIT_AS, &limit), 0);
    } else {
        ASSERT_EQ(::mkfifo(native(dir + "/pipe.raw"), 0600), 0);
        writeFile(dir + "/small.raw", QByteArray(400 * 640, '\x05'));
    }
    {
        ModalWatcher watcher;
        ImportData w;
        w.openFile(dir + "/small.raw");
        for (const QString& file : child ? QStringList{huge} : QStringList{dir + "/pipe.raw", "/dev/zero"})
            w.openFile(file);
        const QString error = QString("Error|Error reading file:\n") + (child ? "memory" : "Not a regular file");
        EXPECT_EQ(watcher.texts.replaceInStrings(QRegularExpression("\n.*(Not a regular file|memory).*"), "\n\\1"),
                  QStringList(child ? 1 : 2, error));
        EXPECT_FALSE(w.readedBinary);
        ASSERT_EQ(w.ui->listWidget_data->count(), 1);
        w.ui->listWidget_data->setCurrentRow(0);
        EXPECT_EQ(w.transferedData.value_or(NdArray()).minMax(), std::make_pair(5.0, 5.0));
    }
    if (child) return;
    QFile sparse(huge);
    if (!sparse.open(QIODevice::WriteOnly) || !sparse.resize(qint64(64) << 30)) GTEST_SKIP() << "no sparse file here";
    sparse.close();
    {
        ImportData w;
        w.openFile(huge);
        EXPECT_EQ(w.readedBinary.value_or(QByteArray()).size(), qint64(64) << 30);
    }
    expectChildPasses(dir, false);
}

// A raw file cut while open (read as zeros: the mapped file test's) shows a
// clear status, and an import refuses it, leaving the workspace as it was.
TEST(FaultInjection, ARawFileCutWhileOpenIsReportedNotCrashedOn)
{
    QTemporaryDir dir;
    const QString path = writeFile(dir.filePath("v.raw"), QByteArray(400 * 640 * 3, '\x05'));
    AppContext context;
    ImportData w(nullptr, &context);
    w.openFile(path);
    editVolumePanel(w, [](VolumeParams& p) { p.layout.frame = 3; });
    ASSERT_TRUE(QFile::resize(path, 1000));
    w.ui->spinBox_frame->setValue(3);
    EXPECT_TRUE(w.ui->statusbar->currentMessage().startsWith("The file changed on disk while open"));
    w.onImport();
    EXPECT_TRUE(context.get_component("workspace_manager")->get_workspace_data().empty());
}

// Long work shows a dialog whose Cancel stops it; what the work throws reaches the caller.
TEST(FaultInjection, LongWorkCanBeCancelledAndFailuresPassThrough)
{
    ModalWatcher watcher; // closing the dialog cancels it
    ImportData w;
    int64_t reached = 0;
    EXPECT_FALSE(runWithProgress(&w, "Working", [&](const Progress& progress) {
        for (;; QThread::msleep(1)) reportProgress(progress, ++reached, 1 << 30);
    }));
    EXPECT_GT(reached, 100);
    EXPECT_EQ(failure([&] { runWithProgress(&w, "", [](const Progress&) { throw std::runtime_error("disk full"); }); }),
              "disk full");
}

// Follows every load started from now on, caught as its worker moves to its
// thread, before the thread starts. Load i is held in its thread at the file
// numbered hold[i] until it is cancelled and every hold has been reached.
class LoadHook : public QObject {
public:
    explicit LoadHook(std::vector<int> hold) : hold_(std::move(hold)) { QCoreApplication::instance()->installEventFilter(this); }
    ~LoadHook() override { waitUntil([this] { return inside_ == 0; }); }

    // The last file each load reported, with "!" where it also sent a result or an error.
    std::string trail() const
    {
        const std::lock_guard lock(mutex_);
        std::string text;
        for (const auto& load : loads_)
            text += (text.empty() ? "" : " ") + std::to_string(load->lastDone) + (load->reported ? "!" : "");
        return text;
    }

    std::atomic<int> held{0};

private:
    struct Load {
        int index = -1;
        std::atomic<int> lastDone{0};
        std::atomic<bool> reported{false};
    };

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::ThreadChange)
            if (auto* worker = qobject_cast<_ImageLoaderWorker*>(object)) attach(worker);
        return false;
    }

    // A load counts from its first file: one superseded before it ran is no load.
    void attach(_ImageLoaderWorker* worker)
    {
        auto load = std::make_shared<Load>();
        const auto progress = [this, load, worker](int done) {
            int holdAt = -1;
            {
                const std::lock_guard lock(mutex_);
                if (load->index < 0) {
                    load->index = static_cast<int>(loads_.size());
                    loads_.push_back(load);
                }
                if (load->index < int(hold_.size())) holdAt = hold_[load->index];
            }
            load->lastDone = done;
            if (done != holdAt) return;
            ++inside_;
            ++held;
            for (int ms = 0; ms < 30000 && !(worker->_cancelled && held == int(hold_.size())); ++ms)
                QThread::msleep(1);
            --inside_;
        };
        const auto reported = [load] { load->reported = true; };
        QObject::connect(worker, &_ImageLoaderWorker::progress, worker, progress, Qt::DirectConnection);
        QObject::connect(worker, &_ImageLoaderWorker::finished, worker, reported, Qt::DirectConnection);
        QObject::connect(worker, &_ImageLoaderWorker::error, worker, reported, Qt::DirectConnection);
    }

    std::vector<int> hold_;
    std::atomic<int> inside_{0};
    mutable std::mutex mutex_;
    std::vector<std::shared_ptr<Load>> loads_;
};

// 20 000 files are listed whole and the window keeps answering while it loads
// them; a narrower filter supersedes that load, and the window closes during
// the second load while the first still runs out.
TEST(FaultInjection, AFolderOfTwentyThousandFilesListsFiltersAndClosesDuringItsLoad)
{
    constexpr int kFiles = 20000;
    // In memory where there is such a place: a disk makes this many files slowly.
    QTemporaryDir dir(QFileInfo("/dev/shm").isWritable() ? "/dev/shm/torvex-XXXXXX" : QDir::tempPath() + "/t-XXXXXX");
    for (int i = 0; i < kFiles; ++i) {
        const QString name = dir.filePath(QString("f%1.dat").arg(i, 5, 10, QChar('0')));
        ASSERT_EQ(::close(::open(native(name), O_CREAT | O_WRONLY | O_CLOEXEC, 0644)), 0) << i;
    }
    auto* w = new ImportData(nullptr, nullptr, {}, {}, true);
    LoadHook hook({50, 1});
    w->openFile(dir.path());
    EXPECT_EQ(w->filteredList->size(), kFiles);
    EXPECT_EQ(w->ui->listWidget_imageList->count(), kFiles);
    EXPECT_EQ(w->ui->spinBox_rg2->value(), kFiles);
    EXPECT_EQ(w->checkedIndexes.size(), kFiles);
    ASSERT_TRUE(waitUntil([&] {
        // Held as file 50 is reported: the window has heard of the one before.
        return hook.held == 1 && w->ui->statusbar->currentMessage() == QString::fromUtf8("Loading image 49/20000…");
    })) << w->ui->statusbar->currentMessage().toStdString();

    // The field is locked while a load runs; a new source sets the filter off just so.
    w->ui->lineEdit_filter->setText("*77.dat");
    w->onFilterChanged();
    EXPECT_EQ(w->ui->listWidget_imageList->count(), kFiles / 100);
    EXPECT_EQ(w->filteredList->size(), kFiles / 100);
    EXPECT_EQ(w->filteredList->filter(QRegularExpression("77\\.dat$")).size(), kFiles / 100);
    ASSERT_TRUE(waitUntil([&] { return hook.held == 2; }));
    delete w;
    QCoreApplication::processEvents();
    // Each load stopped at the file in hand: nothing after it, neither a result nor an error.
    EXPECT_EQ(hook.trail(), "50 1");
}

TEST(FaultInjection, ClosingTheWindowMidLoadEndsTheLoadSilently)
{
    QTemporaryDir dir;
    writeGrayImages(dir.filePath("images"), 30, 64, 48);
    // One image sets a large canvas for many placeholders: a long second pass.
    writeGrayImages(dir.filePath("texts"), 1, 480, 360);
    const QByteArray lines = QByteArray("a line of text that fills the width of the placeholder\n").repeated(40);
    for (int i = 1; i <= 150; ++i) writeFile(dir.filePath(QString("texts/%1.txt").arg(i)), lines);

    // While decoding, between the passes, and (unheld) as the second pass draws a placeholder per text file.
    struct Stage { const char* folder; int holdAt; std::string trail; };
    for (const Stage& s : {Stage{"images", 4, "4"}, Stage{"images", 30, "30"}, Stage{"texts", -1, "151"}}) {
        auto* w = new ImportData(nullptr, nullptr, {}, {}, true);
        LoadHook hook({s.holdAt});
        w->openFile(dir.filePath(s.folder));
        ASSERT_TRUE(waitUntil([&] { return s.holdAt < 0 ? hook.trail().starts_with(s.trail) : hook.held > 0; }));
        delete w;
        QCoreApplication::processEvents();
        EXPECT_TRUE(hook.trail() == s.trail || (s.holdAt < 0 && hook.trail() == s.trail + "!"))
            << hook.trail() << " instead of " << s.trail;
    }
}

} // namespace
} // namespace torvex
