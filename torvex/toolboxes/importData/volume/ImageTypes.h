#pragma once

#include "DType.h"

#include <QString>

#include <optional>
#include <vector>

namespace torvex {

// How the bytes of one image type become pixels.
enum class PixelLayout { Gray, Color, Bitmap };

// One of the thirteen image types a raw file can be read as: the one table
// from which the decoders, the byte balance and the generated code all read.
struct ImageType {
    QString name;          // the exact text shown in the type list
    PixelLayout layout;
    DType dtype;           // element type of the decoded array
    int bitsPerPixel;      // the leading number of the name
    QString colorType;     // "rgb", "bgr", "argb", "abgr"; empty unless colour
    int channels;          // channels of the decoded array

    // Whole bytes a pixel takes: 0 for the bitmap, whose pixels are single bits.
    int bytesPerPixel() const { return bitsPerPixel / 8; }
    // What a pixel weighs in the byte balance: 0.125 for the bitmap.
    double balanceBytesPerPixel() const { return bitsPerPixel / 8.0; }
};

// The thirteen types, in the order in which a name is looked up.
const std::vector<ImageType>& imageTypes();
// The type of that exact name, if there is one.
std::optional<ImageType> findImageType(const QString& name);

} // namespace torvex
