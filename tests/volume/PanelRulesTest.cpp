#include "toolboxes/importData/volume/AxisTransfer.h"
#include "toolboxes/importData/volume/ByteBalance.h"
#include "toolboxes/importData/volume/PixelReadout.h"

#include <gtest/gtest.h>

using namespace torvex;

TEST(ByteBalance, SignedRoundedTextAndBadge)
{
    const ByteBalance exact = ByteBalance::of(4 + 2 * 16, 1.0, 4, 0, 4, 4, 2);
    EXPECT_EQ(exact.statusMessage(), "Remaining bytes (unread): +0");
    EXPECT_EQ(exact.badgeText(), QString::fromUtf8("\u2714\u00a0All bytes matched"));
    EXPECT_TRUE(exact.badgeStyleSheet().startsWith("background-color: #00c853;"));
    // A gap is counted behind the last frame too.
    const ByteBalance gap = ByteBalance::of(2 * 16 + 16, 1.0, 0, 16, 4, 4, 2);
    EXPECT_EQ(gap.badgeText(), QString::fromUtf8("\u26a0\u00a0-16 B"));
    EXPECT_TRUE(gap.badgeStyleSheet().startsWith("background-color: #ff8f00;"));
    // Bitmaps count eighths of bytes; halves round to even, keeping the sign.
    // (The sums themselves are checked by the decode property test.)
    EXPECT_EQ(ByteBalance::of(2, 0.125, 0, 0, 3, 1, 4).signedText(), "+0");   // 2 - 1.5 = 0.5
    EXPECT_EQ(ByteBalance::of(3, 0.125, 0, 0, 3, 1, 4).signedText(), "+2");   // 1.5
    EXPECT_EQ(ByteBalance::of(1, 0.125, 0, 0, 3, 1, 4).signedText(), "-0");   // -0.5
}

TEST(AxisTransfer, PermutesAndFlipsAsViews)
{
    NdArray stack = NdArray::empty({3, 100, 200, 1}, DType::UInt8);
    for (int64_t i = 0; i < stack.size(); ++i) stack.mutableData()[i] = std::byte(i % 251);
    const NdArray same = transferAxes(stack, "0,1,2", false, false);
    EXPECT_EQ(same.data(), stack.data());
    EXPECT_EQ(same.byteStrides(), stack.byteStrides());
    const NdArray permuted = transferAxes(stack, "1, 0,2", false, false);
    EXPECT_EQ(permuted.shape(), (Shape{100, 3, 200, 1}));
    EXPECT_TRUE(permuted.sharesStorageWith(stack));
    // Both flips turn each frame by 180 degrees.
    const NdArray turned = transferAxes(stack, "0,1,2", true, true);
    EXPECT_EQ(turned.index(2).index(0).index(0).data(), stack.index(2).index(99).index(199).data());
    EXPECT_THROW(transferAxes(stack, "0,1", false, false), std::runtime_error);
    EXPECT_THROW(transferAxes(stack, "0,1,x", false, false), std::runtime_error);
    EXPECT_THROW(transferAxes(stack, "0,1,3", false, false), std::runtime_error);
}

TEST(PixelReadout, ReadsTheArrayAsShown)
{
    NdArray rgb = NdArray::zeros({2, 3, 3}, DType::UInt8);
    auto* p = reinterpret_cast<uint8_t*>(rgb.mutableData());
    p[(1 * 3 + 2) * 3 + 0] = 200, p[(1 * 3 + 2) * 3 + 1] = 13, p[(1 * 3 + 2) * 3 + 2] = 4;
    EXPECT_EQ(pixelReadout(rgb, {2.7, 1.2}), QString::fromUtf8("X:2  Y:1  \u25b6  200  13  4"));
    EXPECT_EQ(pixelReadout(rgb.flip(1), {0.1, 1.9}), QString::fromUtf8("X:0  Y:1  \u25b6  200  13  4"));
    // Up to one pixel left of or above the image still reads row or column 0.
    EXPECT_TRUE(pixelReadout(rgb, {-0.5, -0.9}).has_value());
    EXPECT_FALSE(pixelReadout(rgb, {-1.0, 0}).has_value());
    EXPECT_FALSE(pixelReadout(rgb, {3.0, 0}).has_value());
    NdArray gray = NdArray::zeros({1, 1}, DType::Float32);
    const float v = 0.1f;
    std::memcpy(gray.mutableData(), &v, sizeof v);
    EXPECT_EQ(pixelReadout(gray, {0, 0}), QString::fromUtf8("X:0  Y:0  \u25b6  0.1"));
}
