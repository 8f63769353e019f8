#include "toolboxes/importData/volume/DisplayImage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <random>

using namespace torvex;

namespace {

constexpr DType allTypes[] = {DType::UInt8,   DType::Int16,   DType::UInt16,  DType::Int32,
                              DType::UInt32,  DType::Float16, DType::Float32, DType::Float64};

bool isFloating(DType d) { return d == DType::Float16 || d == DType::Float32 || d == DType::Float64; }

// The bytes of `values` as elements of dtype, after `offset` bytes of padding.
QByteArray encode(const std::vector<double>& values, DType dtype, int offset = 0)
{
    NdArray source = NdArray::empty({static_cast<int64_t>(values.size())}, DType::Float64);
    std::copy(values.begin(), values.end(), reinterpret_cast<double*>(source.mutableData()));
    const NdArray typed = source.astype(dtype);
    return QByteArray(offset, '\0') + QByteArray(reinterpret_cast<const char*>(typed.data()), typed.nbytes());
}

// n values spread over the range of dtype (floats: -1000..1000 with some NaN).
std::vector<double> randomValues(DType dtype, int64_t n, unsigned seed = 7)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> unit(0, 1);
    const std::map<DType, std::pair<double, double>> ranges = {
        {DType::UInt8, {0, 255}},           {DType::Int16, {-32768, 32767}},
        {DType::UInt16, {0, 65535}},        {DType::Int32, {-2147483648.0, 2147483647.0}},
        {DType::UInt32, {0, 4294967295.0}}};
    const auto [lo, hi] = isFloating(dtype) ? std::pair{-1000.0, 1000.0} : ranges.at(dtype);
    std::vector<double> values(n);
    for (double& v : values) {
        v = isFloating(dtype) ? lo + unit(rng) * (hi - lo) : std::floor(lo + unit(rng) * (hi - lo + 1));
        if (isFloating(dtype) && unit(rng) < 0.03) v = std::nan("");
    }
    return values;
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

} // namespace

TEST(DisplayImage, SmallIntegersAreExactAtEveryLevelBoundary)
{
    // Every value from lo to lo + span: each quotient that lands on a whole
    // level is met, for spans that do and don't divide by 255.
    for (const auto& [dtype, lo] : {std::pair{DType::UInt8, 0.0}, {DType::Int16, -32768.0}, {DType::UInt16, 0.0}})
        for (int span : {1, 2, 3, 17, 85, 128, 254, 255, 256, 257, 1000, 4097, 32767, 65534, 65535}) {
            if (dtype == DType::UInt8 && span > 255) continue;
            std::vector<double> values(span + 1);
            for (int i = 0; i <= span; ++i) values[i] = lo + i;
            const int64_t item = itemSize(dtype);
            EXPECT_TRUE(showsExactLevels(NdArray::strided(encode(values, dtype), 0, {1, span + 1},
                                                          {(span + 1) * item, item}, dtype)));
        }
}

TEST(DisplayImage, EveryLayoutOfAViewShowsItsOwnElements)
{
    constexpr int64_t h = 37, w = 53;
    // Every element type, each over its whole range.
    for (DType dtype : allTypes) {
        const int64_t item = itemSize(dtype);
        // Odd padding puts every element at an odd address.
        const QByteArray bytes = encode(randomValues(dtype, 700 * 600), dtype, 1);
        const NdArray rowMajor = NdArray::strided(bytes, 1, {h, w}, {w * item, item}, dtype);
        const NdArray columnMajor = NdArray::strided(bytes, 1, {h, w}, {item, h * item}, dtype);
        for (const NdArray& frame : {
                 rowMajor, columnMajor, rowMajor.flip(0).flip(1), columnMajor.flip(0).flip(1),
                 NdArray::strided(bytes, 1, {h, w}, {3 * w * item, 2 * item}, dtype), // gaps between elements
                 // Larger than a core's share and than one tile block, with partial tiles.
                 NdArray::strided(bytes, 1, {700, 600}, {item, 700 * item}, dtype).flip(1),
                 NdArray::strided(bytes, 1, {600, 700}, {700 * item, item}, dtype),
             })
            EXPECT_TRUE(showsExactLevels(frame));
    }
}

TEST(DisplayImage, ColourChannelsShareOneRange)
{
    // The channels have ranges of their own; each is scaled by the range of all.
    constexpr int64_t h = 19, w = 29;
    std::vector<double> values(h * w * 4);
    for (size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>((i * 37) % (20 * (i % 4 + 1)));
    const QByteArray bytes = encode(values, DType::UInt8);
    const NdArray rgb = NdArray::strided(bytes, 0, {h, w, 3}, {w * 3, 3, 1}, DType::UInt8);
    EXPECT_EQ(displayImage(rgb).format(), QImage::Format_RGB888);
    EXPECT_TRUE(showsExactLevels(rgb));

    // Planes one after another, as a file of colour planes gives them.
    const QByteArray floats = encode(values, DType::Float32);
    const NdArray planar = NdArray::strided(floats, 0, {h, w, 4}, {w * 4, 4, h * w * 4}, DType::Float32);
    EXPECT_EQ(displayImage(planar).format(), QImage::Format_RGBA8888);
    EXPECT_TRUE(showsExactLevels(planar));
    EXPECT_EQ(displayImage(planar.slice(2, 0, 1)).format(), QImage::Format_Grayscale8);
}

TEST(DisplayImage, FramesWithoutARangeShowBlack)
{
    const double nan = std::nan("");
    // Flat, all NaN, and a NaN beside one number: none has a range.
    const std::vector<std::pair<DType, std::vector<double>>> frames = {
        {DType::UInt16, std::vector<double>(600, 4000.0)}, {DType::Float32, std::vector<double>(600, 7.5)},
        {DType::Float64, std::vector<double>(600, nan)}, {DType::Float16, {nan, 3.0, nan}}};
    for (const auto& [dtype, values] : frames) {
        const int64_t n = static_cast<int64_t>(values.size()), w = n == 600 ? 30 : n, item = itemSize(dtype);
        EXPECT_TRUE(showsExactLevels(NdArray::strided(encode(values, dtype), 0, {n / w, w}, {w * item, item}, dtype)));
    }
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
