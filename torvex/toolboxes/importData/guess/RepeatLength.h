#pragma once

#include "ElementSampler.h"

#include <vector>

namespace torvex {

// Row lengths at which each value matches the one below it (the
// column-straightening a user does by hand), likeliest first, from strides 2
// to `maxWidth`. Smooth rows resemble rows a step aside nearly as well, so
// the differences form a valley around the row length whose lowest point
// wanders with noise while its shape does not: the length is where a
// parabola through the valley bottoms out, with the strides either side of
// it. Reads runs of values at a few dozen places, never the whole file.
std::vector<int64_t> rowLengths(const ElementSampler& sampler, int64_t maxWidth);

} // namespace torvex
