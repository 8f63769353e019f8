#pragma once

#include "toolboxes/importData/volume/NdArray.h"

#include <QString>

#include <functional>

namespace torvex {

class TiffPages;

// One still image as its file stores it.
struct DecodedImage {
    // (H, W) for one channel, else (H, W, C), in the stored element type:
    // nothing is converted to RGB or to 8 bits. Palette images hold their
    // palette indices as uint8.
    NdArray pixels;
    // A 1-bit image: pixels are 0 and 1 and count as booleans, which are
    // stretched like any non-8-bit type rather than passed through.
    bool bilevel = false;
};

// Gives the array that stored pixels are decoded into, so a caller can place
// them where they are finally needed.
using PixelAllocator = std::function<NdArray(const Shape& shape, DType dtype)>;

// Decodes the first image of `path`. Throws std::runtime_error for anything
// that is not a readable still image: unknown format, truncated or vanished
// file, a header that claims an absurd size, a pixel type with no array type.
// Channel values are decoded into memory from `allocate`; palette and 1-bit
// images, which are rewritten after decoding, always get arrays of their own.
DecodedImage decodeStillImage(const QString& path, const PixelAllocator& allocate = NdArray::empty);
// Page `page` (from 0) of a multi-page TIFF or an animated GIF; page 0 is
// decodeStillImage's. Later pages are read with their stored values, through
// `openPages` where it reads them, else by the general decoder; a GIF's later
// frames as they show, composed over the frames before them.
DecodedImage decodeStillImagePage(const QString& path, int page, const PixelAllocator& allocate = NdArray::empty,
                                  TiffPages* openPages = nullptr);
// The number of pages of a TIFF file or frames of a GIF; 1 for any other file
// or one that does not open.
int stillImagePageCount(const QString& path);

// Throws when a header claims more decoded bytes than a file of `fileBytes`
// can plausibly hold, so that a damaged header allocates nothing.
void checkPlausibleSize(double claimedBytes, double fileBytes);

// Largest decoded image accepted, so a hostile header cannot make the decoder
// allocate absurd amounts.
constexpr int kMaxDecodedImageMegabytes = 4096;

} // namespace torvex
