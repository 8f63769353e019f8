#include "toolboxes/importData/ui/PreviewPlot.h"

#include "toolboxes/importData/ui/PreviewSurface.h"

#include <QMenu>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace torvex {

namespace {

// Zoom limits: out to a twentieth of the fitted scale, in to 100 screen pixels
// per array pixel (or the fitted scale, when that is more).
constexpr double zoomOutLimit = 1.0 / 20;
constexpr double zoomInLimit = 100;
// How far the view can be panned beyond its items, in item sizes on each side:
// enough to put them anywhere in view at the widest zoom.
constexpr double panMargin = 20;

} // namespace

PreviewPlot::PreviewPlot(PreviewSurface* surface) : QObject(surface), surface_(surface), menu_(new QMenu(surface))
{
    connect(menu_->addAction("View All"), &QAction::triggered, this, &PreviewPlot::autoRange);
}

void PreviewPlot::addItem(PreviewImageItem* item)
{
    surface_->scene()->addItem(item);
    items_.append(item);
    connect(item, &PreviewImageItem::sizeChanged, this, &PreviewPlot::autoRange);
    autoRange();
}

void PreviewPlot::invertY(bool inverted)
{
    if (inverted == invertedY_) return;
    invertedY_ = inverted;
    surface_->scale(1, -1);
}

void PreviewPlot::setAspectLocked(bool locked)
{
    aspectLocked_ = locked;
    if (autoRange_) {
        autoRange();
    } else if (locked) {
        const double scale = std::abs(surface_->transform().m11());
        applyScale(scale, scale);
    }
}

QRectF PreviewPlot::sceneBoundingRect() const
{
    return surface_->viewportTransform().inverted().mapRect(QRectF(surface_->viewport()->rect()));
}

QPointF PreviewPlot::mapSceneToView(QPointF scenePos) const
{
    // Items sit untransformed at the scene's origin, while zoom, pan and
    // orientation are the surface's transform: the scene's co-ordinates
    // already are the array's.
    return scenePos;
}

void PreviewPlot::autoRange()
{
    autoRange_ = true;
    const QSize viewport = surface_->viewport()->size();
    if (viewport.isEmpty()) return;
    const QRectF bounds = coverItems();
    if (bounds.isEmpty()) return;
    double sx = viewport.width() / bounds.width(), sy = viewport.height() / bounds.height();
    if (aspectLocked_) sx = sy = std::min(sx, sy);
    fittedScale_ = std::min(sx, sy);
    applyScale(sx, sy);
    surface_->centerOn(bounds.center());
}

void PreviewPlot::resetZoom()
{
    const QRectF bounds = coverItems();
    if (bounds.isEmpty()) return;
    autoRange_ = false;
    // The transform maps to device-independent pixels; a screen pixel is smaller on a scaled screen.
    const double scale = 1.0 / surface_->devicePixelRatioF();
    applyScale(scale, scale);
    surface_->centerOn(bounds.center());
}

void PreviewPlot::zoomAbout(QPointF viewportPos, double factor)
{
    const double scale = std::abs(surface_->transform().m11());
    const double target =
        std::clamp(scale * factor, fittedScale_ * zoomOutLimit, std::max(fittedScale_, zoomInLimit));
    if (target == scale) return;
    autoRange_ = false;
    const QPointF anchor = surface_->viewportTransform().inverted().map(viewportPos);
    surface_->scale(target / scale, target / scale);
    // Scroll the anchor back under the cursor.
    const QPointF drift = surface_->viewportTransform().map(anchor) - viewportPos;
    surface_->horizontalScrollBar()->setValue(surface_->horizontalScrollBar()->value() + qRound(drift.x()));
    surface_->verticalScrollBar()->setValue(surface_->verticalScrollBar()->value() + qRound(drift.y()));
}

void PreviewPlot::viewResized()
{
    if (autoRange_) autoRange();
}

QRectF PreviewPlot::itemsBoundingRect() const
{
    QRectF bounds;
    for (const PreviewImageItem* item : items_)
        if (item) bounds |= item->sceneBoundingRect();
    return bounds;
}

QRectF PreviewPlot::coverItems()
{
    const QRectF bounds = itemsBoundingRect();
    if (bounds.isEmpty()) return bounds;
    const double margin = panMargin * std::max(bounds.width(), bounds.height());
    surface_->setSceneRect(bounds.adjusted(-margin, -margin, margin, margin));
    return bounds;
}

void PreviewPlot::applyScale(double sx, double sy)
{
    surface_->setTransform(QTransform::fromScale(sx, invertedY_ ? sy : -sy));
}

} // namespace torvex
