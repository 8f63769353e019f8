#pragma once

#include "toolboxes/importData/ui/PreviewImageItem.h"
#include "toolboxes/importData/ui/PreviewPlot.h"
#include "toolboxes/importData/ui/PreviewScene.h"

#include <QColor>
#include <QGraphicsView>

namespace torvex {

// A preview of one array frame: a graphics view holding one plot that fills it
// without margin, panned by dragging with the left button, zoomed by the wheel
// about the cursor, fitted again by a double-click, with the plot's menu on
// the right button.
class PreviewSurface : public QGraphicsView {
    Q_OBJECT
public:
    explicit PreviewSurface(QWidget* parent = nullptr);

    // The surface's one plot, made by the first call.
    PreviewPlot* addPlot();
    void setBackground(const QColor& color);
    PreviewScene* scene() const { return scene_; }

protected:
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    PreviewScene* scene_;
    PreviewPlot* plot_ = nullptr;
};

} // namespace torvex
