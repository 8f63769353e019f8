#include "RawDecoder.h"

namespace torvex {

std::optional<NdArray> decodeRawVolume(const QByteArray& bytes, const RawLayout& p, const Progress& progress)
{
    const std::optional<ImageType> type = findImageType(p.imgType);
    if (!type) return std::nullopt;
    switch (type->layout) {
    case PixelLayout::Gray: return decodeGray(bytes, p, type->dtype, type->bytesPerPixel());
    case PixelLayout::Color: return decodeColor(bytes, p, type->colorType, type->bytesPerPixel(), progress);
    case PixelLayout::Bitmap: break;
    }
    return decodeBitmap(bytes, p, progress);
}

} // namespace torvex
