#pragma once

#include "toolboxes/importData/ui/PreviewImageItem.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QPointF>
#include <QRectF>

class QMenu;

namespace torvex {

class PreviewSurface;

// The view box of a preview surface: which part of the scene the surface
// shows, at what zoom and which way up. Made by PreviewSurface::addPlot.
//
// Until the user zooms or pans, the view keeps its items fitted, through
// resizes of the surface and changes of an image's size. Images of an
// unchanged size (the frames of one stack) keep the user's zoom and pan.
class PreviewPlot : public QObject {
    Q_OBJECT
public:
    explicit PreviewPlot(PreviewSurface* surface);

    void addItem(PreviewImageItem* item);
    // Row 0 at the top (true) or at the bottom.
    void invertY(bool inverted);
    // Square pixels whatever the size of the surface.
    void setAspectLocked(bool locked);

    // The part of the scene in view.
    QRectF sceneBoundingRect() const;
    // A scene position in the co-ordinates of the shown array, in pixels:
    // x the column, y the row.
    QPointF mapSceneToView(QPointF scenePos) const;

    // The menu of the right button: one entry, View All.
    QMenu* getMenu() const { return menu_; }
    // Fits all items into view and keeps them fitted until the user zooms or pans.
    void autoRange();
    // One array pixel per screen pixel, the items centred; the user's view from then on.
    void resetZoom();

    // Zooms by factor about a point of the surface's viewport, within limits
    // set by the fitted scale.
    void zoomAbout(QPointF viewportPos, double factor);
    // The user took over the view (started a pan): no more fitting.
    void disableAutoRange() { autoRange_ = false; }
    // The surface's viewport got a new size.
    void viewResized();

private:
    QRectF itemsBoundingRect() const;
    // Lets the view pan well beyond the items; their bounds, empty with nothing to show.
    QRectF coverItems();
    void applyScale(double sx, double sy);

    PreviewSurface* surface_;
    QMenu* menu_;
    QList<QPointer<PreviewImageItem>> items_;
    bool invertedY_ = false;
    bool aspectLocked_ = false;
    bool autoRange_ = true;
    double fittedScale_ = 1.0;
};

} // namespace torvex
