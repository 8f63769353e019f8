#include "toolboxes/importData/ui/PreviewSurface.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QLineF>
#include <QMenu>

#include <gtest/gtest.h>

using namespace torvex;

namespace {

// A surface of 400 x 300 set up as the window sets up its previews, showing a
// 200 x 100 frame whose left half is 0 and right half 255: fitted, it is drawn
// at 2 screen pixels per array pixel, 50 pixels below the top.
class PreviewSurfaceTest : public testing::Test {
protected:
    void SetUp() override
    {
        surface.resize(400, 300);
        plot->invertY(true);
        plot->addItem(image);
        plot->setAspectLocked(true);
        surface.setBackground(Qt::blue);
        surface.show();
        QApplication::processEvents();
        showFrame(100, 200);
        QObject::connect(surface.scene(), &PreviewScene::sigMouseMoved, [this](QPointF pos) { moved = pos; });
    }

    void showFrame(int64_t h, int64_t w)
    {
        NdArray a = NdArray::zeros({h, w}, DType::UInt8);
        for (int64_t y = 0; y < h; ++y)
            std::fill_n(reinterpret_cast<uint8_t*>(a.mutableData()) + y * w + w / 2, w - w / 2, 255);
        image->setImage(a);
    }

    void send(QEvent&& event) { QApplication::sendEvent(surface.viewport(), &event); }
    QPoint global(QPointF at) { return surface.viewport()->mapToGlobal(at.toPoint()); }
    void mouse(QEvent::Type type, QPointF at, Qt::MouseButton button, Qt::MouseButtons held)
    {
        send(QMouseEvent(type, at, global(at), button, held, Qt::NoModifier));
    }
    void wheel(int notches, QPointF at = {100, 100})
    {
        send(QWheelEvent(at, global(at), {}, {0, 120 * notches}, {}, {}, Qt::NoScrollPhase, false));
    }

    // The array position that the readout puts under a point of the viewport.
    QPointF arrayPointAt(QPointF at)
    {
        moved.reset();
        mouse(QEvent::MouseMove, at, Qt::NoButton, {});
        return plot->mapSceneToView(moved.value_or(QPointF(1e9, 1e9)));
    }
    testing::AssertionResult shows(QPointF at, QPointF expected, double tolerance = 0.5)
    {
        const QPointF p = arrayPointAt(at);
        if (QLineF(p, expected).length() <= tolerance) return testing::AssertionSuccess();
        return testing::AssertionFailure() << p.x() << ", " << p.y() << " under " << at.x() << ", " << at.y();
    }

    QRgb shownAt(int x, int y) { return surface.grab().toImage().pixel(x, y); }

    PreviewSurface surface;
    PreviewPlot* plot = surface.addPlot();
    PreviewImageItem* image = new PreviewImageItem;
    std::optional<QPointF> moved;
};

} // namespace

TEST_F(PreviewSurfaceTest, ReadsTheArrayPixelUnderTheCursorPansAndFitsFromItsMenu)
{
    EXPECT_TRUE(surface.viewport()->hasMouseTracking()); // the readout follows the mouse without a button too
    EXPECT_TRUE(shows({200, 150}, {100, 50}) && shows({10, 60}, {5, 5}));
    EXPECT_EQ(plot->sceneBoundingRect(), QRectF(0, -25, 200, 150));

    // Dragging pans, even while the whole image is in view.
    wheel(-2);
    const QPointF grabbed = arrayPointAt({150, 150});
    mouse(QEvent::MouseButtonPress, {150, 150}, Qt::LeftButton, Qt::LeftButton);
    mouse(QEvent::MouseMove, {190, 120}, Qt::NoButton, Qt::LeftButton);
    mouse(QEvent::MouseButtonRelease, {190, 120}, Qt::LeftButton, {});
    EXPECT_TRUE(shows({190, 120}, grabbed));
    EXPECT_TRUE(plot->sceneBoundingRect().contains(grabbed + QPointF(-100, 0)));

    // The context menu's one entry shows the whole image again.
    send(QContextMenuEvent(QContextMenuEvent::Mouse, {50, 50}, global({50, 50})));
    EXPECT_TRUE(plot->getMenu()->isVisible());
    plot->getMenu()->hide();
    ASSERT_EQ(plot->getMenu()->actions().size(), 1);
    plot->getMenu()->actions().front()->trigger();
    EXPECT_TRUE(shows({200, 150}, {100, 50}) && shows({10, 60}, {5, 5}));
}

TEST_F(PreviewSurfaceTest, TheWheelZoomsAboutTheCursorWithinLimits)
{
    // Screen pixels per array pixel after each turn: 1.2 times per notch, from a twentieth of the fitted 2 to 100.
    for (const auto& [notches, scale] : {std::pair{1, 2.4}, {40, 100.0}, {-1, 100 / 1.2}, {-80, 0.1}}) {
        const QPointF anchor = arrayPointAt({100, 100});
        wheel(notches);
        EXPECT_TRUE(shows({100, 100}, anchor, 1 / scale)) << notches;
        EXPECT_TRUE(shows({340, 100}, anchor + QPointF(240 / scale, 0), 1 / scale)) << notches;
    }
}

TEST_F(PreviewSurfaceTest, FramesOfOneSizeKeepTheZoomAndANewSizeFitsAgain)
{
    wheel(2);
    const QPointF zoomed = arrayPointAt({300, 200});
    showFrame(100, 200);
    EXPECT_TRUE(shows({300, 200}, zoomed, 1e-9));
    // 50 x 50 fits the height: 6 screen pixels per array pixel, 50 pixels in.
    showFrame(50, 50);
    EXPECT_TRUE(shows({53, 3}, {0.5, 0.5}) && shows({347, 297}, {49.5, 49.5}));
    // Still fitted after the surface is resized, as the user hasn't zoomed.
    surface.resize(100, 300);
    QApplication::processEvents();
    EXPECT_TRUE(shows({50, 150}, {25, 25}));
    // Sharp pixels: the edge between the halves is at x = 50 + 25 * 6; nothing after clear.
    surface.resize(400, 300);
    QApplication::processEvents();
    EXPECT_EQ(shownAt(197, 150), qRgb(0, 0, 0));
    EXPECT_EQ(shownAt(202, 150), qRgb(255, 255, 255));
    image->clear();
    EXPECT_EQ(shownAt(202, 150), QColor(Qt::blue).rgb());
}
