// Random raw files and layouts straight through the decoder: each gives either
// a std::runtime_error or a readable stack of exactly the ruled shape and type,
// whatever the sizes (zero, INT_MAX, products beyond 64 bits). Never a crash.
#include "toolboxes/importData/volume/ByteBalance.h"
#include "toolboxes/importData/volume/RawDecoder.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <random>

using namespace torvex;

namespace {

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

std::string describe(const ImageType& type, const RawLayout& p, qsizetype fileBytes)
{
    return type.name.toStdString() + " offset " + std::to_string(p.offset) + " gap " + std::to_string(p.gap) +
           " width " + std::to_string(p.width) + " height " + std::to_string(p.height) + " frames " +
           std::to_string(p.frame) + (p.littleEndian ? " LE " : " BE ") + p.readOrder.toStdString() + " " +
           p.colorOrder.toStdString() + ", file of " + std::to_string(fileBytes) + " bytes";
}

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
                                .frame = size(12, {INT_MAX, 1 << 20}, 5), .littleEndian = bool(below(2)),
                                .readOrder = below(2) ? "C" : "F", .colorOrder = below(2) ? "ABCABC" : "AABBCC"};
        // Mostly a length at the edge of what the layout needs, else any small one.
        const __int128 bytes = frameBits(type, p) / 8, needed = p.offset + (std::max<int64_t>(p.frame, 1) - 1) *
                                                                               (bytes + p.gap) + bytes;
        __int128 length = below(10) < 7 ? needed + pick({-1, 0, 0, 0, 1, 7}) : below(600);
        if (length < 0 || length > 1 << 16) length = below(600);
        QByteArray file(qsizetype(length), Qt::Uninitialized);
        for (char& b : file) b = char(rng());
        SCOPED_TRACE("seed " + std::to_string(ok ? seed : 715517u) + ", case " + std::to_string(c) + ": " +
                     describe(type, p, file.size()));

        // The claim counts a gap behind the last frame too.
        const ByteBalance balance = *ByteBalance::of(file.size(), p);
        const double exact = double(8 * __int128(file.size()) - (8 * p.offset + (8 * p.gap + frameBits(type, p)) *
                                                                                    p.frame)) / 8;
        EXPECT_NEAR(balance.diff, exact, std::abs(exact) * 1e-12);
        EXPECT_EQ(balance.signedText().toDouble(), std::nearbyint(balance.diff));

        try {
            const NdArray a = *decodeRawVolume(file, p);
            stacks += a.size() > 0; // non-empty ones
            EXPECT_TRUE(decodes(type, p, file.size()));
            EXPECT_EQ(a.shape(), (Shape{p.frame, p.height, p.width, type.channels}));
            EXPECT_EQ(a.dtype(), type.dtype);
            int64_t read = 0;
            double sum = 0;
            a.forEach([&](const std::byte* e) { sum += a.valueAt(e), ++read; });
            EXPECT_EQ(read, a.size()) << sum;
        } catch (const std::runtime_error& e) {
            ++errors;
            EXPECT_FALSE(decodes(type, p, file.size())) << e.what();
        }
    }
    EXPECT_GT(stacks, kCases / 10);
    EXPECT_GT(errors, kCases / 10);
}

} // namespace
