#pragma once

#include "StillImageDecoder.h"

#include <optional>

namespace torvex {

// Reads a TIFF whose one sample per pixel is a palette index (1 to 8 bits)
// or a 1-bit gray value, stripped or tiled, with any compression. The general
// decoder expands palette indices to colours and misreads 1-bit files that
// leave out the bits-per-sample tag, which defaults to 1. Bilevel files come
// back as 0/1 with 1 for white. None for any other TIFF, which the general
// decoder reads correctly; throws std::runtime_error for a file that does not
// decode.
std::optional<DecodedImage> readTiffLowDepth(const QString& path);

} // namespace torvex
