// The background load's life cycle, over and over: start, supersede, cancel
// for another source, drop the session while it loads. The thread-checking
// build runs it with many repetitions (TORVEX_REPEAT), the others with a few.
#include "toolboxes/importData/model/ImportSession.h"
#include "toolboxes/importData/sequence/FileFilter.h"

#include "../support/TempFiles.h"
#include "../support/WaitUntil.h"

#include <QImage>
#include <QPointer>
#include <QThread>

#include <gtest/gtest.h>

using namespace torvex;
using test::waitUntil;

namespace {

int repetitions()
{
    const int n = qEnvironmentVariableIntValue("TORVEX_REPEAT");
    return n > 0 ? n : 3;
}

class LoadLifeCycle : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        // Enough frames of mixed kinds that a load is still running when it is
        // interrupted. Written by Qt itself: the thread checker cannot follow
        // the start of a child process, so no Python here.
        for (int i = 0; i < 24; ++i) {
            QImage image(64, 48, i % 3 ? QImage::Format_RGB888 : QImage::Format_Grayscale8);
            for (int y = 0; y < 48; ++y)
                for (int x = 0; x < 64; ++x) image.setPixel(x, y, qRgb(x * i, y * i, x + y));
            ASSERT_TRUE(image.save(folder.filePath(QString("img%1.png").arg(i, 2, 10, QChar('0')))));
        }
        test::writeFile(folder.filePath("notes.txt"), "not an image");
    }
    static inline QTemporaryDir folder;

    // A session that takes the stacks of its loads, as the window does.
    static std::unique_ptr<ImportSession> sessionOn(const QString& filter)
    {
        auto session = std::make_unique<ImportSession>();
        QObject::connect(&session->load, &ImageLoad::finished, session.get(), &ImportSession::acceptLoad);
        session->openFolder(folder.path());
        session->applyFilter(wildcardPattern(filter), true);
        session->startLoad();
        return session;
    }
    static bool loaded(const ImportSession& s) { return s.imageSequence && !s.load.running(); }
};

} // namespace

TEST_F(LoadLifeCycle, StartedLoadsFinishWithTheWholeStack)
{
    for (int i = 0; i < repetitions(); ++i) {
        const auto session = sessionOn("*");
        ASSERT_TRUE(waitUntil([&] { return loaded(*session); }));
        ASSERT_EQ(session->imageSequence->shape(), (Shape{25, 48, 64, 3}));
    }
}

TEST_F(LoadLifeCycle, OnlyTheNewestOfSupersedingLoadsArrives)
{
    const auto session = sessionOn("*");
    for (int i = 0; i < repetitions(); ++i) {
        // Alternate between two filters so that each load differs from the last.
        session->applyFilter(wildcardPattern(i % 2 ? "img0*" : "img1*"), true);
        session->startLoad();
        QCoreApplication::processEvents(); // let some of the old load's signals arrive
        session->applyFilter(wildcardPattern(i % 2 ? "img1*" : "img0*"), true);
        session->startLoad();
        ASSERT_TRUE(waitUntil([&] { return loaded(*session); }));
        ASSERT_EQ(session->imageSequence->extent(0), 10);
        ASSERT_TRUE(session->filteredList->first().section('/', -1).startsWith(i % 2 ? "img1" : "img0"));
    }
}

TEST_F(LoadLifeCycle, ACancelledLoadNeverArrives)
{
    for (int i = 0; i < repetitions(); ++i) {
        const auto session = sessionOn("*");
        session->load.cancel();
        // A result of the cancelled load must not arrive later.
        ASSERT_TRUE(waitUntil([&] { return !session->load.running(); }));
        QCoreApplication::processEvents();
        EXPECT_FALSE(session->imageSequence);
    }
}

TEST_F(LoadLifeCycle, DroppingTheSessionDuringALoadIsSafe)
{
    for (int i = 0; i < repetitions(); ++i) {
        auto session = sessionOn("*");
        for (int spin = 0; spin < i % 4; ++spin) QCoreApplication::processEvents(); // drop at varied points
        const QPointer<QThread> thread = session->load._loader_thread;
        session.reset();
        EXPECT_TRUE(thread.isNull()); // ended and gone with the session, not left running
    }
    QCoreApplication::processEvents(); // nothing of the dropped sessions may arrive
}
