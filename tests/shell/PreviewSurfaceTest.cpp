#include "toolboxes/importData/ui/PreviewSurface.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QWheelEvent>

#include <gtest/gtest.h>

using namespace torvex;

namespace {

// A surface of 400 x 300 set up as the window sets up its previews, showing a
// 200 x 100 frame: fitted, it is drawn at 2 screen pixels per array pixel,
// 50 pixels below the top.
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
        image->setImage(frame(100, 200));
        QObject::connect(surface.scene(), &PreviewScene::sigMouseMoved, [this](QPointF pos) { moves.push_back(pos); });
    }

    // A frame whose left half is 0 and right half 255.
    static NdArray frame(int64_t h, int64_t w)
    {
        NdArray a = NdArray::zeros({h, w}, DType::UInt8);
        for (int64_t y = 0; y < h; ++y)
            std::fill_n(reinterpret_cast<uint8_t*>(a.mutableData()) + y * w + w / 2, w - w / 2, 255);
        return a;
    }

    void mouse(QEvent::Type type, QPointF at, Qt::MouseButton button = Qt::NoButton,
               Qt::MouseButtons held = Qt::NoButton)
    {
        QMouseEvent event(type, at, surface.viewport()->mapToGlobal(at), button, held, Qt::NoModifier);
        QApplication::sendEvent(surface.viewport(), &event);
    }

    // The array position under a point of the viewport, as the window's readout gets it.
    QPointF arrayPointAt(QPointF at)
    {
        mouse(QEvent::MouseMove, at);
        EXPECT_FALSE(moves.empty());
        return moves.empty() ? QPointF() : plot->mapSceneToView(moves.back());
    }

    void wheel(QPointF at, int notches)
    {
        QWheelEvent event(at, surface.viewport()->mapToGlobal(at), QPoint(), QPoint(0, 120 * notches),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(surface.viewport(), &event);
    }

    QRgb shownAt(int x, int y) { return surface.grab().toImage().pixel(x, y); }

    PreviewSurface surface;
    PreviewImageItem* image = new PreviewImageItem;
    PreviewPlot* plot = nullptr;
    std::vector<QPointF> moves;
};

void expectNear(QPointF actual, QPointF expected, double tolerance)
{
    EXPECT_NEAR(actual.x(), expected.x(), tolerance);
    EXPECT_NEAR(actual.y(), expected.y(), tolerance);
}

} // namespace

TEST_F(PreviewSurfaceTest, ReadsTheArrayPixelUnderTheCursorAfterZoomAndPan)
{
    // Moves without a button are reported too, which needs tracking on.
    EXPECT_TRUE(surface.viewport()->hasMouseTracking());
    const QRectF fitted = plot->sceneBoundingRect();
    expectNear(fitted.topLeft(), {0, -25}, 0.5);
    expectNear(fitted.bottomRight(), {200, 125}, 0.5);
    expectNear(arrayPointAt({200, 150}), {100, 50}, 0.5);
    expectNear(arrayPointAt({10, 60}), {5, 5}, 0.5);

    // The wheel zooms about the cursor: the pixel under it stays there.
    const QPointF anchor = arrayPointAt({100, 100});
    wheel({100, 100}, 1);
    expectNear(arrayPointAt({100, 100}), anchor, 0.5);
    expectNear(arrayPointAt({340, 100}), anchor + QPointF(240 / 2.4, 0), 0.5);

    // Dragging pans, even while the whole image is in view.
    wheel({100, 100}, -3);
    const QPointF grabbed = arrayPointAt({150, 150});
    mouse(QEvent::MouseButtonPress, {150, 150}, Qt::LeftButton, Qt::LeftButton);
    mouse(QEvent::MouseMove, {190, 120}, Qt::NoButton, Qt::LeftButton);
    mouse(QEvent::MouseButtonRelease, {190, 120}, Qt::LeftButton, Qt::NoButton);
    expectNear(arrayPointAt({190, 120}), grabbed, 0.5);

    EXPECT_TRUE(plot->sceneBoundingRect().contains(moves.back()));
    EXPECT_FALSE(plot->sceneBoundingRect().contains(QPointF(1000, 100)));

    // The context menu's one entry shows the whole image again.
    QMenu* menu = plot->getMenu();
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(50, 50), surface.viewport()->mapToGlobal(QPoint(50, 50)));
    QApplication::sendEvent(surface.viewport(), &event);
    EXPECT_TRUE(menu->isVisible());
    menu->hide();
    ASSERT_EQ(menu->actions().size(), 1);
    menu->actions().front()->trigger();
    expectNear(arrayPointAt({200, 150}), {100, 50}, 0.5);
    expectNear(arrayPointAt({10, 60}), {5, 5}, 0.5);
}

TEST_F(PreviewSurfaceTest, FramesOfOneSizeKeepTheZoomAndANewSizeFitsAgain)
{
    wheel({100, 100}, 2);
    const QPointF zoomed = arrayPointAt({300, 200});
    image->setImage(frame(100, 200));
    expectNear(arrayPointAt({300, 200}), zoomed, 1e-9);

    // 50 x 50 fits the height: 6 screen pixels per array pixel, 50 pixels in.
    image->setImage(frame(50, 50));
    expectNear(arrayPointAt({53, 3}), {0.5, 0.5}, 0.5);
    expectNear(arrayPointAt({347, 297}), {49.5, 49.5}, 0.5);

    // Still fitted after the surface is resized, as the user hasn't zoomed.
    surface.resize(100, 300);
    QApplication::processEvents();
    expectNear(arrayPointAt({50, 150}), {25, 25}, 0.5);
}

TEST_F(PreviewSurfaceTest, ShowsSharpPixelsAndNothingAfterClear)
{
    // 50 x 50 fitted at 6 screen pixels: the edge between the halves is at x = 200.
    image->setImage(frame(50, 50));
    EXPECT_EQ(image->boundingRect(), QRectF(0, 0, 50, 50));
    EXPECT_EQ(shownAt(197, 150), qRgb(0, 0, 0));
    EXPECT_EQ(shownAt(202, 150), qRgb(255, 255, 255));

    image->clear();
    EXPECT_TRUE(image->boundingRect().isEmpty());
    EXPECT_EQ(shownAt(202, 150), QColor(Qt::blue).rgb());
}
