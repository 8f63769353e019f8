#pragma once

#include "NdArray.h"

#include <QImage>

namespace torvex {

// One frame for display: shape (H, W) or (H, W, C) with C of 1, 3 or 4, any
// element type, any strides. Each frame is scaled by its own range: with lo and
// hi the smallest and largest element over all channels (NaN ignored), a value
// v shows as floor((v - lo) * 255 / (hi - lo)) clipped to 0..255, computed in
// double; NaN shows as 0, and so does every element of a frame with hi == lo.
// C of 1 (or none) gives Format_Grayscale8, 3 Format_RGB888 and 4
// Format_RGBA8888, alpha scaled like the colours.
// Throws std::runtime_error for any other shape.
QImage displayImage(const NdArray& frame);

} // namespace torvex
