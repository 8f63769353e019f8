#include "SequenceFiles.h"

#include "toolboxes/importData/sequence/Normalise8Bit.h"
#include "toolboxes/importData/sequence/StillImageDecoder.h"

#include <gtest/gtest.h>

using namespace torvex;

namespace {

struct StoredCase {
    const char* file;
    Shape shape;
    DType dtype;
    bool bilevel;
};

class StoredLayout : public testing::TestWithParam<StoredCase> {};

TEST_P(StoredLayout, KeepsElementTypeAndChannels)
{
    const StoredCase& c = GetParam();
    const DecodedImage image = decodeStillImage(sequenceFile(c.file));
    EXPECT_EQ(image.pixels.shape(), c.shape);
    EXPECT_EQ(image.pixels.dtype(), c.dtype);
    EXPECT_EQ(image.bilevel, c.bilevel);
}

INSTANTIATE_TEST_SUITE_P(
    Files, StoredLayout,
    testing::Values(StoredCase{"gray8.png", {4, 5}, DType::UInt8, false},
                    StoredCase{"gray16.png", {4, 5}, DType::UInt16, false},
                    StoredCase{"rgb.png", {4, 5, 3}, DType::UInt8, false},
                    StoredCase{"rgba.png", {4, 5, 4}, DType::UInt8, false},
                    StoredCase{"gray_alpha.png", {4, 5, 2}, DType::UInt8, false},
                    StoredCase{"cmyk.tif", {4, 5, 4}, DType::UInt8, false},
                    StoredCase{"float.tif", {4, 5}, DType::Float32, false},
                    StoredCase{"palette.png", {4, 5}, DType::UInt8, false},
                    StoredCase{"palette.bmp", {4, 5}, DType::UInt8, false},
                    StoredCase{"palette.tif", {4, 5}, DType::UInt8, false},
                    StoredCase{"palette.gif", {20, 40}, DType::UInt8, false},
                    StoredCase{"bilevel.tif", {4, 5}, DType::UInt8, true},
                    StoredCase{"bilevel.png", {4, 5}, DType::UInt8, true},
                    StoredCase{"bilevel.bmp", {4, 5}, DType::UInt8, true},
                    StoredCase{"bilevel.pbm", {4, 5}, DType::UInt8, true}));

std::vector<int> normalisedFile(const char* file) { return bytesOf(normaliseToUInt8(decodeStillImage(sequenceFile(file)))); }

TEST(DecodeStillImage, PalettesGiveIndicesBilevelsStretchAndCmykKeepsItsInks)
{
    std::vector<int> indices;
    for (int i = 0; i < 20; ++i) indices.push_back(i % 4);
    for (const char* file : {"palette.png", "palette.bmp", "palette.tif"}) EXPECT_EQ(normalisedFile(file), indices) << file;
    // Stored interlaced, with LZW codes that grow past their first width.
    std::vector<int> gif;
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 40; ++x) gif.push_back((x * 3 + y * 7) % 16);
    EXPECT_EQ(normalisedFile("palette.gif"), gif);

    std::vector<int> expected;
    for (int i = 0; i < 20; ++i) expected.push_back(i % 3 == 0 ? 255 : 0);
    for (const char* file : {"bilevel.png", "bilevel.bmp", "bilevel.pbm", "bilevel.tif"}) EXPECT_EQ(normalisedFile(file), expected) << file;
    EXPECT_EQ(normalisedFile("white_bilevel.png"), std::vector<int>(20, 0));

    // The inverse of the RGB it was made from, not that RGB converted back.
    EXPECT_EQ(normalisedFile("cmyk.tif").at(0), 255 - 3);
}

TEST(DecodeStillImage, NonImagesThrow)
{
    for (const char* file : {"text.txt", "binary.bin", "empty.png", "truncated.png", "missing.png", "damaged.gif"})
        EXPECT_THROW(decodeStillImage(sequenceFile(file)), std::runtime_error) << file;
    EXPECT_THROW(decodeStillImage(sequenceFile(".")), std::runtime_error);
    // Refused before the reader allocates for it.
    try {
        decodeStillImage(sequenceFile("claims_huge.png"));
        ADD_FAILURE();
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "the header claims a larger image than the file can hold");
    }
}

} // namespace
