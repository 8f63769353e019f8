#pragma once

#include "ElementSampler.h"

#include <optional>

namespace torvex {

// The shortest stride, in units of `unit` elements, at which a file's values
// repeat: the row length at which each value best matches the one below it
// (unit 1, the column-straightening a user does by hand), or the rows per
// frame at which a row best matches the same row of the next frame (unit =
// the row length). Looks at strides 2 to `maxStride` and reads runs of
// values at a few dozen places, never the whole file. None without a clear repeat.
std::optional<int64_t> repeatLength(const ElementSampler& sampler, int64_t unit, int64_t maxStride);

} // namespace torvex
