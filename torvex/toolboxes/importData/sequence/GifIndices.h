#pragma once

#include "IndexedImage.h"

namespace torvex {

// The palette indices of a GIF file's first image, on a canvas of the file's
// screen size; pixels outside that image hold its transparent index, or 0.
// (General decoders only give GIF pixels as colours.) Throws
// std::runtime_error for a file that is not a complete GIF image.
IndexedImage readGifIndices(const QString& path);

} // namespace torvex
