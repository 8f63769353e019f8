// The background load's life cycle, over and over: start, supersede, cancel
// from openFile, close the window while it loads. The thread-checking build
// runs it with many repetitions (TORVEX_REPEAT), the others with a few.
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/ui/ImportDataForm.h"

#include "../support/TempFiles.h"
#include "../support/WaitUntil.h"

#include <QElapsedTimer>
#include <QImage>
#include <QThread>

#include <gtest/gtest.h>

using namespace torvex;
using test::waitUntil;

namespace {

int repetitions()
{
    bool ok = false;
    const int n = qEnvironmentVariableIntValue("TORVEX_REPEAT", &ok);
    return ok && n > 0 ? n : 3;
}

class LoadLifeCycle : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        folder = new QTemporaryDir;
        // Enough frames of mixed kinds that a load is still running when it is
        // interrupted. Written by Qt itself: the thread checker cannot follow
        // the start of a child process, so no Python here.
        for (int i = 0; i < 24; ++i) {
            QImage image(64, 48, i % 3 ? QImage::Format_RGB888 : QImage::Format_Grayscale8);
            for (int y = 0; y < 48; ++y)
                for (int x = 0; x < 64; ++x) image.setPixel(x, y, qRgb(x * i, y * i, x + y));
            ASSERT_TRUE(image.save(folder->path() + QString("/img%1.png").arg(i, 2, 10, QChar('0'))));
        }
        test::writeFile(folder->path() + "/notes.txt", "not an image");
    }
    static void TearDownTestSuite() { delete folder; }
    static QTemporaryDir* folder;

    static bool loading(const ImportData& w) { return w._loader_thread && w._loader_thread->isRunning(); }
};
QTemporaryDir* LoadLifeCycle::folder = nullptr;

} // namespace

TEST_F(LoadLifeCycle, StartedLoadsFinishWithTheWholeStack)
{
    for (int i = 0; i < repetitions(); ++i) {
        ImportData w(nullptr, nullptr, {}, folder->path(), true);
        ASSERT_TRUE(waitUntil([&] { return w.imageSequence && !loading(w); }));
        ASSERT_EQ(w.imageSequence->shape(), (Shape{25, 48, 64, 3}));
    }
}

TEST_F(LoadLifeCycle, OnlyTheNewestOfSupersedingLoadsArrives)
{
    ImportData w(nullptr, nullptr, {}, folder->path(), true);
    for (int i = 0; i < repetitions(); ++i) {
        // Alternate between two filters so that each load differs from the last.
        w.ui->lineEdit_filter->setText(i % 2 ? "img0*" : "img1*");
        w.onFilterChanged();
        QCoreApplication::processEvents(); // let some of the old load's signals arrive
        w.ui->lineEdit_filter->setText(i % 2 ? "img1*" : "img0*");
        w.onFilterChanged();
        ASSERT_TRUE(waitUntil([&] { return w.imageSequence && !loading(w); }));
        ASSERT_EQ(w.imageSequence->extent(0), 10);
        ASSERT_TRUE(w.filteredList->first().section('/', -1).startsWith(i % 2 ? "img1" : "img0"));
    }
}

TEST_F(LoadLifeCycle, OpeningAnotherSourceCancelsTheLoad)
{
    QTemporaryDir other;
    const QString raw = test::writeFile(other.path() + "/volume.raw", QByteArray(64, '\x07'));
    ImportData w(nullptr, nullptr, {}, {}, true);
    for (int i = 0; i < repetitions(); ++i) {
        w.openFile(folder->path());
        w.openFile(raw);
        EXPECT_TRUE(w.ui->lineEdit_filter->isEnabled()); // the canceller freed the controls
        EXPECT_FALSE(w.imageSequence);
        // A result of the cancelled load must not arrive later.
        ASSERT_TRUE(waitUntil([&] { return !loading(w); }));
        QCoreApplication::processEvents();
        EXPECT_FALSE(w.imageSequence);
    }
}

TEST_F(LoadLifeCycle, ClosingTheWindowDuringALoadIsSafe)
{
    for (int i = 0; i < repetitions(); ++i) {
        auto* w = new ImportData(nullptr, nullptr, {}, folder->path(), true);
        for (int spin = 0; spin < i % 4; ++spin) QCoreApplication::processEvents(); // close at varied points
        delete w;
    }
    QCoreApplication::processEvents(); // nothing of the closed windows may arrive
}
