#include "SequenceFiles.h"

#include "toolboxes/importData/sequence/FrameShape.h"

#include <gtest/gtest.h>

#include <numeric>

using namespace torvex;

static NdArray counting(const Shape& shape)
{
    NdArray a = NdArray::empty(shape, DType::UInt8);
    std::iota(reinterpret_cast<uint8_t*>(a.mutableData()), reinterpret_cast<uint8_t*>(a.mutableData()) + a.size(), 1);
    return a;
}

TEST(PadToCentre, OddRowGoesBelowOddColumnRightAndFullSizeIsNotCopied)
{
    const NdArray padded = padToCentre(counting({5, 1}), 8, 4);
    ASSERT_EQ(padded.shape(), (Shape{8, 4}));
    // 3 spare rows: 1 above, 2 below; 3 spare columns: 1 left, 2 right.
    const std::vector<int> expected{0, 0, 0, 0, //
                                    0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0, 5, 0, 0,
                                    0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(bytesOf(padded), expected);
    const NdArray image = counting({2, 3, 3});
    EXPECT_TRUE(padToCentre(image, 2, 3).sharesStorageWith(image));
    EXPECT_EQ(padToCentre(image, 4, 3).shape(), (Shape{4, 3, 3}));
}

TEST(UnifyChannels, RepeatsGrayDropsAlphaOrAveragesWithTruncation)
{
    EXPECT_EQ(bytesOf(unifyChannels(counting({1, 2}), 3)), (std::vector<int>{1, 1, 1, 2, 2, 2}));
    EXPECT_EQ(bytesOf(unifyChannels(counting({1, 2, 4}), 3)), (std::vector<int>{1, 2, 3, 5, 6, 7}));
    EXPECT_EQ(unifyChannels(counting({1, 2, 2}), 3).shape(), (Shape{1, 2, 2}));
    EXPECT_EQ(unifyChannels(counting({1, 2, 5}), 3).shape(), (Shape{1, 2, 5}));
    const NdArray gray = unifyChannels(counting({1, 2, 2}), 1); // (1+2)/2, (3+4)/2
    EXPECT_EQ(gray.shape(), (Shape{1, 2}));
    EXPECT_EQ(bytesOf(gray), (std::vector<int>{1, 3}));
}
