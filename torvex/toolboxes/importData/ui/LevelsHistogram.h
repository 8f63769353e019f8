#pragma once

#include "toolboxes/importData/ui/PreviewImageItem.h"

#include <QFutureWatcher>
#include <QWidget>

#include <optional>
#include <vector>

class QToolButton;

namespace torvex {

// A strip under a preview: how the shown frame's values spread, with two
// handles that set the display range of the preview's image item, and an Auto
// button that scales each frame by its own range again (the default). The
// handles move between the frame's exact smallest and largest value, in whole
// numbers for integer frames. Display only: no data changes.
class LevelsHistogram : public QWidget {
    Q_OBJECT
public:
    // Drawn in the colours of the preview: its background and its text.
    LevelsHistogram(PreviewImageItem* item, const QColor& background, const QColor& text, QWidget* parent = nullptr);

    QToolButton* autoButton() const { return auto_; }
    // The range the handles show: the item's levels, or the frame's own.
    std::optional<ValueRange> shownLevels() const;
    // The x of a value in this widget, and back.
    double xOf(double value) const;
    double valueAt(double x) const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void onFrameShown(const NdArray& frame, std::optional<ValueRange> values);
    void onCleared();
    // Counts the newest waiting frame on another thread, so that paging never
    // waits for the histogram.
    void countWaiting();
    void moveHandleTo(double x);
    QRectF plotArea() const;
    // The values from the left to the right edge of the plot area.
    ValueRange axis() const;

    PreviewImageItem* item_;
    QColor background_, text_;
    QToolButton* auto_;
    std::optional<ValueRange> values_; // of the frame shown
    std::vector<int64_t> counts_;      // of the last frame counted, over countedRange_
    ValueRange countedRange_{0, 0};
    std::optional<std::pair<NdArray, ValueRange>> waiting_;
    QFutureWatcher<std::vector<int64_t>> counting_;
    ValueRange countingRange_{0, 0};
    bool integral_ = false;
    enum class Handle { None, Low, High } dragged_ = Handle::None;
};

} // namespace torvex
