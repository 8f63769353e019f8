#pragma once

#include "toolboxes/importData/volume/DisplayImage.h"
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

    // Shows a frame of shape (H, W) or (H, W, C), C of 1, 3 or 4, scaled by the
    // levels (see displayFrame). Throws std::runtime_error for other shapes.
    void setImage(const NdArray& frame);
    // Shows nothing.
    void clear();

    // The display range: none (the default) scales each frame by its own
    // range. For display only; a frame of another shape or element type goes
    // back to none.
    std::optional<ValueRange> levels() const { return levels_; }
    void setLevels(std::optional<ValueRange> levels);

    QRectF boundingRect() const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

signals:
    // The shown image got another width or height (clearing counts as 0 x 0).
    void sizeChanged();
    // A frame is shown, with the exact range of its values (none for a frame
    // without numbers). The frame is valid during the call only.
    void frameShown(const NdArray& frame, std::optional<ValueRange> values);
    // Nothing is shown any more.
    void cleared();
    // The levels were set: the frame should be shown again with them. The item
    // keeps no frame of its own, so as not to hold a stack past its source.
    void levelsChanged();

private:
    void show(QImage image);

    QImage image_;
    std::optional<ValueRange> levels_;
    // Of the last frame shown, to tell a frame of the same stack.
    std::vector<int64_t> shape_;
    std::optional<DType> dtype_;
};

} // namespace torvex
