#include "toolboxes/importData/ui/ControlsScroll.h"

#include <QEvent>
#include <QScrollBar>

namespace torvex {

ControlsScroll::ControlsScroll(QWidget* controls)
{
    setObjectName("scrollArea_controls");
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidget(controls);
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
    if (watched == widget() && event->type() == QEvent::LayoutRequest) updateGeometry();
    return QScrollArea::eventFilter(watched, event);
}

bool ControlsScroll::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::LayoutRequest) updateGeometry();
    return QScrollArea::viewportEvent(event);
}

int ControlsScroll::widthFor(int controlsWidth) const
{
    return controlsWidth + verticalScrollBar()->sizeHint().width() + 2 * frameWidth();
}

} // namespace torvex
