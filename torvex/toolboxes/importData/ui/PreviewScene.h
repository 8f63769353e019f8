#pragma once

#include <QGraphicsScene>
#include <QPointF>

namespace torvex {

// The scene of a preview surface. Its co-ordinates are those of the shown
// array: the pixel at column x, row y covers [x, x + 1) x [y, y + 1).
class PreviewScene : public QGraphicsScene {
    Q_OBJECT
public:
    using QGraphicsScene::QGraphicsScene;

signals:
    // Every move of the mouse over the surface, buttons pressed or not.
    void sigMouseMoved(QPointF scenePos);

protected:
    void mouseMoveEvent(QGraphicsSceneMouseEvent* event) override;
};

} // namespace torvex
