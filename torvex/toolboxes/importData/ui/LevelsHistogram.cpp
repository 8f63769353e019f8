#include "toolboxes/importData/ui/LevelsHistogram.h"

#include "toolboxes/importData/volume/Histogram.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QToolButton>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>
#include <cmath>

namespace torvex {

namespace {

constexpr int bins = 256;
constexpr int stripHeight = 40;
const QColor handleColor(0, 120, 212);

} // namespace

LevelsHistogram::LevelsHistogram(PreviewImageItem* item, const QColor& background, const QColor& text,
                                 QWidget* parent)
    : QWidget(parent), item_(item), background_(background), text_(text), auto_(new QToolButton(this))
{
    setFixedHeight(stripHeight);
    setCursor(Qt::SizeHorCursor);
    setToolTip("Drag the handles to set the display range; the data is not changed");
    auto_->setText("Auto");
    auto_->setCursor(Qt::ArrowCursor);
    auto_->setCheckable(true);
    auto_->setChecked(true);
    auto_->setToolTip("Scale each frame by its own smallest and largest value");
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 4, 0);
    layout->addStretch(1);
    layout->addWidget(auto_);

    connect(auto_, &QToolButton::clicked, this, [this] {
        item_->setLevels(std::nullopt);
        auto_->setChecked(true); // a click on the checked button leaves it on
    });
    connect(item_, &PreviewImageItem::frameShown, this, &LevelsHistogram::onFrameShown);
    connect(item_, &PreviewImageItem::cleared, this, &LevelsHistogram::onCleared);
    connect(&counting_, &QFutureWatcher<std::vector<int64_t>>::finished, this, [this] {
        counts_ = counting_.result();
        countedRange_ = countingRange_;
        update();
        countWaiting();
    });
}

void LevelsHistogram::onFrameShown(const NdArray& frame, std::optional<ValueRange> values)
{
    values_ = values;
    integral_ = !isFloating(frame.dtype());
    auto_->setChecked(!item_->levels());
    // A view of the frame: it holds the stack only until it is counted. An
    // integer frame of a narrow range gets a bin per value, [v, v + 1), and no
    // empty bins between them.
    if (values) waiting_.emplace(frame, integral_ ? ValueRange{values->lo, values->hi + 1} : *values);
    else onCleared();
    if (!counting_.isRunning()) countWaiting();
    update();
}

void LevelsHistogram::countWaiting()
{
    if (!waiting_) return;
    auto [frame, range] = std::move(*waiting_);
    waiting_.reset();
    countingRange_ = range;
    const int binCount = integral_ ? static_cast<int>(std::min<double>(bins, range.hi - range.lo)) : bins;
    counting_.setFuture(QtConcurrent::run([frame = std::move(frame), range = range, binCount] {
        return sampledHistogram(frame, range, binCount, drawnHistogramSamples);
    }));
}

void LevelsHistogram::onCleared()
{
    values_.reset();
    waiting_.reset();
    counts_.clear();
    update();
}

std::optional<ValueRange> LevelsHistogram::shownLevels() const
{
    if (const auto levels = item_->levels()) return levels;
    return values_;
}

ValueRange LevelsHistogram::axis() const
{
    ValueRange range = values_.value_or(ValueRange{0, 1});
    if (const auto levels = item_->levels()) range = {std::min(range.lo, levels->lo), std::max(range.hi, levels->hi)};
    // A flat frame still gets room to pull the handles apart.
    if (!(range.lo < range.hi)) range = {range.lo - 1, range.hi + 1};
    return range;
}

QRectF LevelsHistogram::plotArea() const
{
    constexpr double margin = 6;
    return QRectF(margin, 3, std::max(1.0, auto_->x() - 2 * margin), height() - 6.0);
}

double LevelsHistogram::xOf(double value) const
{
    const ValueRange range = axis();
    const QRectF area = plotArea();
    return area.left() + (value - range.lo) / (range.hi - range.lo) * area.width();
}

double LevelsHistogram::valueAt(double x) const
{
    const ValueRange range = axis();
    const QRectF area = plotArea();
    return range.lo + (x - area.left()) / area.width() * (range.hi - range.lo);
}

void LevelsHistogram::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), background_);
    const std::optional<ValueRange> levels = shownLevels();
    if (!values_ || !levels) return;
    const QRectF area = plotArea();

    // Counts on a log scale: one strong peak (a background) would flatten the rest.
    const int64_t most = counts_.empty() ? 0 : *std::max_element(counts_.begin(), counts_.end());
    if (most > 0) {
        const double binWidth = (countedRange_.hi - countedRange_.lo) / static_cast<double>(counts_.size());
        QColor barColor = text_;
        barColor.setAlpha(150);
        // Plain rectangles: a path of hundreds of them takes milliseconds to fill.
        for (size_t i = 0; i < counts_.size(); ++i) {
            if (counts_[i] == 0) continue;
            const double h = std::log1p(static_cast<double>(counts_[i])) / std::log1p(static_cast<double>(most));
            const double left = xOf(countedRange_.lo + binWidth * static_cast<double>(i));
            const double right = std::max(left + 1, xOf(countedRange_.lo + binWidth * static_cast<double>(i + 1)));
            painter.fillRect(QRectF(left, area.bottom() - h * area.height(), right - left, h * area.height()),
                             barColor);
        }
    }

    // Outside the range the display saturates: shaded.
    const double lowX = xOf(levels->lo), highX = xOf(levels->hi);
    QColor shade = text_;
    shade.setAlpha(45);
    painter.fillRect(QRectF(area.left(), area.top(), lowX - area.left(), area.height()), shade);
    painter.fillRect(QRectF(highX, area.top(), area.right() - highX, area.height()), shade);
    painter.setRenderHint(QPainter::Antialiasing);
    for (const double x : {lowX, highX}) {
        painter.setPen(QPen(handleColor, 2));
        painter.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
        painter.setPen(Qt::NoPen);
        painter.setBrush(handleColor);
        painter.drawPolygon(QPolygonF({QPointF(x - 5, area.bottom() + 3), QPointF(x + 5, area.bottom() + 3),
                                       QPointF(x, area.bottom() - 5)}));
    }
    painter.setPen(text_);
    QFont small = font();
    small.setPointSizeF(7.5);
    painter.setFont(small);
    // Each handle's value beside it, on the inside of the range.
    const QRectF inside(lowX + 4, area.top(), std::max(0.0, highX - lowX - 8), area.height());
    painter.drawText(inside, Qt::AlignTop | Qt::AlignLeft, QString::number(levels->lo, 'g', 6));
    painter.drawText(inside, Qt::AlignTop | Qt::AlignRight, QString::number(levels->hi, 'g', 6));
}

void LevelsHistogram::mousePressEvent(QMouseEvent* event)
{
    const std::optional<ValueRange> levels = shownLevels();
    if (event->button() != Qt::LeftButton || !levels) return QWidget::mousePressEvent(event);
    // The nearer handle comes to the press and follows the drag.
    const double x = event->position().x();
    dragged_ = std::abs(x - xOf(levels->lo)) <= std::abs(x - xOf(levels->hi)) ? Handle::Low : Handle::High;
    moveHandleTo(x);
}

void LevelsHistogram::mouseMoveEvent(QMouseEvent* event)
{
    if (dragged_ != Handle::None) moveHandleTo(event->position().x());
}

void LevelsHistogram::mouseReleaseEvent(QMouseEvent*) { dragged_ = Handle::None; }

void LevelsHistogram::moveHandleTo(double x)
{
    const std::optional<ValueRange> levels = shownLevels();
    if (!levels) return;
    const ValueRange range = axis();
    double value = std::clamp(valueAt(x), range.lo, range.hi);
    if (integral_) value = std::round(value);
    // The handles never meet: the smallest step apart that still shows two levels.
    const double gap = integral_ ? 1 : (range.hi - range.lo) * 1e-6;
    ValueRange next = *levels;
    if (dragged_ == Handle::Low) next.lo = std::min(value, next.hi - gap);
    else next.hi = std::max(value, next.lo + gap);
    item_->setLevels(next);
    update();
}

} // namespace torvex
