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

// The row length: the lowest point of the first valley. Later, closer ones
// are frames, whose rows match better than neighbouring rows do.
std::optional<int64_t> firstRepeat(const std::vector<Repeat>& found);
// Candidates for the frame height: strides about as close as the closest,
// shortest first. Rows of smooth images may resemble rows at many strides,
// and rows next to the frame's by as little as noise; the file size decides.
std::vector<int64_t> closestRepeats(const std::vector<Repeat>& found);

} // namespace torvex
