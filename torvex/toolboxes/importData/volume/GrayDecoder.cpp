#include "FrameRange.h"
#include "RawDecoder.h"

namespace torvex {

NdArray decodeGray(const QByteArray& bytes, const RawLayout& p, DType dtype, int bytesPerPixel)
{
    checkNonNegative(p.offset, p.gap, p.width, p.height);
    const int64_t pixels = saturatingMul(p.width, p.height);
    const FrameRange range(bytes.size(), p.offset, p.gap, saturatingMul(pixels, bytesPerPixel), p.frame);

    if (p.frame == 1) {
        const int64_t available = range.singleFrameBytes();
        if (available % bytesPerPixel != 0) throw std::runtime_error("buffer size must be a multiple of element size");
        readOrderCode(p.readOrder);
        if (available / bytesPerPixel != pixels)
            throw std::runtime_error("cannot reshape array of size " + std::to_string(available / bytesPerPixel) +
                                     " into shape " + shapeText({1, p.height, p.width, 1}));
    } else {
        range.checkFrames([&] { readOrderCode(p.readOrder); });
    }
    const auto [rowStride, columnStride] = pixelStrides(readOrderCode(p.readOrder), p.height, p.width, bytesPerPixel);
    return NdArray::strided(bytes, p.offset, {p.frame, p.height, p.width, 1},
                            {range.frameStride(), rowStride, columnStride, bytesPerPixel}, dtype, p.byteOrder);
}

} // namespace torvex
