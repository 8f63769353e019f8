#pragma once

#include <QScrollArea>

namespace torvex {

// The column of the panel's controls. On a screen lower than the controls
// need it scrolls rather than crushing them; it is as wide as they ask, with
// room kept for its scroll bar, so nothing in it is clipped either way.
class ControlsScroll : public QScrollArea {
public:
    explicit ControlsScroll(QWidget* controls);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    // The controls' size hints change (fonts, styles, a mode's page): the column follows.
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    int widthFor(int controlsWidth) const;
    // The controls as wide as the view and as high as it, or as their minimum if that is more.
    void fitControls();
};

} // namespace torvex
