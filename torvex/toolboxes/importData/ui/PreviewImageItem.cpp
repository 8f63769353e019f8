#include "toolboxes/importData/ui/PreviewImageItem.h"

#include <QPainter>

namespace torvex {

PreviewImageItem::PreviewImageItem(QGraphicsItem* parent) : QGraphicsObject(parent) {}

void PreviewImageItem::setImage(const NdArray& frame)
{
    if (frame.shape() != shape_ || frame.dtype() != dtype_) levels_.reset();
    DisplayFrame shown = displayFrame(frame, levels_);
    shape_ = frame.shape();
    dtype_ = frame.dtype();
    show(std::move(shown.image));
    emit frameShown(frame, shown.values);
}

void PreviewImageItem::clear()
{
    show(QImage());
    emit cleared();
}

void PreviewImageItem::setLevels(std::optional<ValueRange> levels)
{
    if (levels == levels_) return;
    levels_ = levels;
    emit levelsChanged();
}

void PreviewImageItem::show(QImage image)
{
    const bool resized = image.size() != image_.size();
    if (resized) prepareGeometryChange();
    image_ = std::move(image);
    update();
    if (resized) emit sizeChanged();
}

QRectF PreviewImageItem::boundingRect() const { return QRectF(QPointF(0, 0), image_.size()); }

void PreviewImageItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    if (image_.isNull()) return;
    painter->setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter->drawImage(boundingRect(), image_);
}

} // namespace torvex
