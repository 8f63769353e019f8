#include "toolboxes/importData/ui/ControlsScroll.h"

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

int ControlsScroll::widthFor(int controlsWidth) const
{
    return controlsWidth + verticalScrollBar()->sizeHint().width() + 2 * frameWidth();
}

} // namespace torvex
