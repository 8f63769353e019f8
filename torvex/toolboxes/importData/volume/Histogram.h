#pragma once

#include "DisplayImage.h"
#include "NdArray.h"

#include <vector>

namespace torvex {

// How a frame's values spread over `range`: counts in `bins` equal bins, each
// closed below and open above but the last, which holds range.hi too. A range
// with lo == hi is one bin of that value. Elements outside the range and NaN
// are not counted.
//
// Of a frame with more than `samples` elements (all channels counted) only a
// regular grid of rows and columns is read, about `samples` elements, so the
// cost does not grow with the frame: enough for a picture of the spread.
std::vector<int64_t> sampledHistogram(const NdArray& frame, ValueRange range, int bins, int64_t samples);

// Samples enough for a histogram drawn a few hundred pixels wide, read within
// a few milliseconds from any frame.
constexpr int64_t drawnHistogramSamples = int64_t{1} << 19;

} // namespace torvex
