#pragma once

#include "NdArray.h"

#include <QImage>

#include <optional>

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

// A closed range of element values.
struct ValueRange {
    double lo, hi;
    bool operator==(const ValueRange&) const = default;
};

// A frame for display, and what the frame holds.
struct DisplayFrame {
    QImage image;
    // The exact smallest and largest element over all channels, NaN ignored;
    // none when the frame holds no number.
    std::optional<ValueRange> values;
};

// As displayImage, but scaled by `levels` when given instead of by the
// frame's own range: the same formula with lo and hi taken from `levels`, so
// values below lo show as 0 and above hi as 255. Levels with hi <= lo show 0.
DisplayFrame displayFrame(const NdArray& frame, std::optional<ValueRange> levels = std::nullopt);

} // namespace torvex
