#include "GifIndices.h"

#include "StillImageDecoder.h"

#include <QFile>

#include <stdexcept>
#include <vector>

namespace torvex {

namespace {

[[noreturn]] void fail(const std::string& text) { throw std::runtime_error("GIF: " + text); }

class ByteReader {
public:
    explicit ByteReader(const QString& path) : file_(path)
    {
        if (!file_.open(QIODevice::ReadOnly)) fail(file_.errorString().toStdString());
    }
    QByteArray bytes(qint64 count)
    {
        QByteArray out = file_.read(count);
        if (out.size() != count) fail("file is truncated");
        return out;
    }
    int byte() { return static_cast<unsigned char>(bytes(1)[0]); }
    int word() { return byte() | (byte() << 8); }
    // The data sub-blocks that follow an extension or an image, joined.
    QByteArray subBlocks()
    {
        QByteArray out;
        for (int size = byte(); size != 0; size = byte()) out += bytes(size);
        return out;
    }

private:
    QFile file_;
};

QList<QRgb> colourTable(ByteReader& in, int packed)
{
    QList<QRgb> table;
    if (!(packed & 0x80)) return table;
    const QByteArray rgb = in.bytes(3 * (2 << (packed & 7)));
    for (qsizetype i = 0; i < rgb.size(); i += 3)
        table.append(qRgb(static_cast<uchar>(rgb[i]), static_cast<uchar>(rgb[i + 1]), static_cast<uchar>(rgb[i + 2])));
    return table;
}

// Variable-length LZW codes, least significant bit first, as GIF stores them.
std::vector<uint8_t> decompress(const QByteArray& data, int minCodeSize, size_t pixelCount)
{
    if (minCodeSize < 2 || minCodeSize > 11) fail("bad code size");
    const int clear = 1 << minCodeSize, end = clear + 1;
    std::vector<uint16_t> prefix(4096);
    std::vector<uint8_t> suffix(4096), first(4096);
    for (int c = 0; c < clear; ++c) suffix[c] = first[c] = static_cast<uint8_t>(c);
    std::vector<uint8_t> out, string;
    int codeSize = minCodeSize + 1, next = end + 1, previous = -1;
    uint32_t bits = 0;
    int bitCount = 0;
    for (qsizetype i = 0; i < data.size() && out.size() < pixelCount;) {
        while (bitCount < codeSize && i < data.size()) {
            bits |= uint32_t(static_cast<uchar>(data[i++])) << bitCount;
            bitCount += 8;
        }
        if (bitCount < codeSize) break;
        const int code = bits & ((1u << codeSize) - 1);
        bits >>= codeSize;
        bitCount -= codeSize;
        if (code == clear) {
            codeSize = minCodeSize + 1;
            next = end + 1;
            previous = -1;
            continue;
        }
        if (code == end) break;
        if (code > next || (code == next && previous < 0)) fail("corrupt image data");
        // A code not yet in the table stands for the previous string plus its first character.
        const int walk = code == next ? previous : code;
        string.clear();
        for (int c = walk; c >= clear; c = prefix[c]) string.push_back(suffix[c]);
        string.push_back(static_cast<uint8_t>(walk < clear ? walk : first[walk]));
        out.insert(out.end(), string.rbegin(), string.rend());
        if (code == next) out.push_back(string.back());
        if (previous >= 0 && next < 4096) {
            prefix[next] = static_cast<uint16_t>(previous);
            first[next] = first[previous];
            suffix[next] = code == next ? first[previous] : first[code];
            if (++next == (1 << codeSize) && codeSize < 12) ++codeSize;
        }
        previous = code;
    }
    if (out.size() < pixelCount) fail("image data is truncated");
    out.resize(pixelCount);
    return out;
}

// The order in which an interlaced image stores its rows.
std::vector<int> rowOrder(int height, bool interlaced)
{
    std::vector<int> rows;
    if (!interlaced) {
        for (int y = 0; y < height; ++y) rows.push_back(y);
        return rows;
    }
    for (const auto [start, step] : {std::pair{0, 8}, {4, 8}, {2, 4}, {1, 2}})
        for (int y = start; y < height; y += step) rows.push_back(y);
    return rows;
}

} // namespace

IndexedImage readGifIndices(const QString& path)
{
    ByteReader in(path);
    const QByteArray signature = in.bytes(6);
    if (signature != "GIF87a" && signature != "GIF89a") fail("not a GIF file");
    const int screenWidth = in.word(), screenHeight = in.word(), screenPacked = in.byte();
    in.bytes(2); // background colour and aspect ratio
    QList<QRgb> table = colourTable(in, screenPacked);
    int transparent = -1;
    for (;;) {
        const int introducer = in.byte();
        if (introducer == 0x3B) fail("file holds no image");
        if (introducer == 0x21) {
            const int label = in.byte();
            const QByteArray block = in.subBlocks();
            if (label == 0xF9 && block.size() >= 4 && (block[0] & 1)) transparent = static_cast<uchar>(block[3]);
            continue;
        }
        if (introducer != 0x2C) fail("unknown block");
        const int left = in.word(), top = in.word(), width = in.word(), height = in.word(), packed = in.byte();
        if (packed & 0x80) table = colourTable(in, packed);
        const int minCodeSize = in.byte();
        if (screenWidth == 0 || screenHeight == 0) fail("empty screen");
        if (int64_t(screenWidth) * screenHeight > int64_t(kMaxDecodedImageMegabytes) << 20) fail("image is too large");
        const std::vector<uint8_t> pixels = decompress(in.subBlocks(), minCodeSize, size_t(width) * height);

        NdArray indices = NdArray::empty({screenHeight, screenWidth}, DType::UInt8);
        std::byte* canvas = indices.mutableData();
        std::fill_n(canvas, indices.size(), std::byte(transparent < 0 ? 0 : transparent));
        const std::vector<int> rows = rowOrder(height, packed & 0x40);
        for (int r = 0; r < height; ++r) {
            const int y = top + rows[r];
            for (int x = 0; x < width && y < screenHeight; ++x)
                if (left + x < screenWidth) canvas[int64_t(y) * screenWidth + left + x] = std::byte(pixels[size_t(r) * width + x]);
        }
        return {indices, table};
    }
}

} // namespace torvex
