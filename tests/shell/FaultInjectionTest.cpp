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
#include "toolboxes/importData/ImportDataForm.h"
#include "toolboxes/importData/sequence/PlaceholderFrame.h"

#include "../loadfunction/ModalScript.h"
#include "../loadfunction/VolumePanel.h"
#include "../support/ModalWatcher.h"
#include "../support/TempFiles.h"

#include <QDir>
#include <QDialog>
#include <QMessageBox>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QImage>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QStatusBar>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>

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

constexpr uid_t kNobody = 65534;
constexpr int kCannotDropPrivileges = 77;

QString childRole() { return qEnvironmentVariable("TORVEX_FAULT_CHILD"); }
QString childDir() { return qEnvironmentVariable("TORVEX_FAULT_DIR"); }

bool waitUntil(const std::function<bool()>& done)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 60000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        if (done()) return true;
    }
    return false;
}

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
        env.insert("HOME", dir);
        env.remove("XDG_RUNTIME_DIR");
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
    if (ownedByChild && ::geteuid() == 0) EXPECT_EQ(::chown(QFile::encodeName(folder).constData(), kNobody, kNobody), 0);
    return folder;
}

// ---------------------------------------------------------------- lost files

enum class Loss { Vanished, Unreadable };

void lose(const QString& path, Loss loss)
{
    if (loss == Loss::Vanished) ASSERT_TRUE(QFile::remove(path)) << path.toStdString();
    else ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0), 0) << path.toStdString();
}

// The folder is listed and loaded whole; then files go (or lose read
// permission) and the listed files load again, as when the user confirms the
// filter. The lost ones come back as placeholder frames, the others as before.
// A second folder loses files while its load runs: each of them is its image
// or its placeholder, whichever the loader met.
void loseFilesAroundALoad(const QString& folder, Loss loss)
{
    constexpr int kWidth = 40, kHeight = 30;
    const QStringList files = writeGrayImages(folder + "/listed", 6, kWidth, kHeight);
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

    const QStringList racing = writeGrayImages(folder + "/racing", 24, kWidth, kHeight);
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

using Step = test::ModalScript::Step;

Step pressInFunctionDialog(const QString& button)
{
    return {[](QWidget* modal) { return modal->windowTitle() == "Generated Load Function"; },
            [button](QWidget* dialog) {
                for (QPushButton* b : dialog->findChildren<QPushButton*>()) {
                    if (b->text().remove('&') == button) {
                        b->click();
                        return;
                    }
                }
                ADD_FAILURE() << "no button " << button.toStdString();
                dialog->close();
            }};
}

// Picks `path` in the save dialog; `after` runs once the choice is accepted.
Step saveAs(const QString& path)
{
    return {[](QWidget* modal) { return qobject_cast<QFileDialog*>(modal) != nullptr; },
            [path](QWidget* modal) {
                auto* dialog = static_cast<QFileDialog*>(modal);
                dialog->setOption(QFileDialog::DontConfirmOverwrite);
                dialog->findChild<QLineEdit*>("fileNameEdit")->setText(path);
                QMetaObject::invokeMethod(dialog, "accept");
            }};
}

// Notes "title|text" of a message box and closes it, after `then`.
Step messageBox(QStringList& noted, std::function<void()> then = {})
{
    return {[](QWidget* modal) { return qobject_cast<QMessageBox*>(modal) != nullptr; },
            [&noted, then](QWidget* modal) {
                noted << modal->windowTitle() + "|" + static_cast<QMessageBox*>(modal)->text();
                if (then) then();
                modal->close();
            }};
}

void play(ImportData& w, std::vector<Step> steps)
{
    test::ModalScript script(std::move(steps));
    w.onGenerateFunction();
    EXPECT_EQ(script.pendingSteps(), 0);
    EXPECT_EQ(script.unexpected.join('\n').toStdString(), "");
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
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

    // Only now that a node is known to stay a node: the real full device.
    ASSERT_TRUE(isFullDevice("/dev/full"));
    play(w, {pressInFunctionDialog("Save to File"), saveAs("/dev/full"), messageBox(boxes),
             pressInFunctionDialog("Save to File"), saveAs(dir.filePath("load.py")), messageBox(boxes),
             pressInFunctionDialog("OK")});
    EXPECT_TRUE(isFullDevice("/dev/full"));
    EXPECT_EQ(contentOf(dir.filePath("load.py")), expected);
    // The host's Save as .npy goes the same way.
    EXPECT_THROW(saveNpy(NdArray::zeros({64, 64}, DType::UInt8), "/dev/full"), std::runtime_error);
    EXPECT_TRUE(isFullDevice("/dev/full"));

    ASSERT_EQ(boxes.size(), 4);
    EXPECT_TRUE(boxes[0].startsWith("Error|Failed to save function: ")) << boxes[0].toStdString();
    EXPECT_EQ(boxes[1].toStdString(), "Success|Function saved successfully.");
    EXPECT_EQ(boxes[2].toStdString(), "Error|Failed to save function: " + std::string(std::strerror(ENOSPC)));
    EXPECT_EQ(boxes[3].toStdString(), "Success|Function saved successfully.");
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

} // namespace
} // namespace torvex
