#include "FrameRange.h"
#include "RawDecoder.h"

#include <algorithm>
#include <vector>

namespace torvex {

namespace {

// For each output channel R, G, B (and A), the byte of a pixel (interleaved)
// or the plane of a frame (planar) it comes from.
std::vector<int64_t> channelSources(const QString& colorType, bool interleaved, bool littleEndian)
{
    // Planar frames and big-endian pixels read in file order; a little-endian
    // pixel word holds its bytes the other way round.
    const bool reversedPixel = interleaved && littleEndian;
    if (colorType == "rgb") return reversedPixel ? std::vector<int64_t>{2, 1, 0} : std::vector<int64_t>{0, 1, 2};
    if (colorType == "bgr") return reversedPixel ? std::vector<int64_t>{0, 1, 2} : std::vector<int64_t>{2, 1, 0};
    if (colorType == "argb")
        return reversedPixel ? std::vector<int64_t>{2, 1, 0, 3} : std::vector<int64_t>{1, 2, 3, 0};
    if (colorType == "abgr")
        return reversedPixel ? std::vector<int64_t>{0, 1, 2, 3} : std::vector<int64_t>{3, 2, 1, 0};
    throw std::runtime_error("Unknown colour type: " + colorType.toStdString());
}

// The common step between sources, when they are evenly spaced.
std::optional<int64_t> evenStep(const std::vector<int64_t>& sources)
{
    const int64_t step = sources[1] - sources[0];
    for (size_t i = 2; i < sources.size(); ++i)
        if (sources[i] - sources[i - 1] != step) return std::nullopt;
    return step;
}

} // namespace

NdArray decodeColor(const QByteArray& bytes, const RawLayout& p, const QString& colorType, int bytesPerPixel,
                    const Progress& progress)
{
    checkNonNegative(p.offset, p.gap, p.width, p.height);
    const int64_t k = bytesPerPixel;
    const int64_t pixels = saturatingMul(p.width, p.height);
    const FrameRange range(bytes.size(), p.offset, p.gap, saturatingMul(pixels, k), p.frame);
    const bool interleaved = p.colorOrder == "ABCABC";
    const std::vector<int64_t> sources = channelSources(colorType, interleaved, p.byteOrder == ByteOrder::Little);

    if (p.frame == 1) {
        const int64_t available = range.singleFrameBytes();
        if (available % k != 0) throw std::runtime_error("all input arrays must have the same shape");
        readOrderCode(p.readOrder);
        if (available / k != pixels)
            throw std::runtime_error("cannot reshape array of size " + std::to_string(available) + " into shape " +
                                     shapeText({1, p.height, p.width, k}));
    } else {
        range.checkFrames([&] { readOrderCode(p.readOrder); });
    }

    // A pixel is k bytes wide when interleaved; planes are `pixels` bytes apart.
    const int64_t pixelBytes = interleaved ? k : 1;
    const int64_t sourceUnit = interleaved ? 1 : pixels;
    const auto [rowStride, columnStride] = pixelStrides(readOrderCode(p.readOrder), p.height, p.width, pixelBytes);
    const Shape frameStrides = {range.frameStride(), rowStride, columnStride};

    if (const auto step = evenStep(sources)) {
        return NdArray::strided(bytes, p.offset + sources[0] * sourceUnit, {p.frame, p.height, p.width, k},
                                {frameStrides[0], frameStrides[1], frameStrides[2], *step * sourceUnit},
                                DType::UInt8);
    }
    // No single channel stride reaches these sources: gather the channels,
    // chunk by chunk of frames.
    NdArray out = NdArray::empty({p.frame, p.height, p.width, k}, DType::UInt8);
    const int64_t chunk = framesPerChunk(out);
    reportProgress(progress, 0, p.frame);
    for (int64_t first = 0; first < p.frame; first += chunk) {
        const int64_t last = std::min<int64_t>(p.frame, first + chunk);
        for (int64_t c = 0; c < k; ++c) {
            NdArray channel = out.slice(0, first, last).slice(3, c, c + 1).squeeze(3);
            channel.assignFrom(NdArray::strided(bytes, p.offset + sources[c] * sourceUnit + first * frameStrides[0],
                                                {last - first, p.height, p.width}, frameStrides, DType::UInt8));
        }
        reportProgress(progress, last, p.frame);
    }
    return out;
}

} // namespace torvex
