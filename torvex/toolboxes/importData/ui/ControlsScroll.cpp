#include "toolboxes/importData/ui/ControlsScroll.h"

#include <QEvent>
#include <QScrollBar>

#include <algorithm>

namespace torvex {

ControlsScroll::ControlsScroll(QWidget* controls)
{
    setObjectName("scrollArea_controls");
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidget(controls);
}

void ControlsScroll::fitControls()
{
    // Sized here, not by the scroll area itself: with a wrapping label among the controls it would
    // hold them at their preferred height, and on a low screen the lists would scroll out of sight
    // where they could have shrunk to their minimum.
    widget()->resize(viewport()->width(), std::max(viewport()->height(), widget()->minimumSizeHint().height()));
}

QSize ControlsScroll::sizeHint() const
{
    const QSize wanted = widget()->sizeHint();
    return {widthFor(wanted.width()), wanted.height()};
}

QSize ControlsScroll::minimumSizeHint() const
{
    // Low enough for any window; a few rows still show.
    return {widthFor(widget()->minimumSizeHint().width()), 4 * fontMetrics().height()};
}

bool ControlsScroll::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == widget() && event->type() == QEvent::LayoutRequest) {
        updateGeometry();
        fitControls();
    }
    return QScrollArea::eventFilter(watched, event);
}

bool ControlsScroll::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::LayoutRequest) updateGeometry();
    if (event->type() == QEvent::Resize) fitControls();
    return QScrollArea::viewportEvent(event);
}

int ControlsScroll::widthFor(int controlsWidth) const
{
    return controlsWidth + verticalScrollBar()->sizeHint().width() + 2 * frameWidth();
}

} // namespace torvex
