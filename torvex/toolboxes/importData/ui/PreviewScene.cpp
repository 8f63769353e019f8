#include "toolboxes/importData/ui/PreviewScene.h"

#include <QGraphicsSceneMouseEvent>

namespace torvex {

void PreviewScene::mouseMoveEvent(QGraphicsSceneMouseEvent* event)
{
    emit sigMouseMoved(event->scenePos());
    QGraphicsScene::mouseMoveEvent(event);
}

} // namespace torvex
