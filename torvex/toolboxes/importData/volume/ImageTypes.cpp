#include "ImageTypes.h"

namespace torvex {

const std::vector<ImageType>& imageTypes()
{
    static const std::vector<ImageType> types = {
        {"8-bit", PixelLayout::Gray, DType::UInt8, 8, "", 1},
        {"16-bit Signed", PixelLayout::Gray, DType::Int16, 16, "", 1},
        {"16-bit Unsigned", PixelLayout::Gray, DType::UInt16, 16, "", 1},
        {"32-bit Signed", PixelLayout::Gray, DType::Int32, 32, "", 1},
        {"32-bit Unsigned", PixelLayout::Gray, DType::UInt32, 32, "", 1},
        {"16-bit Real", PixelLayout::Gray, DType::Float16, 16, "", 1},
        {"32-bit Real", PixelLayout::Gray, DType::Float32, 32, "", 1},
        {"64-bit Real", PixelLayout::Gray, DType::Float64, 64, "", 1},
        {"24-bit RGB", PixelLayout::Color, DType::UInt8, 24, "rgb", 3},
        {"24-bit BGR", PixelLayout::Color, DType::UInt8, 24, "bgr", 3},
        {"32-bit ARGB", PixelLayout::Color, DType::UInt8, 32, "argb", 4},
        {"32-bit ABGR", PixelLayout::Color, DType::UInt8, 32, "abgr", 4},
        {"1-bit Bitmap", PixelLayout::Bitmap, DType::UInt8, 1, "", 1},
    };
    return types;
}

std::optional<ImageType> findImageType(const QString& name)
{
    for (const ImageType& type : imageTypes())
        if (type.name == name) return type;
    return std::nullopt;
}

} // namespace torvex
