#pragma once

#include "NdArray.h"

#include <QPointF>
#include <QString>

#include <optional>

namespace torvex {

// The readout for image position `pt` (x column, y row, in pixels) of a frame
// of shape (H, W) or (H, W, C): "X:12  Y:7  ▶  200  13  4". Co-ordinates are
// truncated toward zero; none when they fall outside the frame.
std::optional<QString> pixelReadout(const NdArray& frame, const QPointF& pt);

} // namespace torvex
