#include "SequenceFiles.h"

#include "toolboxes/importData/sequence/Normalise8Bit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

using namespace torvex;

namespace {

template <class T> NdArray arrayOf(DType dtype, std::vector<T> values)
{
    NdArray a = NdArray::empty({1, static_cast<int64_t>(values.size())}, dtype);
    std::memcpy(a.mutableData(), values.data(), values.size() * sizeof(T));
    return a;
}

TEST(NormaliseToUInt8, TruncatesEveryStretchedTypeAndFlatOrNanImagesBecomeZero)
{
    // 1/2 of 255 is 127.5: truncation gives 127 where rounding would give 128.
    const std::vector<int> expected{0, 127, 255};
    EXPECT_EQ(bytesOf(normaliseToUInt8({arrayOf<uint16_t>(DType::UInt16, {10, 11, 12})})), expected);
    EXPECT_EQ(bytesOf(normaliseToUInt8({arrayOf<int16_t>(DType::Int16, {-5, -4, -3})})), expected);
    EXPECT_EQ(bytesOf(normaliseToUInt8({arrayOf<uint32_t>(DType::UInt32, {0, 2000000000u, 4000000000u})})), expected);
    EXPECT_EQ(bytesOf(normaliseToUInt8({arrayOf<float>(DType::Float32, {-1.f, 0.f, 1.f})})), expected);
    EXPECT_EQ(bytesOf(normaliseToUInt8({arrayOf<double>(DType::Float64, {2.0, 2.5, 3.0})})), expected);

    const double nan = std::nan("");
    EXPECT_EQ(bytesOf(normaliseToUInt8({arrayOf<uint16_t>(DType::UInt16, {9, 9, 9})})), std::vector<int>(3, 0));
    EXPECT_EQ(bytesOf(normaliseToUInt8({arrayOf<double>(DType::Float64, {0.0, nan, 1.0})})), std::vector<int>(3, 0));
    EXPECT_EQ(bytesOf(normaliseToUInt8({arrayOf<float>(DType::Float32, {float(nan), 0.f, 1.f})})), std::vector<int>(3, 0));
}

TEST(NormaliseToUInt8, EightBitPassesUnchangedButBilevelStretches)
{
    const NdArray bytes = arrayOf<uint8_t>(DType::UInt8, {0, 1, 1});
    const NdArray same = normaliseToUInt8({bytes});
    EXPECT_TRUE(same.sharesStorageWith(bytes));
    EXPECT_EQ(bytesOf(same), (std::vector<int>{0, 1, 1}));
    EXPECT_EQ(bytesOf(normaliseToUInt8({bytes, true})), (std::vector<int>{0, 255, 255}));
}

} // namespace
