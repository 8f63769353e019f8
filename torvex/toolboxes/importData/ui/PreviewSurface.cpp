#include "toolboxes/importData/ui/PreviewSurface.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QWheelEvent>

#include <cmath>

namespace torvex {

namespace {

// Zoom of one notch of the wheel.
constexpr double zoomPerNotch = 1.2;

} // namespace

PreviewSurface::PreviewSurface(QWidget* parent) : QGraphicsView(parent), scene_(new PreviewScene(this))
{
    setScene(scene_);
    setFrameShape(QFrame::NoFrame);
    // Panning moves the hidden scroll bars.
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setDragMode(ScrollHandDrag);
    // The readout follows the mouse without a button pressed too.
    viewport()->setMouseTracking(true);
    setResizeAnchor(AnchorViewCenter);
}

PreviewPlot* PreviewSurface::addPlot()
{
    if (!plot_) plot_ = new PreviewPlot(this);
    return plot_;
}

void PreviewSurface::setBackground(const QColor& color) { setBackgroundBrush(color); }

void PreviewSurface::wheelEvent(QWheelEvent* event)
{
    if (!plot_) return QGraphicsView::wheelEvent(event);
    plot_->zoomAbout(event->position(), std::pow(zoomPerNotch, event->angleDelta().y() / 120.0));
    event->accept();
}

void PreviewSurface::mousePressEvent(QMouseEvent* event)
{
    if (plot_ && event->button() == Qt::LeftButton) plot_->disableAutoRange();
    QGraphicsView::mousePressEvent(event);
}

void PreviewSurface::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (!plot_ || event->button() != Qt::LeftButton) return QGraphicsView::mouseDoubleClickEvent(event);
    plot_->autoRange();
    event->accept();
}

void PreviewSurface::resizeEvent(QResizeEvent* event)
{
    QGraphicsView::resizeEvent(event);
    if (plot_) plot_->viewResized();
}

void PreviewSurface::contextMenuEvent(QContextMenuEvent* event)
{
    if (!plot_) return QGraphicsView::contextMenuEvent(event);
    plot_->getMenu()->popup(event->globalPos());
    event->accept();
}

} // namespace torvex
