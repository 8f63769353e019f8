// The window under faults from outside: files lost between listing and
// loading, saving onto a full device or into a folder it may not write, a raw
// file larger than the memory it may use, a folder of very many files, and the
// window closed in the middle of each stage of a background load.
//
// Some faults need a process of their own: root reads and writes whatever the
// permissions say, and a lowered address-space limit must not reach the other
// tests. Such a test runs this binary again, filtered to itself, with
// TORVEX_FAULT_CHILD naming the part the child plays.
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/ui/ImportDataForm.h"
#include "toolboxes/importData/sequence/PlaceholderFrame.h"

#include "../loadfunction/FunctionDialogSteps.h"
#include "../loadfunction/VolumePanel.h"
#include "../support/ModalWatcher.h"
#include "../support/TempFiles.h"
#include "../support/WaitUntil.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QPointer>
#include <QProcess>
#include <QStatusBar>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <fstream>
#include <thread>

#include <fcntl.h>
#include <grp.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#define TORVEX_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TORVEX_ASAN 1
#endif
#endif

namespace torvex {
namespace {

using namespace std::chrono_literals;
using namespace test;

constexpr uid_t kNobody = 65534;
constexpr int kCannotDropPrivileges = 77;

QString childRole() { return qEnvironmentVariable("TORVEX_FAULT_CHILD"); }
QString childDir() { return qEnvironmentVariable("TORVEX_FAULT_DIR"); }

bool loading(const ImportData& w) { return w._loader_thread && w._loader_thread->isRunning(); }
bool loaded(const ImportData& w) { return w.imageSequence && !loading(w); }

QByteArray bytesOf(const NdArray& array)
{
    const NdArray dense = array.is_contiguous() ? array : array.copy();
    return QByteArray(reinterpret_cast<const char*>(dense.data()), static_cast<qsizetype>(dense.nbytes()));
}

// A gray image whose pixels tell which file it is.
void writeGrayImage(const QString& path, int width, int height, int tag)
{
    QImage image(width, height, QImage::Format_Grayscale8);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) image.scanLine(y)[x] = static_cast<uchar>(tag * 16 + x + y);
    ASSERT_TRUE(image.save(path)) << path.toStdString();
}

QStringList writeGrayImages(const QString& folder, int count, int width, int height)
{
    QDir().mkpath(folder);
    QStringList paths;
    for (int i = 0; i < count; ++i) {
        paths << folder + QString("/img%1.png").arg(i, 3, 10, QChar('0'));
        writeGrayImage(paths.last(), width, height, i);
    }
    return paths;
}

// ---------------------------------------------------------------- child processes

struct ChildRun {
    bool started = false;
    int exitCode = -1;
    std::string output;
};

// Runs the test `name` of this binary in a child that plays `role`; with
// `asNobody` the child gives up root first, so that permissions hold for it.
ChildRun runChild(const QString& name, const QString& role, const QString& dir, bool asNobody)
{
    QProcess child;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("TORVEX_FAULT_CHILD", role);
    env.insert("TORVEX_FAULT_DIR", dir);
    if (asNobody) {
        // A home and a runtime folder of the child's own, inside the test's folder.
        const QString runtime = dir + "/runtime";
        QDir().mkpath(runtime);
        ::chmod(QFile::encodeName(runtime).constData(), 0700);
        if (::geteuid() == 0) {
            EXPECT_EQ(::chown(QFile::encodeName(runtime).constData(), kNobody, kNobody), 0);
        }
        env.insert("HOME", runtime);
        env.insert("XDG_RUNTIME_DIR", runtime);
        child.setChildProcessModifier([] {
            if (::geteuid() != 0) return; // permissions already hold
            if (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)
                ::_exit(kCannotDropPrivileges);
        });
    }
    child.setProcessEnvironment(env);
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.start(QCoreApplication::applicationFilePath(), {"--gtest_filter=FaultInjection." + name});
    ChildRun run;
    run.started = child.waitForStarted(30000);
    if (!run.started) {
        run.output = child.errorString().toStdString();
        return run;
    }
    if (!child.waitForFinished(120000)) {
        child.kill();
        child.waitForFinished();
    }
    run.exitCode = child.exitStatus() == QProcess::NormalExit ? child.exitCode() : -1;
    run.output = child.readAll().toStdString();
    return run;
}

// Passes when the child's test passed, skips when the child could not play its
// part (no way to drop root, a folder nobody may enter), fails otherwise.
#define EXPECT_CHILD_PASSES(run)                                                                                  \
    do {                                                                                                          \
        const ChildRun& r_ = (run);                                                                               \
        if (!r_.started || r_.exitCode == kCannotDropPrivileges)                                                  \
            GTEST_SKIP() << "no child as another user: " << r_.output;                                           \
        if (r_.output.find("[  SKIPPED ]") != std::string::npos) GTEST_SKIP() << "child skipped:\n" << r_.output; \
        EXPECT_EQ(r_.exitCode, 0) << r_.output;                                                                   \
        EXPECT_NE(r_.output.find("[  PASSED  ] 1 test."), std::string::npos) << r_.output;                        \
    } while (false)

// A folder that the child, once it is nobody, may enter; `ownedByChild` gives
// it to nobody, so that the child may also change its files.
QString folderForChild(const QTemporaryDir& root, const QString& name, bool ownedByChild)
{
    ::chmod(QFile::encodeName(root.path()).constData(), 0755);
    const QString folder = root.filePath(name);
    QDir().mkpath(folder);
    ::chmod(QFile::encodeName(folder).constData(), 0755);
    if (ownedByChild && ::geteuid() == 0) {
        EXPECT_EQ(::chown(QFile::encodeName(folder).constData(), kNobody, kNobody), 0);
    }
    return folder;
}

// ---------------------------------------------------------------- lost files

enum class Loss { Vanished, Unreadable };

void lose(const QString& path, Loss loss)
{
    if (loss == Loss::Vanished) {
        EXPECT_TRUE(QFile::remove(path)) << path.toStdString();
    }
    else EXPECT_EQ(::chmod(QFile::encodeName(path).constData(), 0), 0) << path.toStdString();
}

// The folder is listed and loaded whole; then files go (or lose read
// permission) and the listed files load again, as when the user confirms the
// filter. The lost ones come back as placeholder frames, the others as before.
// A second folder loses files while its load runs: each of them is its image
// or its placeholder, whichever the loader met.
void loseFilesAroundALoad(const QString& folder, Loss loss)
{
    if (!QFileInfo(folder).isWritable()) GTEST_SKIP() << "the folder is out of reach";
    constexpr int kWidth = 40, kHeight = 30;
    writeGrayImages(folder + "/listed", 6, kWidth, kHeight);
    if (::testing::Test::HasFatalFailure()) return;
    ImportData w(nullptr, nullptr, {}, folder + "/listed", true);
    ASSERT_TRUE(waitUntil([&] { return loaded(w); }));
    const NdArray before = *w.imageSequence;
    ASSERT_EQ(before.shape(), (Shape{6, kHeight, kWidth}));

    const QStringList& listed = *w.filteredList;
    lose(listed[1], loss);
    lose(listed[4], loss);
    if (loss == Loss::Unreadable && QFile(listed[1]).open(QIODevice::ReadOnly))
        GTEST_SKIP() << "read permission is not enforced for this user";
    w.onFilterChanged();
    ASSERT_TRUE(waitUntil([&] { return loaded(w); }));
    ASSERT_EQ(w.imageSequence->shape(), before.shape());
    for (int i = 0; i < 6; ++i) {
        const QByteArray expected = i == 1 || i == 4 ? bytesOf(renderPlaceholderFrame(listed[i], kWidth, kHeight, 1))
                                                     : bytesOf(before.index(i));
        EXPECT_EQ(bytesOf(w.imageSequence->index(i)), expected) << "frame " << i;
    }

    writeGrayImages(folder + "/racing", 24, kWidth, kHeight);
    if (::testing::Test::HasFatalFailure()) return;
    ImportData racingWindow(nullptr, nullptr, {}, folder + "/racing", true);
    const QStringList order = *racingWindow.filteredList;
    for (int i = 1; i < order.size(); i += 2) lose(order[i], loss);
    ASSERT_TRUE(waitUntil([&] { return loaded(racingWindow); }));
    ASSERT_EQ(racingWindow.imageSequence->shape(), (Shape{24, kHeight, kWidth}));
    for (int i = 1; i < order.size(); i += 2) {
        const QByteArray frame = bytesOf(racingWindow.imageSequence->index(i));
        const QByteArray placeholder = bytesOf(renderPlaceholderFrame(order[i], kWidth, kHeight, 1));
        const int tag = order[i].section("img", -1).left(3).toInt();
        QByteArray pixels;
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) pixels += static_cast<char>(tag * 16 + x + y);
        EXPECT_TRUE(frame == placeholder || frame == pixels) << "frame " << i << " is neither image nor placeholder";
    }
}

TEST(FaultInjection, FilesLostBetweenListingAndLoadingBecomePlaceholders)
{
    if (childRole() == "unreadable") {
        loseFilesAroundALoad(childDir(), Loss::Unreadable);
        return;
    }
    QTemporaryDir dir;
    loseFilesAroundALoad(dir.path(), Loss::Vanished);
    if (HasFatalFailure()) return;

    // Root reads files whatever their permissions say: the child does this part as nobody.
    const QString folder = folderForChild(dir, "unreadable", true);
    EXPECT_CHILD_PASSES(runChild("FilesLostBetweenListingAndLoadingBecomePlaceholders", "unreadable", folder, true));
}

// ---------------------------------------------------------------- saving

void play(ImportData& w, std::vector<Step> steps)
{
    test::ModalScript script(std::move(steps));
    w.onGenerateFunction();
    EXPECT_EQ(script.pendingSteps(), 0);
    EXPECT_EQ(script.unexpected.join('\n').toStdString(), "");
}

mode_t fileTypeOf(const char* path)
{
    struct stat info {};
    return ::lstat(path, &info) == 0 ? info.st_mode & S_IFMT : 0;
}

bool isFullDevice(const char* path)
{
    struct stat info {};
    return ::lstat(path, &info) == 0 && S_ISCHR(info.st_mode) && info.st_rdev == makedev(1, 7);
}

const LoadFunctionParams kSmallPanel{.imgType = "8-bit", .width = 4, .height = 4, .frame = 1};

// In a folder it may not write, as nobody: the file there stays as it was, no
// new file appears, and the dialog stays for a try elsewhere.
void saveIntoUnwritableFolder(const QString& dir)
{
    const QString locked = dir + "/locked";
    if (!QFileInfo(dir + "/open").isWritable()) GTEST_SKIP() << "the folder is out of reach";
    if (QFile(locked + "/probe").open(QIODevice::WriteOnly)) GTEST_SKIP() << "folder permissions are not enforced";
    ImportData w;
    test::setVolumePanel(w, kSmallPanel);
    QStringList boxes;
    play(w, {pressInFunctionDialog("Save to File"), saveAs(locked + "/load.py"), messageBox(boxes),
             pressInFunctionDialog("Save to File"), saveAs(locked + "/new.py"), messageBox(boxes),
             pressInFunctionDialog("Save to File"), saveAs(dir + "/open/load.py"), messageBox(boxes),
             pressInFunctionDialog("OK")});
    ASSERT_EQ(boxes.size(), 3);
    EXPECT_TRUE(boxes[0].startsWith("Error|Failed to save function: ")) << boxes[0].toStdString();
    EXPECT_TRUE(boxes[1].startsWith("Error|Failed to save function: ")) << boxes[1].toStdString();
    EXPECT_EQ(boxes[2].toStdString(), "Success|Function saved successfully.");
    EXPECT_EQ(contentOf(locked + "/load.py"), "earlier");
    EXPECT_EQ(QDir(locked).entryList(QDir::Files | QDir::Hidden), QStringList{"load.py"});
    EXPECT_EQ(contentOf(dir + "/open/load.py"), w._gen_function(kSmallPanel).toUtf8());
}

TEST(FaultInjection, SavingOntoAFullDeviceOrIntoAnUnwritableFolderFailsCleanly)
{
    if (childRole() == "unwritable") {
        saveIntoUnwritableFolder(childDir());
        return;
    }
    QTemporaryDir dir;
    ImportData w;
    test::setVolumePanel(w, kSmallPanel);
    const QByteArray expected = w._gen_function(kSmallPanel).toUtf8();
    QStringList boxes;

    // A FIFO is written in place, not replaced by a file: with nobody reading it
    // the save fails at once instead of waiting; with a reader the text arrives.
    const QString fifo = dir.filePath("pipe");
    const QByteArray fifoName = QFile::encodeName(fifo);
    ASSERT_EQ(::mkfifo(fifoName.constData(), 0600), 0);
    play(w, {pressInFunctionDialog("Save to File"), saveAs(fifo), messageBox(boxes), pressInFunctionDialog("OK")});
    ASSERT_EQ(fileTypeOf(fifoName.constData()), S_IFIFO) << "the save replaced the FIFO";
    const int reader = ::open(fifoName.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    play(w, {pressInFunctionDialog("Save to File"), saveAs(fifo), messageBox(boxes), pressInFunctionDialog("OK")});
    QByteArray received(expected.size() + 1, '\0');
    received.truncate(std::max<ssize_t>(::read(reader, received.data(), received.size()), 0));
    ::close(reader);
    EXPECT_EQ(received, expected);
    ASSERT_EQ(fileTypeOf(fifoName.constData()), S_IFIFO) << "the save replaced the FIFO";
    ASSERT_EQ(boxes.size(), 2);
    EXPECT_TRUE(boxes[0].startsWith("Error|Failed to save function: ")) << boxes[0].toStdString();
    EXPECT_EQ(boxes[1].toStdString(), "Success|Function saved successfully.");

    // Only now that a node is known to stay a node: the real full device. The
    // dialog stays for another try, which succeeds elsewhere.
    if (isFullDevice("/dev/full")) {
        boxes.clear();
        play(w, {pressInFunctionDialog("Save to File"), saveAs("/dev/full"), messageBox(boxes),
                 pressInFunctionDialog("Save to File"), saveAs(dir.filePath("load.py")), messageBox(boxes),
                 pressInFunctionDialog("OK")});
        EXPECT_TRUE(isFullDevice("/dev/full"));
        EXPECT_EQ(boxes.join('\n').toStdString(), "Error|Failed to save function: " + std::string(std::strerror(ENOSPC)) +
                                                      "\nSuccess|Function saved successfully.");
        EXPECT_EQ(contentOf(dir.filePath("load.py")), expected);
        // The host's Save as .npy takes the same way.
        EXPECT_THROW(saveNpy(NdArray::zeros({64, 64}, DType::UInt8), "/dev/full"), std::runtime_error);
        EXPECT_TRUE(isFullDevice("/dev/full"));
    }
    EXPECT_TRUE(w.ui->pushButton_generate_function->isEnabled());

    // Root writes into any folder: the child does this part as nobody.
    const QString childFolder = folderForChild(dir, "child", false);
    const QString locked = childFolder + "/locked";
    QDir().mkpath(locked);
    test::writeFile(locked + "/load.py", "earlier");
    ::chmod(QFile::encodeName(locked).constData(), 0555);
    QDir().mkpath(childFolder + "/open");
    ::chmod(QFile::encodeName(childFolder + "/open").constData(), 0777);
    EXPECT_CHILD_PASSES(runChild("SavingOntoAFullDeviceOrIntoAnUnwritableFolderFailsCleanly", "unwritable",
                                 childFolder, true));
    ::chmod(QFile::encodeName(locked).constData(), 0755);
}

// ---------------------------------------------------------------- memory

// The address space this process uses now.
rlim_t addressSpaceInUse()
{
    std::ifstream statm("/proc/self/statm");
    unsigned long long pages = 0;
    statm >> pages;
    return static_cast<rlim_t>(pages * static_cast<unsigned long long>(::sysconf(_SC_PAGESIZE)));
}

void openWithLittleMemory(const QString& dir)
{
    // Room for the window's own work, far less than the file.
    const rlim_t limit = addressSpaceInUse() + (rlim_t(1) << 30);
    rlimit old{};
    ::getrlimit(RLIMIT_AS, &old);
    rlimit lowered{limit, old.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_AS, &lowered), 0);
    const QString huge = dir + "/huge.raw";
    ASSERT_GT(QFileInfo(huge).size(), static_cast<qint64>(limit));

    test::ModalWatcher watcher;
    ImportData w;
    w.openFile(huge);
    ASSERT_EQ(watcher.texts.size(), 1);
    EXPECT_TRUE(watcher.texts[0].startsWith("Error|Error reading file:\n")) << watcher.texts[0].toStdString();
    EXPECT_TRUE(watcher.texts[0].contains("memory")) << watcher.texts[0].toStdString();
    EXPECT_FALSE(w.readedBinary);
    // The window goes on working with a file that fits.
    w.openFile(dir + "/small.raw");
    ASSERT_TRUE(w.prasedData);
    EXPECT_EQ(w.prasedData->shape(), (Shape{1, 640, 400, 1}));
}

TEST(FaultInjection, RawFilesThatCannotBeReadWholeGiveAClearError)
{
    if (childRole() == "memory") {
        openWithLittleMemory(childDir());
        return;
    }
    QTemporaryDir dir;
    // A FIFO that nobody writes: turned away at once instead of waited on.
    const QString fifo = dir.filePath("pipe.raw");
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    {
        test::ModalWatcher watcher;
        ImportData w;
        w.openFile(fifo);
        ASSERT_EQ(watcher.texts.size(), 1);
        EXPECT_TRUE(watcher.texts[0].startsWith("Error|Error reading file:\nNot a regular file"))
            << watcher.texts[0].toStdString();
        EXPECT_FALSE(w.readedBinary);
    }

#ifdef TORVEX_ASAN
    GTEST_SKIP() << "AddressSanitizer reserves more address space than any limit would leave";
#endif
    // Larger than the memory the process may use, in a child with a lowered limit.
    QFile huge(dir.filePath("huge.raw"));
    // Sparse: as large as wanted, with no disk space used.
    if (!huge.open(QIODevice::WriteOnly) || !huge.resize(qint64(64) << 30)) GTEST_SKIP() << "no sparse file here";
    huge.close();
    test::writeFile(dir.filePath("small.raw"), QByteArray(400 * 640, '\x05'));
    EXPECT_CHILD_PASSES(runChild("RawFilesThatCannotBeReadWholeGiveAClearError", "memory", dir.path(), false));
}

// ---------------------------------------------------------------- closing mid-load

// Follows every load that a window starts from now on, in the loader's own
// thread: `onProgress` runs before each progress report leaves the worker, so
// it can hold the worker at a chosen point. Each worker is caught when the
// window announces its load, before the load's thread starts.
class LoadHook {
public:
    struct Load {
        QPointer<_ImageLoaderWorker> worker;
        std::atomic<int> lastDone{0};
        std::atomic<bool> reported{false}; // finished or error was sent
    };
    using OnProgress = std::function<void(int load, _ImageLoaderWorker& worker, int done, int total)>;

    LoadHook(ImportData& w, OnProgress onProgress) : onProgress_(std::move(onProgress))
    {
        QObject::connect(w.ui->statusbar, &QStatusBar::messageChanged, &context_, [this, &w] {
            _ImageLoaderWorker* worker = w._loader_worker.data();
            if (!worker || (!loads_.empty() && loads_.back()->worker == worker)) return;
            const int index = static_cast<int>(loads_.size());
            Load& load = *loads_.emplace_back(std::make_unique<Load>());
            load.worker = worker;
            QObject::connect(
                worker, &_ImageLoaderWorker::progress, worker,
                [this, &load, worker, index](int done, int total) {
                    load.lastDone = done;
                    onProgress_(index, *worker, done, total);
                },
                Qt::DirectConnection);
            QObject::connect(worker, &_ImageLoaderWorker::finished, worker, [&load] { load.reported = true; },
                             Qt::DirectConnection);
            QObject::connect(worker, &_ImageLoaderWorker::error, worker, [&load] { load.reported = true; },
                             Qt::DirectConnection);
        });
    }

    int count() const { return static_cast<int>(loads_.size()); }
    const Load& load(int i) const { return *loads_.at(i); }

private:
    OnProgress onProgress_;
    QObject context_;
    std::vector<std::unique_ptr<Load>> loads_;
};

// Holds the worker's thread until `done` holds (or long past any need).
void holdUntil(const std::function<bool()>& done)
{
    for (int i = 0; i < 30000 && !done(); ++i) std::this_thread::sleep_for(1ms);
}

// ---------------------------------------------------------------- many files

TEST(FaultInjection, AFolderOfTwentyThousandFilesListsFiltersAndClosesDuringItsLoad)
{
    constexpr int kFiles = 20000;
    // In memory where there is such a place: a disk makes this many files slowly.
    QTemporaryDir dir(QFileInfo("/dev/shm").isWritable() ? "/dev/shm/torvex-many-XXXXXX"
                                                         : QDir::tempPath() + "/torvex-many-XXXXXX");
    ASSERT_TRUE(dir.isValid());
    for (int i = 0; i < kFiles; ++i) {
        const QByteArray name = QFile::encodeName(dir.filePath(QString("f%1.dat").arg(i, 5, 10, QChar('0'))));
        const int fd = ::open(name.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
        ASSERT_GE(fd, 0) << name.constData();
        ::close(fd);
    }

    auto* w = new ImportData(nullptr, nullptr, {}, {}, true);
    std::atomic<bool> held{false};
    // Each load is held at a file of its own, until it is cancelled.
    LoadHook hook(*w, [&](int load, _ImageLoaderWorker& worker, int done, int) {
        if (done != (load == 0 ? 50 : 1)) return;
        held = true;
        holdUntil([&] { return worker._cancelled.load(); });
    });
    w->openFile(dir.path());
    ASSERT_EQ(w->fileList->size(), kFiles);
    ASSERT_EQ(w->filteredList->size(), kFiles);
    EXPECT_EQ(w->ui->listWidget_imageList->count(), kFiles);
    EXPECT_EQ(w->ui->listWidget_imageList->item(kFiles - 1)->toolTip(), w->filteredList->last());
    EXPECT_EQ(w->ui->spinBox_rg2->value(), kFiles);
    EXPECT_EQ(w->checkedIndexes.size(), kFiles);
    // The window keeps answering: the load's progress shows while it runs.
    ASSERT_TRUE(waitUntil([&] {
        return held && w->ui->statusbar->currentMessage() == QString::fromUtf8("Loading image 50/20000\u2026");
    })) << w->ui->statusbar->currentMessage().toStdString();

    // A narrower filter supersedes the load (the field is locked meanwhile; a
    // new source sets the filter off just so).
    held = false;
    w->ui->lineEdit_filter->setText("*77.dat");
    w->onFilterChanged();
    ASSERT_EQ(w->filteredList->size(), kFiles / 100);
    EXPECT_EQ(w->ui->listWidget_imageList->count(), kFiles / 100);
    EXPECT_TRUE(std::all_of(w->filteredList->begin(), w->filteredList->end(),
                            [](const QString& path) { return path.endsWith("77.dat"); }));
    ASSERT_TRUE(waitUntil([&] { return held.load(); }));
    delete w; // while that load runs
    QCoreApplication::processEvents();
    ASSERT_EQ(hook.count(), 2);
    EXPECT_EQ(hook.load(0).lastDone, 50);
    EXPECT_EQ(hook.load(1).lastDone, 1);
    EXPECT_FALSE(hook.load(0).reported || hook.load(1).reported);
}

class ClosingMidLoad : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        images = new QTemporaryDir;
        writeGrayImages(images->filePath("a"), 30, 64, 48);
        // One image sets a large canvas for many placeholders: a long second pass.
        QDir().mkpath(images->filePath("texts"));
        writeGrayImage(images->filePath("texts/0.png"), 480, 360, 0);
        const QByteArray lines = QByteArray("a line of text that fills the width of the placeholder\n").repeated(40);
        for (int i = 1; i <= 150; ++i)
            test::writeFile(images->filePath(QString("texts/%1.txt").arg(i, 3, 10, QChar('0'))), lines);
    }
    static void TearDownTestSuite() { delete images; }
    static QTemporaryDir* images;
};
QTemporaryDir* ClosingMidLoad::images = nullptr;

TEST_F(ClosingMidLoad, WhileItDecodesAndBetweenThePasses)
{
    for (const int stopAt : {4, 30}) {
        SCOPED_TRACE(stopAt == 30 ? "between the passes" : "while decoding");
        std::atomic<bool> held{false};
        auto* w = new ImportData(nullptr, nullptr, {}, {}, true);
        LoadHook hook(*w, [&](int, _ImageLoaderWorker& worker, int done, int) {
            if (done != stopAt) return;
            held = true;
            holdUntil([&] { return worker._cancelled.load(); });
        });
        w->openFile(images->filePath("a"));
        ASSERT_TRUE(waitUntil([&] { return held.load(); }));
        delete w;
        QCoreApplication::processEvents();
        ASSERT_EQ(hook.count(), 1);
        // Cancelled at the file in hand: nothing after it, neither a result nor an error.
        EXPECT_EQ(hook.load(0).lastDone, stopAt);
        EXPECT_FALSE(hook.load(0).reported);
    }
}

TEST_F(ClosingMidLoad, WhileItStacks)
{
    std::atomic<bool> decoded{false};
    auto* w = new ImportData(nullptr, nullptr, {}, {}, true);
    LoadHook hook(*w, [&](int, _ImageLoaderWorker&, int done, int total) { decoded = done == total; });
    w->openFile(images->filePath("texts"));
    // The second pass draws a placeholder for each text file; the window closes meanwhile.
    ASSERT_TRUE(waitUntil([&] { return decoded.load(); }));
    delete w;
    QCoreApplication::processEvents();
    EXPECT_EQ(hook.count(), 1);
}

TEST_F(ClosingMidLoad, WhileASupersededLoadStillRunsOut)
{
    std::atomic<bool> firstHeld{false}, secondHeld{false};
    auto* w = new ImportData(nullptr, nullptr, {}, {}, true);
    LoadHook hook(*w, [&](int load, _ImageLoaderWorker& worker, int done, int) {
        if (load == 0 && done == 2) {
            // A file that takes long: cancelled, this load still runs past the
            // half second that the next load waits for it.
            firstHeld = true;
            holdUntil([&] { return worker._cancelled && secondHeld; });
        } else if (load == 1 && done == 1) {
            secondHeld = true;
            holdUntil([&] { return worker._cancelled.load(); });
        }
    });
    w->openFile(images->filePath("a"));
    ASSERT_TRUE(waitUntil([&] { return firstHeld.load(); }));
    // A narrower filter (locked for the user meanwhile, as a new source would set it off).
    w->ui->lineEdit_filter->setText("img00*");
    w->ui->statusbar->clearMessage(); // so that the next load's announcement is news
    w->onFilterChanged();
    ASSERT_TRUE(waitUntil([&] { return secondHeld.load(); }));
    delete w; // both threads are still running
    QCoreApplication::processEvents();
    ASSERT_EQ(hook.count(), 2);
    EXPECT_EQ(hook.load(0).lastDone, 2);
    EXPECT_EQ(hook.load(1).lastDone, 1);
    EXPECT_FALSE(hook.load(0).reported);
    EXPECT_FALSE(hook.load(1).reported);
}

} // namespace
} // namespace torvex
