#include "TiffLowDepth.h"

#include <QFile>

#include <map>
#include <stdexcept>
#include <vector>

namespace torvex {

namespace {

[[noreturn]] void fail(const std::string& text) { throw std::runtime_error("TIFF: " + text); }

enum Tag : uint16_t {
    ImageWidth = 256, ImageLength = 257, BitsPerSample = 258, Compression = 259, Photometric = 262,
    FillOrder = 266, StripOffsets = 273, SamplesPerPixel = 277, RowsPerStrip = 278, TileWidth = 322,
};

class TiffFile {
public:
    explicit TiffFile(const QString& path) : file_(path)
    {
        if (!file_.open(QIODevice::ReadOnly)) fail(file_.errorString().toStdString());
    }

    QByteArray at(int64_t offset, int64_t count)
    {
        if (offset < 0 || !file_.seek(offset)) fail("offset outside the file");
        QByteArray out = file_.read(count);
        if (out.size() != count) fail("file is truncated");
        return out;
    }
    uint32_t number(const QByteArray& bytes, int offset, int size) const
    {
        uint32_t value = 0;
        for (int i = 0; i < size; ++i) {
            const uint32_t b = static_cast<uchar>(bytes[offset + i]);
            value |= littleEndian_ ? b << (8 * i) : b << (8 * (size - 1 - i));
        }
        return value;
    }

    // The first directory's tags with their values, as long as they are
    // BYTE, SHORT or LONG; none for a file that is not classic TIFF.
    std::optional<std::map<uint16_t, std::vector<uint32_t>>> firstDirectory()
    {
        const QByteArray header = at(0, 8);
        if (header.startsWith(QByteArray("II*\0", 4))) littleEndian_ = true;
        else if (!header.startsWith(QByteArray("MM\0*", 4))) return std::nullopt;
        const uint32_t directory = number(header, 4, 4);
        const int entries = static_cast<int>(number(at(directory, 2), 0, 2));
        const QByteArray table = at(directory + 2, int64_t(entries) * 12);
        std::map<uint16_t, std::vector<uint32_t>> tags;
        for (int e = 0; e < entries; ++e) {
            const int base = e * 12;
            const auto tag = static_cast<uint16_t>(number(table, base, 2));
            const uint32_t type = number(table, base + 2, 2), count = number(table, base + 4, 4);
            const int size = type == 1 ? 1 : type == 3 ? 2 : type == 4 ? 4 : 0;
            if (size == 0 || count == 0 || count > (1u << 24)) continue;
            const QByteArray values = int64_t(count) * size <= 4 ? table.mid(base + 8, 4)
                                                                  : at(number(table, base + 8, 4), int64_t(count) * size);
            std::vector<uint32_t>& out = tags[tag];
            for (uint32_t i = 0; i < count; ++i) out.push_back(number(values, static_cast<int>(i) * size, size));
        }
        return tags;
    }

private:
    QFile file_;
    bool littleEndian_ = false;
};

} // namespace

std::optional<DecodedImage> readTiffLowDepth(const QString& path)
{
    TiffFile tiff(path);
    const auto tags = tiff.firstDirectory();
    if (!tags) return std::nullopt;
    const auto value = [&](Tag tag, uint32_t fallback) {
        const auto it = tags->find(tag);
        return it == tags->end() ? fallback : it->second.front();
    };
    const uint32_t bits = value(BitsPerSample, 1), photometric = value(Photometric, 99);
    const bool palette = photometric == 3 && (bits == 1 || bits == 2 || bits == 4 || bits == 8);
    const bool bilevel = (photometric == 0 || photometric == 1) && bits == 1;
    if (!(palette || bilevel) || value(Compression, 1) != 1 || value(SamplesPerPixel, 1) != 1
        || value(FillOrder, 1) != 1 || tags->count(TileWidth) || !tags->count(StripOffsets))
        return std::nullopt;

    const int64_t width = value(ImageWidth, 0), height = value(ImageLength, 0);
    if (width == 0 || height == 0) fail("empty image");
    if (width * height > int64_t(kMaxDecodedImageMegabytes) << 20) fail("image is too large");
    const int64_t rowBytes = (width * bits + 7) / 8;
    const int64_t rowsPerStrip = std::min<int64_t>(value(RowsPerStrip, UINT32_MAX), height);
    const std::vector<uint32_t>& strips = tags->at(StripOffsets);
    if (int64_t(strips.size()) < (height + rowsPerStrip - 1) / rowsPerStrip) fail("strips missing");

    NdArray pixels = NdArray::empty({height, width}, DType::UInt8);
    auto* out = reinterpret_cast<uint8_t*>(pixels.mutableData());
    const uint32_t mask = (1u << bits) - 1;
    // White is 1 in a bilevel image; WhiteIsZero files store it as 0.
    const uint32_t flip = bilevel && photometric == 0 ? 1 : 0;
    for (int64_t first = 0, s = 0; first < height; first += rowsPerStrip, ++s) {
        const int64_t rows = std::min(rowsPerStrip, height - first);
        const QByteArray strip = tiff.at(strips[s], rows * rowBytes);
        const auto* in = reinterpret_cast<const uchar*>(strip.constData());
        for (int64_t r = 0; r < rows; ++r, in += rowBytes)
            for (int64_t x = 0; x < width; ++x) {
                const int64_t bit = x * bits;
                *out++ = static_cast<uint8_t>(((in[bit / 8] >> (8 - bits - bit % 8)) & mask) ^ flip);
            }
    }
    return DecodedImage{pixels, bilevel};
}

} // namespace torvex
