// Arrays and their views, raw decoding (big-endian files too), and the panel's
// readouts and display.
#include "toolboxes/importData/volume/AxisTransfer.h"
#include "toolboxes/importData/volume/ByteBalance.h"
#include "toolboxes/importData/volume/DisplayImage.h"
#include "toolboxes/importData/volume/Histogram.h"
#include "toolboxes/importData/volume/NdArray.h"
#include "toolboxes/importData/volume/PixelReadout.h"
#include "toolboxes/importData/volume/RawDecoder.h"

#include "../support/TempFiles.h"

#include <climits>
#include <cmath>
#include <map>
#include <numeric>
#include <random>

using namespace torvex;

namespace {

using Values = std::vector<double>;

// A C-contiguous array holding 0, 1, 2, ... in the given type.
NdArray iota(const Shape& shape, DType dtype = DType::Int32)
{
    NdArray a = NdArray::empty(shape, DType::Float64);
    auto* p = reinterpret_cast<double*>(a.mutableData());
    std::iota(p, p + a.size(), 0.0);
    return a.astype(dtype);
}

Values values(const NdArray& a)
{
    Values out;
    a.forEach([&](const std::byte* p) { out.push_back(a.valueAt(p)); });
    return out;
}

using test::failure;

// The bytes of `values` as elements of dtype, after `offset` bytes of padding.
QByteArray encode(const std::vector<double>& values, DType dtype, int offset = 0)
{
    NdArray source = NdArray::empty({static_cast<int64_t>(values.size())}, DType::Float64);
    std::copy(values.begin(), values.end(), reinterpret_cast<double*>(source.mutableData()));
    const NdArray typed = source.astype(dtype);
    return QByteArray(offset, '\0') + QByteArray(reinterpret_cast<const char*>(typed.data()), typed.nbytes());
}

// Rows of w elements, one after another.
NdArray frame(const std::vector<double>& values, DType dtype, int64_t w)
{
    const int64_t h = static_cast<int64_t>(values.size()) / w, item = itemSize(dtype);
    return NdArray::strided(encode(values, dtype), 0, {h, w}, {w * item, item}, dtype);
}

TEST(NdArray, ViewsShareStorageAndWalkInTheirOwnOrder)
{
    const NdArray a = iota({2, 3});
    const NdArray t = a.transpose({1, 0}), f = a.flip(1);
    EXPECT_TRUE(t.sharesStorageWith(a));
    EXPECT_EQ(values(t), (Values{0, 3, 1, 4, 2, 5}));
    EXPECT_EQ(values(f), (Values{2, 1, 0, 5, 4, 3}));
    EXPECT_EQ(values(a.flip(0).flip(1)), (Values{5, 4, 3, 2, 1, 0}));
    EXPECT_EQ(values(a.slice(1, 0, 3, 2)), (Values{0, 2, 3, 5}));
    EXPECT_EQ(values(a.index(1)), (Values{3, 4, 5}));
    // Reshape reads in C or F order; a view whenever the strides allow.
    const NdArray flat = iota({6});
    EXPECT_EQ(values(flat.reshape({2, 3}, 'F')), (Values{0, 2, 4, 1, 3, 5}));
    EXPECT_TRUE(flat.reshape({2, 3}, 'F').sharesStorageWith(flat));
    EXPECT_EQ(values(t.reshape({6})), (Values{0, 3, 1, 4, 2, 5}));
    EXPECT_EQ(values(f.reshape({3, 2}, 'F')), (Values{2, 4, 5, 0, 1, 3}));
}

TEST(NdArray, CopiesPadAndConvert)
{
    const NdArray a = iota({3, 2}, DType::UInt16);
    EXPECT_EQ(values(a.index(0).pad({{1, 2}})), (Values{0, 0, 1, 0, 0}));
    EXPECT_EQ(a.pad({{0, 1}, {1, 0}}).shape(), (Shape{4, 3}));
    // Float to integer truncates toward zero and saturates instead of wrapping.
    const NdArray d = frame({2.9, -1.5, 300.0, NAN}, DType::Float64, 4);
    EXPECT_EQ(values(d.astype(DType::UInt8)), (Values{2, 0, 255, 0}));
    EXPECT_EQ(values(d.astype(DType::Float16)).front(), 2.900390625);

    EXPECT_EQ(failure([&] { a.reshape({4, 2}); }), "cannot reshape array of size 6 into shape (4,2)");
    EXPECT_EQ(failure([&] { a.transpose({0, 0}); }), "repeated axis in transpose");
    EXPECT_NE(failure([] { NdArray::zeros({1 << 30, 1 << 30, 1 << 30}, DType::UInt8); }), "");
}

TEST(NdArray, ElementTextIsTheShortestThatReadsBack)
{
    const std::tuple<DType, double, const char*> cases[] = {
        {DType::Float32, 0.1, "0.1"},   {DType::Float64, 0.1, "0.1"},   {DType::Float16, 1.0 / 3, "0.3333"},
        {DType::Float32, 1e20, "1e+20"}, {DType::Float64, 2.0, "2.0"},   {DType::Float64, 1e-5, "1e-05"},
        {DType::Int16, -7, "-7"}};
    for (const auto& [dtype, v, text] : cases) {
        const NdArray a = frame({v}, dtype, 1);
        EXPECT_EQ(a.elementText(a.data()), text);
    }
}

TEST(NdArray, TakePicksWithoutCopyingAndGathersOnDemand)
{
    const NdArray stack = iota({4, 2, 3});
    const NdArray picked = stack.take({3, 1, 3});
    EXPECT_TRUE(picked.is_picked());
    EXPECT_EQ(picked.shape(), (Shape{3, 2, 3}));
    EXPECT_EQ(picked.index(1).data(), stack.index(1).data()); // no element copied
    const Values want = {18, 19, 20, 21, 22, 23, 6, 7, 8, 9, 10, 11, 18, 19, 20, 21, 22, 23};
    EXPECT_EQ(values(picked), want);
    EXPECT_EQ(values(picked.take({1})), Values(want.begin() + 6, want.begin() + 12));
    // Anything that needs the elements in one block gets them gathered once.
    EXPECT_EQ(values(picked.transpose({1, 0, 2}).index(0)), (Values{18, 19, 20, 6, 7, 8, 18, 19, 20}));
    EXPECT_EQ(values(picked.copy()), want);
    EXPECT_EQ(values(picked.slice(0, 0, 2)), Values(want.begin(), want.begin() + 12));
    EXPECT_THROW(stack.take({4}), std::runtime_error);
}

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
    return failure([&] { decodeRawVolume(bytes, p); });
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
                            .byteOrder = le ? ByteOrder::Little : ByteOrder::Native, .readOrder = order, .colorOrder = colorOrder};
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
    const Values got = values(a);
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
    const RawLayout gapped{.offset = 4, .gap = 8, .width = 4, .height = 4, .frame = 3};
    const int64_t big = 2147483647;
    const RawLayout beyond64Bits{.offset = big, .gap = big, .width = big, .height = big, .frame = big};
    // Bytes of the file, type, layout: the message. Whether a layout fails at
    // all (and that the last frame needs no gap behind it) is the property test's.
    const std::tuple<qsizetype, const char*, RawLayout, const char*> cases[] = {
        // Where the file runs short.
        {4 + 2 * 24 + 15, "8-bit", gapped, "The image data is not complete"},
        {4 + 2 * 24 + 15, "24-bit BGR", gapped, "The image data is not complete"},
        {4 + 2 * 24 + 15, "1-bit Bitmap", {.width = 16, .height = 8, .frame = 9}, "The image data is not complete"},
        {100, "8-bit", {.width = 8, .height = 8, .frame = 0}, "need at least one array to stack"},
        {100, "32-bit ABGR", {.width = 8, .height = 8, .frame = 0}, "need at least one array to stack"},
        {100, "1-bit Bitmap", {.width = 8, .height = 8, .frame = 0}, "need at least one array to stack"},
        // A single frame ignores the gap and reads what the file has.
        {15, "16-bit Signed", {.width = 4, .height = 4, .frame = 1}, "buffer size must be a multiple of element size"},
        {14, "16-bit Signed", {.width = 4, .height = 4, .frame = 1}, "cannot reshape array of size 7 into shape (1,4,4,1)"},
        {10, "24-bit RGB", {.width = 2, .height = 2, .frame = 1}, "all input arrays must have the same shape"},
        {9, "24-bit RGB", {.width = 2, .height = 2, .frame = 1}, "cannot reshape array of size 9 into shape (1,2,2,3)"},
        {100, "1-bit Bitmap", {.width = 3, .height = 3, .frame = 1}, "cannot reshape array of size 8 into shape (1,3,3,1)"},
        {100, "1-bit Bitmap", {.width = 3, .height = 3, .frame = 2}, "cannot reshape array of size 8 into shape (3,3,1)"},
        // Sizes whose products leave 64 bits fail cleanly, without allocating.
        {100, "64-bit Real", beyond64Bits, "The image data is not complete"},
        {100, "32-bit ARGB", beyond64Bits, "The image data is not complete"},
        {100, "1-bit Bitmap", beyond64Bits, "The image data is not complete"},
        {100, "64-bit Real", {.width = big, .height = big, .frame = 2}, "The image data is not complete"},
        {100, "32-bit ARGB", {.width = big, .height = big, .frame = 2}, "The image data is not complete"},
        {100, "1-bit Bitmap", {.width = big, .height = big, .frame = 2}, "The image data is not complete"},
        {100, "64-bit Real", {.width = big, .height = big, .frame = 1}, "buffer size must be a multiple of element size"},
        {100, "32-bit ARGB", {.width = big, .height = big, .frame = 1},
         "cannot reshape array of size 100 into shape (1,2147483647,2147483647,4)"},
        {100, "1-bit Bitmap", {.width = big, .height = big, .frame = 1},
         "cannot reshape array of size 800 into shape (1,2147483647,2147483647,1)"},
    };
    for (const auto& [bytes, type, layout, message] : cases)
        EXPECT_EQ(failureOf(file.left(bytes), type, layout), message) << type << ", " << bytes << " bytes";
    EXPECT_NE(failureOf(file, "8-bit", {.width = 2, .height = 2, .frame = 2, .readOrder = "X"}), "");
    EXPECT_FALSE(decodeRawVolume(file, {.imgType = "12-bit", .width = 4, .height = 4, .frame = 1}).has_value());
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
    // Big-endian values are swapped as they are read, still a view (their values
    // in all types and layouts against NumPy's reading: the function dialog test).
    const QByteArray big(4, '\x01');
    const NdArray a = *decodeRawVolume(big, {.imgType = "16-bit Signed", .width = 2, .height = 1, .frame = 1,
                                             .byteOrder = ByteOrder::Big});
    EXPECT_EQ(reinterpret_cast<const char*>(a.data()), big.constData());
}

// Sizes in bits, exactly: nothing here can overflow.
__int128 frameBits(const ImageType& type, const RawLayout& p)
{
    return __int128(p.width) * p.height * type.bitsPerPixel;
}

// The file must hold every frame (the last needs no gap behind it), and
// bitmap frames must fill whole bytes. Empty frames need no bytes at all.
bool decodes(const ImageType& type, const RawLayout& p, int64_t fileBytes)
{
    const __int128 bits = frameBits(type, p), bytes = bits / 8;
    if (p.frame == 0 || bits % 8 != 0) return false;
    return bytes == 0 || p.offset + (p.frame - 1) * (bytes + p.gap) + bytes <= fileBytes;
}

// Random raw files and layouts straight through the decoder: each gives either
// a std::runtime_error or a stack, as the file's length rules, whatever the
// sizes (zero, INT_MAX, products beyond 64 bits).
TEST(DecodeProperty, RandomLayoutsGiveTheRuledStackOrAnError)
{
    bool ok = false;
    const unsigned seed = qEnvironmentVariableIntValue("TORVEX_PROPERTY_SEED", &ok);
    std::mt19937 rng(ok ? seed : 715517u);
    const auto below = [&](int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng); };
    const auto pick = [&](std::initializer_list<int64_t> v) { return v.begin()[below(int(v.size()))]; };
    const auto size = [&](int zeroPercent, std::initializer_list<int64_t> huge, int small) -> int64_t {
        return below(100) < zeroPercent ? 0 : below(10) == 0 ? pick(huge) : 1 + below(small);
    };
    int stacks = 0, errors = 0;
    constexpr int kCases = 3000;
    for (int c = 0; c < kCases && !HasFailure(); ++c) {
        const ImageType& type = imageTypes()[below(int(imageTypes().size()))];
        const RawLayout p{.imgType = type.name,
                          .offset = below(10) ? below(2) * below(40) : pick({INT_MAX, INT_MAX - 1, 1 << 30}),
                                .gap = below(10) ? below(2) * below(20) : pick({INT_MAX, 1 << 30}),
                                .width = size(8, {INT_MAX, 1 << 16, 46341}, 12),
                                .height = size(8, {INT_MAX, 1 << 16, 46341}, 12),
                                .frame = size(12, {INT_MAX, 1 << 20}, 5), .byteOrder = ByteOrder(below(3)),
                                .readOrder = below(2) ? "C" : "F", .colorOrder = below(2) ? "ABCABC" : "AABBCC"};
        // Mostly a length at the edge of what the layout needs, else any small one.
        const __int128 bytes = frameBits(type, p) / 8, needed = p.offset + (std::max<int64_t>(p.frame, 1) - 1) *
                                                                               (bytes + p.gap) + bytes;
        __int128 length = below(10) < 7 ? needed + pick({-1, 0, 0, 0, 1, 7}) : below(600);
        if (length < 0 || length > 1 << 16) length = below(600);
        QByteArray file(qsizetype(length), Qt::Uninitialized);
        for (char& b : file) b = char(rng());
        SCOPED_TRACE(QString("seed %1, case %2: %3 offset %4 gap %5, %6 x %7 x %8 frames, byte order %9 %10 %11, %12 bytes")
                         .arg(ok ? seed : 715517u).arg(c).arg(type.name).arg(p.offset).arg(p.gap).arg(p.width)
                         .arg(p.height).arg(p.frame).arg(int(p.byteOrder)).arg(p.readOrder, p.colorOrder)
                         .arg(file.size()).toStdString());

        // The claim counts a gap behind the last frame too.
        const ByteBalance balance = *ByteBalance::of(file.size(), p);
        const double exact = double(8 * __int128(file.size()) - (8 * p.offset + (8 * p.gap + frameBits(type, p)) *
                                                                                    p.frame)) / 8;
        EXPECT_NEAR(balance.diff, exact, std::abs(exact) * 1e-12);
        EXPECT_EQ(balance.signedText().toDouble(), std::nearbyint(balance.diff));

        // Shapes and reads of what decodes are the raw-decode fuzzer's, under the sanitizers.
        try {
            stacks += decodeRawVolume(file, p)->size() > 0; // non-empty ones
            EXPECT_TRUE(decodes(type, p, file.size()));
        } catch (const std::runtime_error& e) {
            ++errors;
            EXPECT_FALSE(decodes(type, p, file.size())) << e.what();
        }
    }
    EXPECT_GT(stacks, kCases / 10);
    EXPECT_GT(errors, kCases / 10);
}

TEST(ByteBalance, SignedRoundedTextAndBadge)
{
    const ByteBalance exact = ByteBalance::of(4 + 2 * 16, 1.0, 4, 0, 4, 4, 2);
    EXPECT_EQ(exact.statusMessage(), "Remaining bytes (unread): +0");
    EXPECT_TRUE(exact.badgeStyleSheet().startsWith("background-color: #00c853;"));
    // The badge texts are the window test's; counting a gap behind the last frame is the property test's.
    const ByteBalance gap = ByteBalance::of(2 * 16 + 16, 1.0, 0, 16, 4, 4, 2);
    EXPECT_TRUE(gap.badgeStyleSheet().startsWith("background-color: #ff8f00;"));
    // Halves keep their sign: 1 - 1.5 bytes of bitmap (rounding to even is the property test's).
    EXPECT_EQ(ByteBalance::of(1, 0.125, 0, 0, 3, 1, 4).signedText(), "-0");
}

TEST(AxisTransfer, PermutesAndFlipsAsViews)
{
    NdArray stack = NdArray::empty({3, 100, 200, 1}, DType::UInt8);
    for (int64_t i = 0; i < stack.size(); ++i) stack.mutableData()[i] = std::byte(i % 251);
    const NdArray same = transferAxes(stack, "0,1,2", false, false);
    EXPECT_EQ(same.data(), stack.data());
    const NdArray permuted = transferAxes(stack, "1, 0,2", false, false);
    EXPECT_EQ(permuted.shape(), (Shape{100, 3, 200, 1}));
    EXPECT_TRUE(permuted.sharesStorageWith(stack));
    // Both flips turn each frame by 180 degrees.
    const NdArray turned = transferAxes(stack, "0,1,2", true, true);
    EXPECT_EQ(turned.index(2).index(0).index(0).data(), stack.index(2).index(99).index(199).data());
    for (const char* bad : {"0,1", "0,1,x", "0,1,3"})
        EXPECT_THROW(transferAxes(stack, bad, false, false), std::runtime_error) << bad;
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
    EXPECT_EQ(pixelReadout(frame({0.1}, DType::Float32, 1), {0, 0}), QString::fromUtf8("X:0  Y:0  \u25b6  0.1"));
}

// A padding byte, then n elements: integers of any bit pattern, floats in
// -1000..1000 with some NaN.
QByteArray randomElements(DType dtype, int64_t n)
{
    if (dtype != DType::Float16 && dtype != DType::Float32 && dtype != DType::Float64)
        return randomBytes(1 + n * itemSize(dtype));
    std::mt19937 rng(7);
    std::vector<double> values(n);
    for (double& v : values) v = rng() % 32 ? std::uniform_real_distribution<double>(-1000, 1000)(rng) : NAN;
    return encode(values, dtype, 1);
}

// Whether each byte of the displayed frame is floor((v - lo) * 255 / (hi - lo))
// of its element clipped to 0..255, with lo and hi the given levels or the
// frame's own, NaN and flat frames at 0.
testing::AssertionResult showsExactLevels(const NdArray& frame, std::optional<ValueRange> levels = std::nullopt)
{
    const QImage image = levels ? displayFrame(frame, levels).image : displayImage(frame);
    const auto [lo, hi] = levels ? std::pair{levels->lo, levels->hi} : frame.minMax();
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

TEST(DisplayImage, GivenLevelsClipTheFrameAndItsOwnRangeIsReported)
{
    const std::vector<double> values{-300, -2, 0, 1, 7, 99, 100, 101, 255, 1000, 32767};
    for (DType dtype : {DType::Int16, DType::UInt16, DType::Int32, DType::Float32}) {
        std::vector<double> own;
        for (double v : values)
            if (dtype != DType::UInt16 || v >= 0) own.push_back(v);
        const NdArray row = frame(own, dtype, static_cast<int64_t>(own.size()));
        // Whole levels (the small-integer path for 16 bits), fractional, reaching past the type, crossed.
        for (const ValueRange levels : {ValueRange{0, 100}, {-2, 7}, {1, 255}, {0.5, 99.5}, {-1e6, 70000}, {7, 7}})
            EXPECT_TRUE(showsExactLevels(row, levels)) << levels.lo << ".." << levels.hi;
        EXPECT_EQ(displayFrame(row, ValueRange{0, 1}).values, (ValueRange{own.front(), own.back()}));
    }
    EXPECT_FALSE(displayFrame(frame({NAN, NAN}, DType::Float32, 2)).values);
}

TEST(Histogram, CountsEachValueInItsBinAndSamplesLargeFrames)
{
    // 0..9 once each, a NaN, and 20 beyond the range.
    const NdArray small = frame({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, NAN, 20}, DType::Float32, 4);
    EXPECT_EQ(sampledHistogram(small, {0, 9}, 3, 100), (std::vector<int64_t>{3, 3, 4})); // the top bin holds 9
    EXPECT_EQ(sampledHistogram(small, {2, 2}, 4, 100), (std::vector<int64_t>{1, 0, 0, 0}));
    // A large frame is read on a grid: a sample of about the asked size, spread over the whole frame.
    NdArray large = NdArray::zeros({1000, 1000}, DType::UInt16);
    auto* p = reinterpret_cast<uint16_t*>(large.mutableData());
    for (int i = 0; i < 1000 * 1000; ++i) p[i] = static_cast<uint16_t>(i / 1000 < 500 ? 0 : 1000);
    const std::vector<int64_t> counts = sampledHistogram(large, {0, 1000}, 2, 10000);
    EXPECT_EQ(counts[0] + counts[1], 100 * 100);
    EXPECT_EQ(counts[0], counts[1]);
}

TEST(DisplayImage, EveryLayoutOfAViewShowsItsOwnElementsAndFlatFramesShowBlack)
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
                 NdArray::strided(bytes, 1, {600, 700}, {700 * item, item}, dtype, ByteOrder::Big), // swapped
             })
            EXPECT_TRUE(showsExactLevels(view));
    }
    // Flat, all NaN, and a NaN beside one number: none has a range, so all show black.
    for (const NdArray& flat : {frame(std::vector<double>(600, 4000.0), DType::UInt16, 30),
                                frame(std::vector<double>(600, 7.5), DType::Float32, 30),
                                frame(std::vector<double>(600, NAN), DType::Float64, 30),
                                frame({NAN, 3.0, NAN}, DType::Float16, 3)})
        EXPECT_TRUE(showsExactLevels(flat)) << dtypeName(flat.dtype());
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

TEST(DisplayImage, RejectsShapesThatAreNoFrame)
{
    for (const Shape& shape : {Shape{4}, Shape{2, 2, 2}, Shape{2, 2, 5}, Shape{2, 2, 3, 1}}) {
        const std::string message = failure([&] { displayImage(NdArray::zeros(shape, DType::UInt8)); });
        EXPECT_NE(message.find(shapeText(shape)), std::string::npos) << shapeText(shape) << ": " << message;
    }
}

} // namespace
