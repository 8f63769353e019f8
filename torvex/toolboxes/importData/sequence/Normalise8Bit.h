#pragma once

#include "StillImageDecoder.h"

namespace torvex {

// Brings a decoded image to uint8, stretching each image by its own minimum
// and maximum over all elements and channels:
// - uint8 is returned unchanged (the same storage, not stretched);
// - uint16 is stretched in float32, float32 and float64 in their own precision,
//   everything else (other integers, float16, 1-bit images) in float64;
// - the final conversion truncates toward zero;
// - when the maximum is not above the minimum (a constant image, or a NaN,
//   which makes both NaN) the result is all zero.
NdArray normaliseToUInt8(const DecodedImage& image);

} // namespace torvex
