#include "toolboxes/importData/ui/PreviewImageItem.h"

#include "toolboxes/importData/volume/DisplayImage.h"

#include <QPainter>

namespace torvex {

PreviewImageItem::PreviewImageItem(QGraphicsItem* parent) : QGraphicsObject(parent) {}

void PreviewImageItem::setImage(const NdArray& frame) { show(displayImage(frame)); }

void PreviewImageItem::clear() { show(QImage()); }

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
