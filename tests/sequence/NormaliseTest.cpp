#include "SequenceFiles.h"

#include "toolboxes/importData/sequence/Normalise8Bit.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace torvex;

template <class T> static NdArray row(DType dtype, std::vector<T> values)
{
    NdArray a = NdArray::empty({1, static_cast<int64_t>(values.size())}, dtype);
    std::memcpy(a.mutableData(), values.data(), values.size() * sizeof(T));
    return a;
}

TEST(NormaliseToUInt8, TruncatesEveryStretchedTypeAndFlatOrNanImagesBecomeZero)
{
    // 1/2 of 255 is 127.5: truncation gives 127 where rounding would give 128.
    const std::vector<int> stretched{0, 127, 255}, zeros(3, 0);
    EXPECT_EQ(bytesOf(normaliseToUInt8({row<uint16_t>(DType::UInt16, {10, 11, 12})})), stretched);
    EXPECT_EQ(bytesOf(normaliseToUInt8({row<int16_t>(DType::Int16, {-5, -4, -3})})), stretched);
    EXPECT_EQ(bytesOf(normaliseToUInt8({row<uint32_t>(DType::UInt32, {0, 2000000000u, 4000000000u})})), stretched);
    EXPECT_EQ(bytesOf(normaliseToUInt8({row<float>(DType::Float32, {-1.f, 0.f, 1.f})})), stretched);
    EXPECT_EQ(bytesOf(normaliseToUInt8({row<double>(DType::Float64, {2.0, 2.5, 3.0})})), stretched);
    EXPECT_EQ(bytesOf(normaliseToUInt8({row<uint16_t>(DType::UInt16, {9, 9, 9})})), zeros);
    EXPECT_EQ(bytesOf(normaliseToUInt8({row<double>(DType::Float64, {0.0, NAN, 1.0})})), zeros);
    EXPECT_EQ(bytesOf(normaliseToUInt8({row<float>(DType::Float32, {NAN, 0.f, 1.f})})), zeros);
}

TEST(NormaliseToUInt8, EightBitPassesUnchangedButBilevelStretches)
{
    const NdArray bytes = row<uint8_t>(DType::UInt8, {0, 1, 1});
    const NdArray same = normaliseToUInt8({bytes});
    EXPECT_TRUE(same.sharesStorageWith(bytes));
    EXPECT_EQ(bytesOf(same), (std::vector<int>{0, 1, 1}));
    EXPECT_EQ(bytesOf(normaliseToUInt8({bytes, true})), (std::vector<int>{0, 255, 255}));
}
