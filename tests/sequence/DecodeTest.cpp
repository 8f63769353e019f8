#include "SequenceFiles.h"

#include "toolboxes/importData/sequence/Normalise8Bit.h"
#include "toolboxes/importData/sequence/StillImageDecoder.h"

#include <gtest/gtest.h>

using namespace torvex;

// A file as stored, and element i (C order) after normalising to 8 bits, as
// make_sequence_images.py made it; none where the stretch is the normaliser's.
struct StoredCase {
    const char* file;
    Shape shape;
    DType dtype;
    bool bilevel;
    int (*normalised)(int i);
};

class StoredImage : public testing::TestWithParam<StoredCase> {};

TEST_P(StoredImage, KeepsElementTypeAndChannels)
{
    const StoredCase& c = GetParam();
    const DecodedImage image = decodeStillImage(sequenceFile(c.file));
    EXPECT_EQ(image.pixels.shape(), c.shape);
    EXPECT_EQ(image.pixels.dtype(), c.dtype);
    EXPECT_EQ(image.bilevel, c.bilevel);
    if (!c.normalised) return;
    const std::vector<int> got = bytesOf(normaliseToUInt8(image));
    for (int i = 0; i < int(got.size()); ++i) ASSERT_EQ(got[i], c.normalised(i)) << "element " << i;
}

constexpr auto ramp = [](int i) { return i * 10 + 3; };
constexpr auto indices = [](int i) { return i % 4; };
constexpr auto bits = [](int i) { return i % 3 == 0 ? 255 : 0; }; // 0 and 1 stretch
INSTANTIATE_TEST_SUITE_P(
    Files, StoredImage,
    testing::Values(
        StoredCase{"gray8.png", {4, 5}, DType::UInt8, false, ramp},
        StoredCase{"gray16.png", {4, 5}, DType::UInt16, false, nullptr},
        StoredCase{"rgb.png", {4, 5, 3}, DType::UInt8, false, [](int i) { return ramp(i / 3) + i % 3; }},
        StoredCase{"rgba.png", {4, 5, 4}, DType::UInt8, false, [](int i) { return i % 4 == 3 ? 7 : ramp(i / 4) + i % 4; }},
        StoredCase{"gray_alpha.png", {4, 5, 2}, DType::UInt8, false, [](int i) { return ramp(i / 2); }},
        // The inverse of the RGB it was made from, not that RGB converted back.
        StoredCase{"cmyk.tif", {4, 5, 4}, DType::UInt8, false, [](int i) { return i % 4 == 3 ? 0 : 255 - ramp(i / 4) - i % 4; }},
        StoredCase{"float.tif", {4, 5}, DType::Float32, false, nullptr},
        StoredCase{"palette.png", {4, 5}, DType::UInt8, false, indices},
        StoredCase{"palette.bmp", {4, 5}, DType::UInt8, false, indices},
        StoredCase{"palette.tif", {4, 5}, DType::UInt8, false, indices},
        // Stored interlaced, with LZW codes that grow past their first width.
        StoredCase{"palette.gif", {20, 40}, DType::UInt8, false, [](int i) { return (i % 40 * 3 + i / 40 * 7) % 16; }},
        StoredCase{"bilevel.tif", {4, 5}, DType::UInt8, true, bits},
        StoredCase{"bilevel.png", {4, 5}, DType::UInt8, true, bits},
        StoredCase{"bilevel.bmp", {4, 5}, DType::UInt8, true, bits},
        StoredCase{"bilevel.pbm", {4, 5}, DType::UInt8, true, bits},
        StoredCase{"white_bilevel.png", {4, 5}, DType::UInt8, true, [](int) { return 0; }}));

TEST(DecodeStillImage, NonImagesThrow)
{
    for (const char* file : {"text.txt", "binary.bin", "empty.png", "truncated.png", "missing.png", "damaged.gif", "."})
        EXPECT_THROW(decodeStillImage(sequenceFile(file)), std::runtime_error) << file;
    // Refused before the reader allocates for it.
    try {
        decodeStillImage(sequenceFile("claims_huge.png"));
        ADD_FAILURE();
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "the header claims a larger image than the file can hold");
    }
}
