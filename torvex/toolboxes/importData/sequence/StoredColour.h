#pragma once

#include <OpenImageIO/imageio.h>

#include <QString>

namespace torvex {

// How a file stores its pixels, where that changes what the array must hold.
enum class StoredColour {
    Direct,  // channel values, read as they are
    Palette, // indices into a colour table, which the decoder would expand
    Bilevel, // 1 bit per pixel, which the decoder widens to 0 and 255
};

// Looks at the opened file's format and header. The decoder reports neither a
// palette nor a 1-bit depth in the same way for every format, so each format
// is asked in its own terms. GIF and low-depth TIFF files have readers of
// their own and are not classified here.
StoredColour storedColourOf(const OIIO::ImageInput& input, const QString& path);

} // namespace torvex
