#pragma once

#include "DType.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace torvex {

// How the bytes of one image type become pixels.
enum class PixelLayout { Gray, Color, Bitmap };

// One of the thirteen image types a raw file can be read as.
struct ImageType {
    QString name;          // the exact text shown in the type list
    PixelLayout layout;
    DType dtype;           // element type of the decoded array
    int bytesPerPixel;     // 0 for the bitmap, whose pixels are single bits
    QString colorType;     // "rgb", "bgr", "argb", "abgr"; empty unless colour
    int channels;          // channels of the decoded array
};

// The thirteen types, in the order in which a name is looked up.
const std::vector<ImageType>& imageTypes();
// The type of that exact name, if there is one.
std::optional<ImageType> findImageType(const QString& name);
// Bytes per pixel as the leading bit count of the name divided by 8 ("1-bit
// Bitmap" gives 0.125); none when the name does not start with a number.
std::optional<double> bytesPerPixelOfName(const QString& name);

} // namespace torvex
