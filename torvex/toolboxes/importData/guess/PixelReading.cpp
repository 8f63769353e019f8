#include "PixelReading.h"

#include "ElementChoice.h"
#include "GuessTuning.h"
#include "Likeness.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace torvex {

namespace {

// Fewer bytes than this read too few pixels for the checks of colour and of equal bytes.
constexpr int64_t kFewestBytes = 4096;

// Share of the byte pairs starting at `phase` (and every second byte on) whose two bytes are equal.
double equalPairs(QByteArrayView bytes, int64_t phase)
{
    const ElementSampler sampler(bytes, {DType::UInt8, ByteOrder::Little, phase});
    const int64_t run = kGuessTuning.run * 2;
    std::vector<double> values(static_cast<size_t>(run));
    int64_t equal = 0, pairs = 0;
    for (const int64_t start : sampleStarts((sampler.count() - run) / 2, kGuessTuning.places, kGuessTuning.placeStep)) {
        sampler.decode(2 * start, run, values.data());
        for (size_t i = 0; i + 1 < values.size(); i += 2) equal += values[i] == values[i + 1], ++pairs;
    }
    return pairs ? static_cast<double>(equal) / static_cast<double>(pairs) : 0;
}

// Colour when each byte is much more like the byte three on (the same
// channel of the next pixel) than the next byte; the order of the channels
// from which is the brighter on average: red in most photographs.
std::optional<PixelReading> colourReading(QByteArrayView bytes)
{
    const ElementReading u8{DType::UInt8, ByteOrder::Little, bytes.size() % 3};
    const ElementSampler sampler(bytes, u8);
    const Likeness likeness(sampler, 3, kGuessTuning.places);
    const double channel = likeness.step(3), next = likeness.step(1);
    if (!(channel < kGuessTuning.channelsRepeat * next)) return std::nullopt;
    // Mean of the first and third channel over the sampled pixels.
    double first = 0, third = 0;
    std::vector<double> pixel(3);
    for (const int64_t start : sampleStarts(sampler.count() / 3 - 1, 1024, kGuessTuning.placeStep)) {
        sampler.decode(3 * start, 3, pixel.data());
        first += pixel[0], third += pixel[2];
    }
    return PixelReading{u8, 3, first >= third};
}

// Bytes of 8-bit data are most like the next byte; those of wider values
// are most like the same byte of the next value, 2, 4 or 8 on.
bool bytesStepLeast(QByteArrayView bytes)
{
    const ElementSampler sampler(bytes, {DType::UInt8, ByteOrder::Little, 0});
    const Likeness likeness(sampler, 8, kGuessTuning.places);
    const double next = likeness.step(1);
    return std::ranges::all_of(std::array{2, 4, 8}, [&](int lag) { return next < likeness.step(lag); });
}

} // namespace

PixelChoice choosePixelReading(QByteArrayView bytes)
{
    if (bytes.size() >= kFewestBytes) {
        const int64_t phase = bytes.size() % 2;
        const double aligned = equalPairs(bytes, phase), shifted = equalPairs(bytes, 1 - phase);
        if (aligned > kGuessTuning.equalBytePairs && (1 - shifted) > kGuessTuning.unequalPairsRatio * (1 - aligned))
            return {PixelReading{{DType::UInt16, ByteOrder::Little, phase}}, {}};
        if (std::optional<PixelReading> colour = colourReading(bytes)) return {colour, {}};
        if (bytesStepLeast(bytes)) {
            // 64-bit reals of values divided by 3 or 255 repeat their mantissa's
            // bytes, which then step least too; a picture's bytes read as such
            // reals are mostly absurd, so a plausible smooth reading tells them apart.
            if (const ElementChoice real = chooseElementReading(bytes, {DType::Float64}, {ByteOrder::Little, ByteOrder::Big});
                real.reading)
                return {PixelReading{*real.reading}, {}};
            return {PixelReading{{DType::UInt8, ByteOrder::Little, 0}}, {}};
        }
    }
    const ElementChoice plain = chooseElementReading(bytes, kGuessedTypes, {ByteOrder::Little, ByteOrder::Big});
    if (!plain.reading) return {std::nullopt, plain.reason};
    return {PixelReading{*plain.reading}, {}};
}

} // namespace torvex
