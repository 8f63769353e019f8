#include "toolboxes/importData/volume/RawDecoder.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

using namespace torvex;

namespace {

QByteArray randomBytes(int64_t n)
{
    std::mt19937 rng(42);
    QByteArray out(n, Qt::Uninitialized);
    for (auto& c : out) c = static_cast<char>(rng());
    return out;
}

std::string failureOf(const QByteArray& bytes, const QString& type, RawLayout p)
{
    p.imgType = type;
    try {
        decodeRawVolume(bytes, p);
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "";
}

// type index, read order, colour order, little-endian, frames
using Layout = std::tuple<size_t, const char*, const char*, bool, int64_t>;
class RawDecoderLayout : public testing::TestWithParam<Layout> {};

// The layout rules written out pixel by pixel, as one reads them off a hex dump.
TEST_P(RawDecoderLayout, MatchesThePixelByPixelReading)
{
    const auto& [index, order, colorOrder, le, frames] = GetParam();
    const ImageType type = imageTypes().at(index);
    const RawLayout p{.imgType = type.name, .offset = 5, .gap = frames > 1 ? 7 : 0, .width = 4, .height = 6, .frame = frames,
                            .littleEndian = le, .readOrder = order, .colorOrder = colorOrder};
    const int64_t k = type.bytesPerPixel(), n = 24, frameBytes = k ? n * k : n / 8;
    const QByteArray b = randomBytes(p.offset + frames * (frameBytes + p.gap) - p.gap);
    const NdArray a = *decodeRawVolume(b, p);
    ASSERT_EQ(a.shape(), (Shape{frames, 6, 4, type.channels}));
    EXPECT_EQ(a.dtype(), type.dtype);

    // The byte of the pixel (or the plane) that R, G, B and A come from: a
    // little-endian pixel word holds its bytes the other way round.
    static const std::map<QString, std::vector<int64_t>> wordBytes = {
        {"rgb", {0, 1, 2}}, {"bgr", {2, 1, 0}}, {"argb", {1, 2, 3, 0}}, {"abgr", {3, 2, 1, 0}}, {"", {0}}};
    const bool interleaved = p.colorOrder == "ABCABC";
    std::vector<int64_t> source = wordBytes.at(type.colorType);
    if (interleaved && le)
        for (int64_t& s : source) s = k - 1 - s;
    std::vector<double> got;
    a.forEach([&](const std::byte* e) { got.push_back(a.valueAt(e)); });
    auto it = got.begin();
    for (int64_t f = 0; f < frames; ++f)
        for (int64_t y = 0; y < 6; ++y)
            for (int64_t x = 0; x < 4; ++x)
                for (int64_t c = 0; c < type.channels; ++c, ++it) {
                    const int64_t start = p.offset + f * (frameBytes + p.gap);
                    const int64_t pixel = p.readOrder == "F" ? y + x * 6 : y * 4 + x;
                    double want = 0;
                    if (type.layout == PixelLayout::Bitmap) { // bits fill the rows, most significant first
                        want = (uint8_t(b.at(start + (y * 4 + x) / 8)) >> (7 - (y * 4 + x) % 8)) & 1;
                    } else if (type.layout == PixelLayout::Gray) { // element decoding: see NdArrayTest
                        const NdArray one = NdArray::wrap(b, start + pixel * k, k, type.dtype,
                                                          le ? ByteOrder::Little : ByteOrder::Native);
                        want = one.valueAt(one.data());
                    } else {
                        want = uint8_t(b.at(interleaved ? start + pixel * k + source[c] : start + source[c] * n + pixel));
                    }
                    ASSERT_TRUE(*it == want || (std::isnan(*it) && std::isnan(want)))
                        << type.name.toStdString() << " (" << f << ", " << y << ", " << x << ", " << c << ") is " << *it << ", not " << want;
                }
}

INSTANTIATE_TEST_SUITE_P(All, RawDecoderLayout,
                         testing::Combine(testing::Range<size_t>(0, imageTypes().size()), testing::Values("C", "F"),
                                          testing::Values("ABCABC", "AABBCC"), testing::Bool(),
                                          testing::Values<int64_t>(1, 3)));

TEST(RawDecoder, FailuresReadLikeTheFrameByFrameRead)
{
    const QByteArray file(100, '\0');
    // With a gap, the last frame needs no gap behind it.
    RawLayout p{.offset = 4, .gap = 8, .width = 4, .height = 4, .frame = 3};
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
        EXPECT_EQ(failureOf(file, type, {.width = big, .height = big, .frame = 2}), "The image data is not complete");
    }
    EXPECT_EQ(failureOf(file, "64-bit Real", {.width = big, .height = big, .frame = 1}),
              "buffer size must be a multiple of element size");
    EXPECT_EQ(failureOf(file, "32-bit ARGB", {.width = big, .height = big, .frame = 1}),
              "cannot reshape array of size 100 into shape (1,2147483647,2147483647,4)");
    EXPECT_EQ(failureOf(file, "1-bit Bitmap", {.width = big, .height = big, .frame = 1}),
              "cannot reshape array of size 800 into shape (1,2147483647,2147483647,1)");
    p.imgType = "12-bit";
    EXPECT_FALSE(decodeRawVolume(file, p).has_value());
}

TEST(RawDecoder, ViewsShareTheFileBytesAndAreReadOnly)
{
    const QByteArray file = randomBytes(3 * 64 * 4);
    for (const char* type : {"32-bit Real", "32-bit ABGR"}) {
        const NdArray a = *decodeRawVolume(file, {.imgType = type, .width = 8, .height = 8, .frame = 3, .colorOrder = "ABCABC"});
        EXPECT_EQ(reinterpret_cast<const char*>(a.data()) - file.constData(), QString(type) == "32-bit ABGR" ? 3 : 0);
        EXPECT_FALSE(a.writeable());
        NdArray copy = a;
        EXPECT_THROW(copy.mutableData(), std::runtime_error);
    }
}

} // namespace
