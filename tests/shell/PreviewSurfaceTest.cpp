#include "toolboxes/importData/PreviewSurface.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QLineF>
#include <QMenu>
#include <QMouseEvent>
#include <QWheelEvent>

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
        plot = surface.addPlot();
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
        for (int64_t y = 0; y < h; ++y) std::fill_n(reinterpret_cast<uint8_t*>(a.mutableData()) + y * w + w / 2, w - w / 2, 255);
        image->setImage(a);
    }

    void mouse(QEvent::Type type, QPointF at, Qt::MouseButton button = Qt::NoButton, Qt::MouseButtons held = {})
    {
        QMouseEvent event(type, at, surface.viewport()->mapToGlobal(at), button, held, Qt::NoModifier);
        QApplication::sendEvent(surface.viewport(), &event);
    }

    // The array position under a point of the viewport, as the window's readout gets it.
    QPointF arrayPointAt(QPointF at)
    {
        moved.reset();
        mouse(QEvent::MouseMove, at);
        EXPECT_TRUE(moved) << "no move reported";
        return plot->mapSceneToView(moved.value_or(QPointF()));
    }

    void wheel(QPointF at, int notches)
    {
        QWheelEvent event(at, surface.viewport()->mapToGlobal(at), QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(surface.viewport(), &event);
    }

    bool fitted() { return near(arrayPointAt({200, 150}), {100, 50}) && near(arrayPointAt({10, 60}), {5, 5}); }

    static testing::AssertionResult near(QPointF a, QPointF b, double tolerance = 0.5)
    {
        return QLineF(a, b).length() <= tolerance ? testing::AssertionSuccess()
                                                  : testing::AssertionFailure() << a.x() << ", " << a.y() << " is not "
                                                                                << b.x() << ", " << b.y();
    }

    QRgb shownAt(int x, int y) { return surface.grab().toImage().pixel(x, y); }

    PreviewSurface surface;
    PreviewImageItem* image = new PreviewImageItem;
    PreviewPlot* plot = nullptr;
    std::optional<QPointF> moved;
};

} // namespace

TEST_F(PreviewSurfaceTest, ReadsTheArrayPixelUnderTheCursorPansAndFitsFromItsMenu)
{
    EXPECT_TRUE(fitted());
    EXPECT_EQ(plot->sceneBoundingRect(), QRectF(0, -25, 200, 150));

    // Dragging pans, even while the whole image is in view.
    wheel({100, 100}, -2);
    const QPointF grabbed = arrayPointAt({150, 150});
    mouse(QEvent::MouseButtonPress, {150, 150}, Qt::LeftButton, Qt::LeftButton);
    mouse(QEvent::MouseMove, {190, 120}, Qt::NoButton, Qt::LeftButton);
    mouse(QEvent::MouseButtonRelease, {190, 120}, Qt::LeftButton);
    EXPECT_TRUE(near(arrayPointAt({190, 120}), grabbed));
    EXPECT_TRUE(plot->sceneBoundingRect().contains(grabbed + QPointF(-100, 0)));

    // The context menu's one entry shows the whole image again.
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(50, 50), surface.viewport()->mapToGlobal(QPoint(50, 50)));
    QApplication::sendEvent(surface.viewport(), &event);
    QMenu* menu = plot->getMenu();
    EXPECT_TRUE(menu->isVisible());
    menu->hide();
    ASSERT_EQ(menu->actions().size(), 1);
    menu->actions().front()->trigger();
    EXPECT_TRUE(fitted());
}

TEST_F(PreviewSurfaceTest, TheWheelZoomsAboutTheCursorWithinLimits)
{
    // Screen pixels per array pixel after each turn: 1.2 times per notch, from
    // a twentieth of the fitted 2 up to 100.
    for (const auto& [notches, scale] : {std::pair{1, 2.4}, {40, 100.0}, {-1, 100 / 1.2}, {-80, 0.1}}) {
        const QPointF anchor = arrayPointAt({100, 100});
        wheel({100, 100}, notches);
        EXPECT_TRUE(near(arrayPointAt({100, 100}), anchor, 1 / scale)) << notches;
        EXPECT_NEAR(arrayPointAt({340, 100}).x() - arrayPointAt({100, 100}).x(), 240 / scale, 1 / scale) << notches;
    }
}

TEST_F(PreviewSurfaceTest, FramesOfOneSizeKeepTheZoomAndANewSizeFitsAgain)
{
    wheel({100, 100}, 2);
    const QPointF zoomed = arrayPointAt({300, 200});
    showFrame(100, 200);
    EXPECT_TRUE(near(arrayPointAt({300, 200}), zoomed, 1e-9));

    // 50 x 50 fits the height: 6 screen pixels per array pixel, 50 pixels in.
    showFrame(50, 50);
    EXPECT_TRUE(near(arrayPointAt({53, 3}), {0.5, 0.5}));
    EXPECT_TRUE(near(arrayPointAt({347, 297}), {49.5, 49.5}));
    // Still fitted after the surface is resized, as the user hasn't zoomed.
    surface.resize(100, 300);
    QApplication::processEvents();
    EXPECT_TRUE(near(arrayPointAt({50, 150}), {25, 25}));
}

TEST_F(PreviewSurfaceTest, ShowsSharpPixelsAndNothingAfterClear)
{
    // 50 x 50 fitted at 6 screen pixels: the edge between the halves is at x = 200.
    showFrame(50, 50);
    EXPECT_EQ(shownAt(197, 150), qRgb(0, 0, 0));
    EXPECT_EQ(shownAt(202, 150), qRgb(255, 255, 255));
    image->clear();
    EXPECT_EQ(shownAt(202, 150), QColor(Qt::blue).rgb());
}
