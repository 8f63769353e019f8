#include "toolboxes/importData/sequence/PlainPng.h"

#include <libdeflate.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <vector>

namespace torvex {

namespace {

[[noreturn]] void fail(const char* text) { throw std::runtime_error(std::string("PNG: ") + text); }

uint32_t bigEndian32(const unsigned char* p) { return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3]; }

int channelsOf(int colourType)
{
    switch (colourType) {
    case 0: return 1; // gray
    case 2: return 3; // RGB
    case 4: return 2; // gray and alpha
    case 6: return 4; // RGBA
    default: return 0; // palette and unknown types: not plain
    }
}

// |p - a|, |p - b| and |p - c| for p = a + b - c, each written without p.
uint8_t paeth(int a, int b, int c)
{
    const int pa = std::abs(b - c), pb = std::abs(a - c), pc = std::abs(a + b - 2 * c);
    return static_cast<uint8_t>(pa <= pb && pa <= pc ? a : pb <= pc ? b : c);
}

// Undoes one row's filter, pixel by pixel, with `predict(left, up, upLeft)`.
// The bytes to the left and above-left are carried in registers, one per byte
// of a pixel, rather than read back from the row just written: that read
// waited for each store, and undoing filters cost as much as inflating
// (perf, 500 16-bit PNG files).
template <size_t PixelBytes, class Predict>
void unfilterPixels(const uint8_t* in, uint8_t* row, const uint8_t* previous, size_t length, Predict predict)
{
    uint8_t left[PixelBytes] = {}, upLeft[PixelBytes] = {};
    for (size_t i = 0; i < length; i += PixelBytes)
        for (size_t k = 0; k < PixelBytes; ++k) {
            const uint8_t up = previous[i + k];
            left[k] = row[i + k] = static_cast<uint8_t>(in[i + k] + predict(left[k], up, upLeft[k]));
            upLeft[k] = up;
        }
}

template <size_t PixelBytes>
void unfilter(int type, const uint8_t* in, uint8_t* row, const uint8_t* previous, size_t length)
{
    switch (type) {
    case 0: std::copy_n(in, length, row); return;
    case 1: return unfilterPixels<PixelBytes>(in, row, previous, length, [](int a, int, int) { return a; });
    case 2:
        for (size_t i = 0; i < length; ++i) row[i] = static_cast<uint8_t>(in[i] + previous[i]);
        return;
    case 3: return unfilterPixels<PixelBytes>(in, row, previous, length, [](int a, int b, int) { return (a + b) >> 1; });
    case 4: return unfilterPixels<PixelBytes>(in, row, previous, length, paeth);
    default: fail("unknown row filter");
    }
}

// Undoes the filter of one row from `in` into `row`; `previous` is the row
// above (zeros for the first).
void unfilter(int type, const uint8_t* in, uint8_t* row, const uint8_t* previous, size_t length, size_t pixelBytes)
{
    switch (pixelBytes) {
    case 1: return unfilter<1>(type, in, row, previous, length);
    case 2: return unfilter<2>(type, in, row, previous, length);
    case 3: return unfilter<3>(type, in, row, previous, length);
    case 4: return unfilter<4>(type, in, row, previous, length);
    case 6: return unfilter<6>(type, in, row, previous, length);
    case 8: return unfilter<8>(type, in, row, previous, length);
    default: fail("unknown pixel size");
    }
}

// Swaps the bytes of each 16-bit sample, eight bytes at a time: the compiler
// left a plain loop over the samples at one sample per step, a tenth of the
// decoding time of a 16-bit file (perf).
void swapBytePairs(uint8_t* bytes, size_t count)
{
    constexpr uint64_t low = 0x00ff00ff00ff00ffull;
    size_t i = 0;
    for (uint64_t word; i + 8 <= count; i += 8) {
        std::memcpy(&word, bytes + i, 8);
        word = (word & low) << 8 | (word >> 8 & low);
        std::memcpy(bytes + i, &word, 8);
    }
    for (; i + 2 <= count; i += 2) std::swap(bytes[i], bytes[i + 1]);
}

} // namespace

std::optional<NdArray> decodePlainPng(const QByteArray& file, const PixelAllocator& allocate)
{
    static const QByteArray signature("\x89PNG\r\n\x1a\n", 8);
    if (!file.startsWith(signature)) return std::nullopt;
    const auto* bytes = reinterpret_cast<const unsigned char*>(file.constData());
    const size_t size = static_cast<size_t>(file.size());

    uint32_t width = 0, height = 0;
    int channels = 0, sampleBytes = 1;
    QByteArray compressed;
    compressed.reserve(file.size());
    bool ended = false;
    for (size_t at = 8; !ended;) {
        if (size - at < 12) fail("file is truncated");
        const uint32_t length = bigEndian32(bytes + at);
        if (length > size - at - 12) fail("file is truncated");
        const unsigned char* type = bytes + at + 4;
        const unsigned char* data = type + 4;
        const bool critical = !(type[0] & 0x20);
        const std::string_view name(reinterpret_cast<const char*>(type), 4);
        // A damaged critical chunk fails, as in the general decoder; others are skipped.
        if (critical && libdeflate_crc32(0, type, length + 4) != bigEndian32(data + length)) fail("CRC error");
        if (at == 8) {
            if (name != "IHDR" || length != 13) fail("no header");
            width = bigEndian32(data);
            height = bigEndian32(data + 4);
            channels = channelsOf(data[9]);
            sampleBytes = data[8] / 8;
            if ((data[8] != 8 && data[8] != 16) || channels == 0 || data[10] != 0 || data[11] != 0 || data[12] != 0)
                return std::nullopt;
            if (width == 0 || height == 0) fail("empty image");
        } else if (name == "IDAT") {
            compressed.append(reinterpret_cast<const char*>(data), length);
        } else if (name == "IEND") {
            ended = true;
        } else if (name == "tRNS" || name == "sBIT" || (critical && name != "PLTE")) {
            return std::nullopt; // chunks that change what the pixels read as
        }
        at += length + 12;
    }

    const size_t pixelBytes = size_t(channels) * sampleBytes;
    const size_t rowBytes = size_t(width) * pixelBytes;
    // As in the general decoder: no image beyond the limit, and no header that
    // claims more than the file's bytes can hold, before anything is allocated.
    const double claimed = double(rowBytes) * height;
    if (claimed > double(uint64_t(kMaxDecodedImageMegabytes) << 20)) fail("image is too large");
    checkPlausibleSize(claimed, double(size));
    // One filter byte before each row.
    const size_t filteredBytes = (rowBytes + 1) * height;
    const std::unique_ptr<unsigned char[]> filtered(new unsigned char[filteredBytes]);
    const std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> inflater(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    if (!inflater) throw std::bad_alloc();
    if (libdeflate_zlib_decompress(inflater.get(), compressed.constData(), static_cast<size_t>(compressed.size()),
                                   filtered.get(), filteredBytes, nullptr) != LIBDEFLATE_SUCCESS)
        fail("damaged image data");

    NdArray pixels = allocate(channels == 1 ? Shape{height, width} : Shape{height, width, channels},
                              sampleBytes == 2 ? DType::UInt16 : DType::UInt8);
    auto* out = reinterpret_cast<unsigned char*>(pixels.mutableData());
    const std::vector<unsigned char> zeros(rowBytes, 0);
    for (size_t y = 0; y < height; ++y) {
        const unsigned char* in = filtered.get() + y * (rowBytes + 1);
        unsigned char* row = out + y * rowBytes;
        unfilter(in[0], in + 1, row, y ? row - rowBytes : zeros.data(), rowBytes, pixelBytes);
    }
    // Filters work on the stored big-endian bytes; the samples are turned
    // once every row is done, as each row is undone against the one above.
    if (sampleBytes == 2 && std::endian::native == std::endian::little)
        swapBytePairs(out, rowBytes * height);
    return pixels;
}

} // namespace torvex
