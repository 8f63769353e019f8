#include "toolboxes/importData/volume/RawDecoder.h"

#include <gtest/gtest.h>

#include <random>

using namespace torvex;

namespace {

QByteArray bytesOf(std::initializer_list<int> values)
{
    QByteArray out;
    for (int v : values) out.append(static_cast<char>(v));
    return out;
}

QByteArray randomBytes(int64_t n, unsigned seed)
{
    std::mt19937 rng(seed);
    QByteArray out(n, Qt::Uninitialized);
    for (auto& c : out) c = static_cast<char>(rng());
    return out;
}

std::vector<double> values(const NdArray& a)
{
    std::vector<double> out;
    a.forEach([&](const std::byte* p) { out.push_back(a.valueAt(p)); });
    return out;
}

std::string failureOf(const QByteArray& bytes, const QString& type, const RawDecodeParams& p)
{
    try {
        decodeRawVolume(bytes, type, p);
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "";
}

// The layout rules written out pixel by pixel, frame by frame, as a user would
// read them off a hex dump: the result every decoder must equal.
std::vector<double> referenceDecode(const QByteArray& b, const ImageType& type, const RawDecodeParams& p)
{
    std::vector<double> out;
    const int64_t k = type.bytesPerPixel, n = p.width * p.height, frameBytes = n * k;
    for (int64_t f = 0; f < p.frame; ++f) {
        const int64_t start = p.offset + f * (frameBytes + p.gap);
        for (int64_t y = 0; y < p.height; ++y)
            for (int64_t x = 0; x < p.width; ++x) {
                const int64_t pixel = p.readOrder == "F" ? y + x * p.height : y * p.width + x;
                if (type.layout == PixelLayout::Gray) {
                    NdArray one = NdArray::wrap(b, start + pixel * k, k, type.dtype,
                                                p.littleEndian ? ByteOrder::Little : ByteOrder::Native);
                    out.push_back(one.valueAt(one.data()));
                    continue;
                }
                // Byte of the pixel word (or plane) for R, G, B, A.
                std::vector<int> src;
                const bool interleaved = p.colorOrder == "ABCABC";
                const QString c = type.colorType;
                if (interleaved && p.littleEndian)
                    src = c == "rgb" ? std::vector<int>{2, 1, 0} : c == "bgr" ? std::vector<int>{0, 1, 2}
                        : c == "argb" ? std::vector<int>{2, 1, 0, 3} : std::vector<int>{0, 1, 2, 3};
                else
                    src = c == "rgb" ? std::vector<int>{0, 1, 2} : c == "bgr" ? std::vector<int>{2, 1, 0}
                        : c == "argb" ? std::vector<int>{1, 2, 3, 0} : std::vector<int>{3, 2, 1, 0};
                for (int s : src) {
                    const int64_t at = interleaved ? start + pixel * k + s : start + s * n + pixel;
                    out.push_back(static_cast<uint8_t>(b[qsizetype(at)]));
                }
            }
    }
    return out;
}

} // namespace

TEST(RawDecoder, EveryTypeOrderAndByteOrderMatchesThePixelByPixelReading)
{
    for (const ImageType& type : imageTypes()) {
        if (type.layout == PixelLayout::Bitmap) continue;
        for (int64_t frames : {1, 3})
            for (const char* order : {"C", "F"})
                for (const char* colorOrder : {"ABCABC", "AABBCC"})
                    for (bool le : {false, true}) {
                        RawDecodeParams p{.offset = 5, .gap = frames > 1 ? 7 : 0, .width = 4, .height = 3,
                                          .frame = frames, .littleEndian = le, .readOrder = order,
                                          .colorOrder = colorOrder};
                        const int64_t frameBytes = 12 * type.bytesPerPixel;
                        const QByteArray b = randomBytes(p.offset + frames * (frameBytes + p.gap), 42);
                        SCOPED_TRACE(type.name.toStdString() + " " + order + " " + colorOrder + (le ? " LE" : ""));
                        const NdArray a = *decodeRawVolume(b, type.name, p);
                        EXPECT_EQ(a.shape(), (Shape{frames, 3, 4, type.channels}));
                        EXPECT_EQ(a.dtype(), type.dtype);
                        const auto got = values(a), want = referenceDecode(b, type, p);
                        ASSERT_EQ(got.size(), want.size());
                        for (size_t i = 0; i < got.size(); ++i)
                            if (!(std::isnan(got[i]) && std::isnan(want[i]))) ASSERT_EQ(got[i], want[i]) << i;
                    }
    }
}

// What the pixel-by-pixel reading leaves out: bitmaps, and half floats, which
// it reads with the array's own element decoding.
TEST(RawDecoder, WorkedExamples)
{
    RawDecodeParams bits{.width = 8, .height = 1, .frame = 1};
    EXPECT_EQ(values(*decodeRawVolume(bytesOf({0xA0}), "1-bit Bitmap", bits)),
              (std::vector<double>{1, 0, 1, 0, 0, 0, 0, 0}));
    bits = {.width = 4, .height = 2, .frame = 2, .littleEndian = true, .readOrder = "F"};
    EXPECT_EQ(values(*decodeRawVolume(bytesOf({0xF0, 0x0F}), "1-bit Bitmap", bits)),
              (std::vector<double>{1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1}));

    // Half floats keep their own type: 0x3C00 is 1.0, 0xC000 is -2.0.
    const NdArray half = *decodeRawVolume(bytesOf({0x00, 0x3C, 0x00, 0xC0}), "16-bit Real",
                                          {.width = 2, .height = 1, .frame = 1, .littleEndian = true});
    EXPECT_EQ(half.dtype(), DType::Float16);
    EXPECT_EQ(values(half), (std::vector<double>{1.0, -2.0}));
}

TEST(RawDecoder, FailuresReadLikeTheFrameByFrameRead)
{
    const QByteArray file(100, '\0');
    // With a gap, the last frame needs no gap behind it.
    RawDecodeParams p{.offset = 4, .gap = 8, .width = 4, .height = 4, .frame = 3};
    EXPECT_EQ(failureOf(file.left(4 + 2 * 24 + 16), "8-bit", p), "");
    EXPECT_EQ(failureOf(file.left(4 + 2 * 24 + 15), "8-bit", p), "The image data is not complete");
    EXPECT_EQ(failureOf(file.left(4 + 2 * 24 + 15), "24-bit BGR", p), "The image data is not complete");
    EXPECT_EQ(failureOf(file.left(4 + 2 * 24 + 15), "1-bit Bitmap", {.width = 16, .height = 8, .frame = 9}),
              "The image data is not complete");
    for (const char* type : {"8-bit", "32-bit ABGR", "1-bit Bitmap"})
        EXPECT_EQ(failureOf(file, type, {.width = 8, .height = 8, .frame = 0}), "need at least one array to stack");

    // A single frame ignores the gap and reads what the file has.
    EXPECT_EQ(failureOf(file.left(16), "8-bit", {.gap = 1000, .width = 4, .height = 4, .frame = 1}), "");
    EXPECT_EQ(failureOf(file.left(15), "16-bit Signed", {.width = 4, .height = 4, .frame = 1}),
              "buffer size must be a multiple of element size");
    EXPECT_EQ(failureOf(file.left(14), "16-bit Signed", {.width = 4, .height = 4, .frame = 1}),
              "cannot reshape array of size 7 into shape (1,4,4,1)");
    EXPECT_EQ(failureOf(file.left(10), "24-bit RGB", {.width = 2, .height = 2, .frame = 1}),
              "all input arrays must have the same shape");
    EXPECT_EQ(failureOf(file.left(9), "24-bit RGB", {.width = 2, .height = 2, .frame = 1}),
              "cannot reshape array of size 9 into shape (1,2,2,3)");
    EXPECT_EQ(failureOf(file, "1-bit Bitmap", {.width = 3, .height = 3, .frame = 1}),
              "cannot reshape array of size 8 into shape (1,3,3,1)");
    EXPECT_EQ(failureOf(file, "1-bit Bitmap", {.width = 3, .height = 3, .frame = 2}),
              "cannot reshape array of size 8 into shape (3,3,1)");
    EXPECT_NE(failureOf(file, "8-bit", {.width = 2, .height = 2, .frame = 2, .readOrder = "X"}), "");

    // Sizes whose products leave 64 bits fail cleanly, without allocating.
    const int64_t big = 2147483647;
    for (const char* type : {"64-bit Real", "32-bit ARGB", "1-bit Bitmap"}) {
        EXPECT_EQ(failureOf(file, type, {.offset = big, .gap = big, .width = big, .height = big, .frame = big}),
                  "The image data is not complete");
        EXPECT_NE(failureOf(file, type, {.width = big, .height = big, .frame = 1}), "");
    }
    EXPECT_FALSE(decodeRawVolume(file, "12-bit", p).has_value());
}

TEST(RawDecoder, ViewsShareTheFileBytesAndAreReadOnly)
{
    const QByteArray file = randomBytes(3 * 64 * 4, 7);
    for (const char* type : {"32-bit Real", "32-bit ABGR"}) {
        const NdArray a = *decodeRawVolume(file, type, {.width = 8, .height = 8, .frame = 3, .colorOrder = "ABCABC"});
        EXPECT_EQ(reinterpret_cast<const char*>(a.data()) - file.constData(),
                  QString(type) == "32-bit ABGR" ? 3 : 0);
        EXPECT_FALSE(a.writeable());
        NdArray copy = a;
        EXPECT_THROW(copy.mutableData(), std::runtime_error);
    }
}
