#include "toolboxes/importData/volume/DisplayImage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace torvex;

namespace {

// The bytes of `values` as elements of dtype, after `offset` bytes of padding.
QByteArray encode(const std::vector<double>& values, DType dtype, int offset = 0)
{
    NdArray source = NdArray::empty({static_cast<int64_t>(values.size())}, DType::Float64);
    std::copy(values.begin(), values.end(), reinterpret_cast<double*>(source.mutableData()));
    const NdArray typed = source.astype(dtype);
    return QByteArray(offset, '\0') + QByteArray(reinterpret_cast<const char*>(typed.data()), typed.nbytes());
}

// A padding byte, then n elements: integers of any bit pattern, floats in
// -1000..1000 with some NaN.
QByteArray randomElements(DType dtype, int64_t n)
{
    std::mt19937 rng(7);
    if (dtype != DType::Float16 && dtype != DType::Float32 && dtype != DType::Float64) {
        QByteArray bytes(1 + n * itemSize(dtype), Qt::Uninitialized);
        for (char& c : bytes) c = static_cast<char>(rng());
        return bytes;
    }
    std::vector<double> values(n);
    for (double& v : values) v = rng() % 32 ? std::uniform_real_distribution<double>(-1000, 1000)(rng) : NAN;
    return encode(values, dtype, 1);
}

// Whether each byte of the displayed frame is floor((v - lo) * 255 / (hi - lo))
// of its element, with lo and hi the frame's own, NaN and flat frames at 0.
testing::AssertionResult showsExactLevels(const NdArray& frame)
{
    const QImage image = displayImage(frame);
    const auto [lo, hi] = frame.minMax();
    const int64_t channels = frame.ndim() == 3 ? frame.extent(2) : 1;
    if (image.width() != frame.extent(1) || image.height() != frame.extent(0))
        return testing::AssertionFailure() << "image size " << image.width() << " x " << image.height();
    for (int64_t y = 0; y < frame.extent(0); ++y)
        for (int64_t x = 0; x < frame.extent(1); ++x)
            for (int64_t c = 0; c < channels; ++c) {
                const double v = frame.valueAt(frame.data() + y * frame.stride(0) + x * frame.stride(1) +
                                               (channels > 1 ? c * frame.stride(2) : 0));
                const double t = lo < hi ? std::floor((v - lo) * 255.0 / (hi - lo)) : 0;
                const int expected = t >= 0 ? static_cast<int>(std::min(t, 255.0)) : 0;
                const int shown = image.constScanLine(static_cast<int>(y))[x * channels + c];
                if (shown != expected)
                    return testing::AssertionFailure() << dtypeName(frame.dtype()) << " (" << y << ", " << x << ", "
                                                       << c << ") = " << v << " shows " << shown << ", not "
                                                       << expected;
            }
    return testing::AssertionSuccess();
}

// Rows of w elements, one after another.
NdArray frame(const std::vector<double>& values, DType dtype, int64_t w)
{
    const int64_t h = static_cast<int64_t>(values.size()) / w, item = itemSize(dtype);
    return NdArray::strided(encode(values, dtype), 0, {h, w}, {w * item, item}, dtype);
}

TEST(DisplayImage, SmallIntegersAreExactAtEveryLevelBoundary)
{
    // Every value from lo to lo + span: each quotient that lands on a whole
    // level is met, for spans that do and don't divide by 255.
    for (const auto& [dtype, lo] : {std::pair{DType::UInt8, 0.0}, {DType::Int16, -32768.0}, {DType::UInt16, 0.0}})
        for (int span : {1, 2, 3, 17, 85, 128, 254, 255, 256, 257, 1000, 4097, 32767, 65534, 65535}) {
            if (dtype == DType::UInt8 && span > 255) continue;
            std::vector<double> values(span + 1);
            for (int i = 0; i <= span; ++i) values[i] = lo + i;
            EXPECT_TRUE(showsExactLevels(frame(values, dtype, span + 1)));
        }
}

TEST(DisplayImage, EveryLayoutOfAViewShowsItsOwnElements)
{
    constexpr int64_t h = 37, w = 53;
    for (DType dtype : {DType::UInt8, DType::Int16, DType::UInt16, DType::Int32, DType::UInt32, DType::Float16,
                        DType::Float32, DType::Float64}) {
        const int64_t item = itemSize(dtype);
        // Odd padding puts every element at an odd address.
        const QByteArray bytes = randomElements(dtype, 700 * 600);
        const NdArray rowMajor = NdArray::strided(bytes, 1, {h, w}, {w * item, item}, dtype);
        const NdArray columnMajor = NdArray::strided(bytes, 1, {h, w}, {item, h * item}, dtype);
        for (const NdArray& view : {
                 rowMajor, columnMajor, rowMajor.flip(0).flip(1), columnMajor.flip(0).flip(1),
                 NdArray::strided(bytes, 1, {h, w}, {3 * w * item, 2 * item}, dtype), // gaps between elements
                 // Larger than a core's share and than one tile block, with partial tiles.
                 NdArray::strided(bytes, 1, {700, 600}, {item, 700 * item}, dtype).flip(1),
                 NdArray::strided(bytes, 1, {600, 700}, {700 * item, item}, dtype),
             })
            EXPECT_TRUE(showsExactLevels(view));
    }
}

TEST(DisplayImage, ColourChannelsShareOneRange)
{
    // The channels have ranges of their own; each is scaled by the range of all.
    constexpr int64_t h = 19, w = 29;
    std::vector<double> values(h * w * 4);
    for (size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>((i * 37) % (20 * (i % 4 + 1)));
    const NdArray rgb = NdArray::strided(encode(values, DType::UInt8), 0, {h, w, 3}, {w * 3, 3, 1}, DType::UInt8);
    EXPECT_EQ(displayImage(rgb).format(), QImage::Format_RGB888);
    EXPECT_TRUE(showsExactLevels(rgb));

    // Planes one after another, as a file of colour planes gives them.
    const NdArray planar =
        NdArray::strided(encode(values, DType::Float32), 0, {h, w, 4}, {w * 4, 4, h * w * 4}, DType::Float32);
    EXPECT_EQ(displayImage(planar).format(), QImage::Format_RGBA8888);
    EXPECT_TRUE(showsExactLevels(planar));
    EXPECT_EQ(displayImage(planar.slice(2, 0, 1)).format(), QImage::Format_Grayscale8);
}

TEST(DisplayImage, FramesWithoutARangeShowBlack)
{
    // Flat, all NaN, and a NaN beside one number: none has a range.
    EXPECT_TRUE(showsExactLevels(frame(std::vector<double>(600, 4000.0), DType::UInt16, 30)));
    EXPECT_TRUE(showsExactLevels(frame(std::vector<double>(600, 7.5), DType::Float32, 30)));
    EXPECT_TRUE(showsExactLevels(frame(std::vector<double>(600, NAN), DType::Float64, 30)));
    EXPECT_TRUE(showsExactLevels(frame({NAN, 3.0, NAN}, DType::Float16, 3)));
}

TEST(DisplayImage, RejectsShapesThatAreNoFrame)
{
    for (const Shape& shape : {Shape{4}, Shape{2, 2, 2}, Shape{2, 2, 5}, Shape{2, 2, 3, 1}}) {
        try {
            displayImage(NdArray::zeros(shape, DType::UInt8));
            ADD_FAILURE() << shapeText(shape) << " was shown";
        } catch (const std::runtime_error& e) {
            EXPECT_NE(std::string(e.what()).find(shapeText(shape)), std::string::npos) << e.what();
        }
    }
}

} // namespace
