#include "FrameRange.h"
#include "RawDecoder.h"

#include <array>
#include <cstring>

namespace torvex {

namespace {

// Eight 0/1 bytes per byte value, most significant bit first.
const std::array<std::array<uint8_t, 8>, 256>& bitTable()
{
    static const auto table = [] {
        std::array<std::array<uint8_t, 8>, 256> t{};
        for (int v = 0; v < 256; ++v)
            for (int bit = 0; bit < 8; ++bit) t[v][bit] = (v >> (7 - bit)) & 1;
        return t;
    }();
    return table;
}

std::runtime_error reshapeError(int64_t values, const Shape& shape)
{
    return std::runtime_error("cannot reshape array of size " + std::to_string(values) + " into shape " +
                              shapeText(shape));
}

} // namespace

NdArray decodeBitmap(const QByteArray& bytes, const RawLayout& p, const Progress& progress)
{
    checkNonNegative(p.offset, p.gap, p.width, p.height);
    const int64_t pixels = saturatingMul(p.width, p.height);
    const FrameRange range(bytes.size(), p.offset, p.gap, pixels / 8, p.frame);

    if (p.frame == 1) {
        const int64_t available = range.singleFrameBytes();
        if (saturatingMul(available, 8) != pixels) throw reshapeError(available * 8, {1, p.height, p.width, 1});
    } else {
        range.checkFrames([&] {
            if (saturatingMul(range.frameBytes(), 8) != pixels)
                throw reshapeError(range.frameBytes() * 8, {p.height, p.width, 1});
        });
    }

    NdArray out = NdArray::empty({p.frame, p.height, p.width, 1}, DType::UInt8);
    auto* dst = reinterpret_cast<uint8_t*>(out.mutableData());
    const auto* src = reinterpret_cast<const uint8_t*>(bytes.constData());
    const auto& table = bitTable();
    const int64_t chunk = framesPerChunk(out);
    reportProgress(progress, 0, p.frame);
    for (int64_t i = 0; range.frameBytes() > 0 && i < p.frame; ++i) {
        const uint8_t* frame = src + p.offset + i * range.frameStride();
        for (int64_t b = 0; b < range.frameBytes(); ++b, dst += 8) std::memcpy(dst, table[frame[b]].data(), 8);
        if ((i + 1) % chunk == 0 || i + 1 == p.frame) reportProgress(progress, i + 1, p.frame);
    }
    return out;
}

} // namespace torvex
