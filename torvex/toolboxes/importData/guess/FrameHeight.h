#pragma once

#include "ElementSampler.h"

#include <optional>
#include <vector>

namespace torvex {

// A frame shape the data shows: rows of `width` values, `height` rows per
// frame, the frames filling the file after `header` values.
struct FrameShape {
    int64_t width;
    int64_t height;
    int64_t header;
};

// The frame shape among the given row lengths whose rows match the same row
// of the next frame clearly better than they match the rows just above and
// below it there. Frames fill the file but for a short header (at most
// `maxHeader` values), so heights are few. None for a single frame.
std::optional<FrameShape> findFrames(const ElementSampler& sampler, const std::vector<int64_t>& widths,
                                     int64_t maxHeight, int64_t maxHeader);

} // namespace torvex
