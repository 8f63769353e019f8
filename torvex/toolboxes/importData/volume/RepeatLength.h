#pragma once

#include "ElementSampler.h"

#include <optional>
#include <vector>

namespace torvex {

// Strides, in units of `unit` elements, at which a file's values repeat:
// row lengths at which each value matches the one below it (unit 1, the
// column-straightening a user does by hand), or rows per frame at which a
// row matches the same row of the next frame (unit = the row length).
// Looks at strides 2 to `maxStride` and reads runs of values at a few dozen
// places, never the whole file.
struct Repeat {
    int64_t stride;
    double difference; // at the stride, relative to the median over all strides
};
std::vector<Repeat> repeats(const ElementSampler& sampler, int64_t unit, int64_t maxStride);

// The row length: the first repeat. A later, closer one is a frame or more
// of rows that match better than neighbouring rows do.
std::optional<int64_t> firstRepeat(const std::vector<Repeat>& found);
// The frame height: the closest repeat, or a shorter one about as close.
// Rows of smooth images may resemble rows at many strides; the next frame's
// same row matches best.
std::optional<int64_t> closestRepeat(const std::vector<Repeat>& found);

} // namespace torvex
