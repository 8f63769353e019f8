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
    int valley;        // strides near a repeat match well too; one valley, one repeat
};
// Every stride in a valley of the differences, shortest first.
std::vector<Repeat> repeats(const ElementSampler& sampler, int64_t unit, int64_t maxStride);

// Row lengths the first valley points at, likeliest first: where a parabola
// through its squared differences bottoms out, and the strides either side
// of that. Smooth rows resemble rows a step aside nearly as well, so the
// valley's lowest point wanders with noise, while its shape does not.
std::vector<int64_t> rowLengths(const ElementSampler& sampler, const std::vector<Repeat>& found);

} // namespace torvex
