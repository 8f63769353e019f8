#include "ElementChoice.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace torvex {

namespace {

constexpr int kBlocks = 64;
constexpr int64_t kBlockLength = 512;
constexpr int64_t kFewestElements = 64;
// Above this, neighbours differ about as much as any two values: noise.
constexpr double kNoiseRoughness = 0.6;
// Readings this much rougher than the smoothest still count as smooth.
constexpr double kNearSmoothest = 1.5;
constexpr double kTie = 1.02;
// Values 2, 4 or 8 apart closer than neighbours this often: the values are
// parts of a wider element (the high and low halves of one number).
// Counted, not summed: where such halves change sign, a few huge steps would
// swamp a sum; ties left out: halves full of sign bits repeat.
constexpr double kAlternating = 0.75;

struct Score {
    ElementReading reading;
    double step = NAN;      // mean difference of neighbours
    double roughness = NAN; // step over the mean difference of unrelated values
    bool alternating = false;
    double spread = 0; // largest value less smallest
    bool plausible = true;
};

bool isSigned(DType dtype) { return dtype == DType::Int16 || dtype == DType::Int32; }

// Floats read from bytes of another kind come out tiny or huge; infinities and
// NaNs are rare there, but common in real data as masks (no measurement).
bool plausibleFloat(double v) { return v == 0 || !std::isfinite(v) || (std::fabs(v) > 1e-30 && std::fabs(v) < 1e30); }

Score score(const ElementSampler& sampler)
{
    Score s{sampler.reading()};
    const int64_t length = std::min(kBlockLength, sampler.count());
    std::vector<std::vector<double>> blocks(kBlocks, std::vector<double>(static_cast<size_t>(length)));
    const std::vector<int64_t> starts = sampleStarts(sampler.count() - length, kBlocks, kBlockLength * 8);
    for (int k = 0; k < kBlocks; ++k) sampler.decode(starts[k], length, blocks[k].data());

    double neighbours = 0, unrelated = 0;
    int64_t neighbourPairs = 0, unrelatedPairs = 0, implausible = 0;
    std::array<int64_t, 3> closerApart{}, unequalApart{}; // 2, 4 and 8 apart
    for (int k = 0; k < kBlocks; ++k) {
        // A block of another group, backwards, so that equal frames at equal places do not pair up.
        const std::vector<double>& other = blocks[(k + kBlocks / 2 + 3) % kBlocks];
        const std::vector<double>& block = blocks[k];
        for (int64_t i = 0; i < length; ++i) {
            if (isFloating(s.reading.dtype) && !plausibleFloat(block[i])) ++implausible;
            const double far = std::fabs(block[i] - other[length - 1 - i]);
            if (std::isfinite(far)) unrelated += far, ++unrelatedPairs;
            if (i + 1 == length) continue;
            const double near = std::fabs(block[i + 1] - block[i]);
            if (std::isfinite(near)) neighbours += near, ++neighbourPairs;
            for (size_t p = 0; p < closerApart.size(); ++p) {
                const int64_t apart = int64_t{2} << p;
                if (i + apart >= length) continue;
                const double far = std::fabs(block[i + apart] - block[i]);
                closerApart[p] += far < near, unequalApart[p] += far != near;
            }
        }
    }
    s.plausible = implausible * 100 <= kBlocks * length; // a masked value here and there is fine
    double low = INFINITY, high = -INFINITY;
    for (const std::vector<double>& block : blocks)
        for (const double v : block)
            if (std::isfinite(v)) low = std::min(low, v), high = std::max(high, v);
    s.spread = high - low;
    s.step = neighbourPairs ? neighbours / static_cast<double>(neighbourPairs) : NAN;
    for (size_t p = 0; p < closerApart.size() && (s.reading.size() << (p + 1)) <= 8; ++p)
        s.alternating = s.alternating || static_cast<double>(closerApart[p]) > kAlternating * static_cast<double>(unequalApart[p]);
    if (unrelated > 0) s.roughness = s.step / (unrelated / static_cast<double>(unrelatedPairs));
    return s;
}

// The element size is the smallest that reads about as smooth as the
// smoothest reading (a 16-bit image read as 32-bit pairs is smooth too) and
// does not alternate (small 32-bit numbers read as 16-bit halves look smooth
// where a half full of sign bits is compared with halves far from it).
// Within it, a float where floats read sensibly and smoothly: integers read
// from floats that cross zero wrap, which hides their roughness. Then, as
// these read the same bytes on one scale, the smallest steps, so that values
// do not wrap at a sign or a byte boundary.
ElementReading plainest(std::vector<Score> scores)
{
    if (!std::ranges::all_of(scores, &Score::alternating)) std::erase_if(scores, &Score::alternating);
    const double smoothest = std::ranges::min_element(scores, {}, &Score::roughness)->roughness;
    const auto size = [](const Score& s) { return s.reading.size(); };
    int smallest = 8;
    for (const Score& s : scores)
        if (s.roughness <= smoothest * kNearSmoothest) smallest = std::min(smallest, size(s));
    // Smooth enough to be data, a near reading of that size among them.
    const double smooth = std::max(kNoiseRoughness, smoothest * kNearSmoothest);
    std::erase_if(scores, [&](const Score& s) { return size(s) != smallest || s.roughness > smooth; });
    if (std::ranges::any_of(scores, [](const Score& s) { return isFloating(s.reading.dtype); }))
        std::erase_if(scores, [](const Score& s) { return !isFloating(s.reading.dtype); });
    const double best = std::ranges::min_element(scores, {}, &Score::step)->step;
    std::erase_if(scores, [&](const Score& s) { return s.step > best * kTie; });
    // Negative numbers read unsigned sit at the top of the range, far from the
    // rest: signed where that reads the values much closer together (whole
    // frames of negatives cross zero too seldom to show in the steps), else unsigned.
    const double least = std::ranges::min_element(scores, {}, &Score::spread)->spread;
    return std::ranges::min_element(scores, {}, [&](const Score& s) {
               return std::pair(s.spread > 2 * least, isSigned(s.reading.dtype));
           })->reading;
}

} // namespace

ElementChoice chooseElementReading(QByteArrayView bytes, const std::vector<DType>& dtypes,
                                   const std::vector<ByteOrder>& orders)
{
    std::vector<Score> scores;
    bool tooFew = true;
    for (DType dtype : dtypes)
        for (ByteOrder order : itemSize(dtype) == 1 ? std::vector{ByteOrder::Little} : orders) {
            const ElementSampler sampler(bytes, ElementReading::endingWithFile(dtype, order, bytes.size()));
            if (sampler.count() < kFewestElements) continue;
            tooFew = false;
            if (Score s = score(sampler); s.plausible && std::isfinite(s.roughness)) scores.push_back(s);
        }
    if (tooFew) return {std::nullopt, "the file is too small to show a pattern"};
    if (scores.empty()) return {std::nullopt, "its values do not vary under any image type"};
    const double smoothest = std::ranges::min_element(scores, {}, &Score::roughness)->roughness;
    if (smoothest > kNoiseRoughness) return {std::nullopt, "its bytes look like noise under every image type"};
    return {plainest(std::move(scores)), {}};
}

} // namespace torvex
