#pragma once

#include "toolboxes/importData/volume/NdArray.h"

#include <QGraphicsObject>
#include <QImage>

namespace torvex {

// One frame of an array on a preview surface, its pixel at column x, row y
// covering [x, x + 1) x [y, y + 1) of the scene. Drawn with nearest pixels at
// any zoom: a preview shows values, never blends them.
class PreviewImageItem : public QGraphicsObject {
    Q_OBJECT
public:
    explicit PreviewImageItem(QGraphicsItem* parent = nullptr);

    // Shows a frame of shape (H, W) or (H, W, C), C of 1, 3 or 4, scaled by its
    // own range (see displayImage). Throws std::runtime_error for other shapes.
    void setImage(const NdArray& frame);
    // Shows nothing.
    void clear();

    QRectF boundingRect() const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

signals:
    // The shown image got another width or height (clearing counts as 0 x 0).
    void sizeChanged();

private:
    void show(QImage image);

    QImage image_;
};

} // namespace torvex
