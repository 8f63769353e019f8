#pragma once

#include "NdArray.h"

#include <QString>

namespace torvex {

// Permutes the frame, row and column axes of a decoded (D, H, W, C) stack by
// `permute` ("1,0,2": three axis numbers), then flips columns (hflip) and rows
// (vflip) of the result. All views: no pixel is copied. The identity with no
// flip returns the very same array. Throws for a text that is not a valid
// permutation.
NdArray transferAxes(const NdArray& stack, const QString& permute, bool hflip, bool vflip);

} // namespace torvex
