#include "RepeatLength.h"

#include "Steps.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>

namespace torvex {

namespace {

// Rows' seams looked at: runs of consecutive rows at a few places. The share
// of them that must stand out, and of the further seams of a fraction of that
// length (values within a row rarely do).
constexpr int64_t kSeamPlaces = 8;
constexpr int64_t kSeamRows = 6;
constexpr int64_t kLeastSeamedWidth = 8;
constexpr double kSeamsShown = 2.0 / 3;
constexpr double kFurtherSeamsShown = 1.0 / 3;
// Valleys shorter than this are as often a texture's period as a row; seams
// of twice a valley's length are as often a valley at half a row.
constexpr int64_t kLeastValleyUnderSeams = 64;
constexpr int64_t kFewestRowsUnderSeams = 3;

// Values read to find the valley, then to place the length in it.
constexpr int kStarts = 64;
constexpr int64_t kRun = 16;
constexpr int kFitStarts = 64;
constexpr int64_t kFitRun = 256;
constexpr int64_t kStartStep = 4099; // apart in rows and columns alike
// Values a row apart differ much less than values at most strides do; the
// valley ends only on a clear rise, so that noise on its sides does not split it.
constexpr double kBelowMedian = 0.7;
constexpr double kBelowPeak = 0.5;
constexpr double kValleyEnd = 0.85;
// Of the valley's width, the share either side of its bottom that may hold the row length.
constexpr int64_t kAsideShare = 24;
constexpr int64_t kMostAside = 16;

// Mean absolute (or, for `squared`, squared) difference of values `stride` apart, for the given strides.
std::vector<double> strideDifferences(const ElementSampler& sampler, const std::vector<int64_t>& strides, int starts,
                                      int64_t run, bool squared)
{
    std::vector<double> sums(strides.size(), 0.0);
    std::vector<int64_t> pairs(strides.size(), 0);
    std::vector<double> base(static_cast<size_t>(run)), shifted(base.size());
    for (const int64_t start : sampleStarts(sampler.count() - strides.back() - run, starts, kStartStep)) {
        sampler.decode(start, run, base.data());
        for (size_t i = 0; i < strides.size(); ++i) {
            sampler.decode(start + strides[i], run, shifted.data());
            for (int64_t r = 0; r < run; ++r)
                if (const double d = shifted[r] - base[r]; std::isfinite(d))
                    sums[i] += squared ? d * d : std::fabs(d), ++pairs[i];
        }
    }
    for (size_t i = 0; i < sums.size(); ++i) sums[i] = pairs[i] ? sums[i] / static_cast<double>(pairs[i]) : NAN;
    return sums;
}

// The strides of the first valley that closes before `maxStride`.
std::vector<int64_t> firstValley(const ElementSampler& sampler, int64_t maxStride)
{
    std::vector<int64_t> strides;
    for (int64_t s = 2; s <= maxStride; ++s) strides.push_back(s);
    const std::vector<double> d = strideDifferences(sampler, strides, kStarts, kRun, false);
    std::vector<double> finite;
    std::ranges::copy_if(d, std::back_inserter(finite), [](double v) { return std::isfinite(v); });
    if (finite.empty()) return {};
    const double middle = median(std::move(finite));

    double peak = 0;
    for (size_t i = 0; i < d.size(); ++i) {
        if (!(d[i] <= kBelowMedian * middle && d[i] <= kBelowPeak * peak)) {
            if (std::isfinite(d[i])) peak = std::max(peak, d[i]);
            continue;
        }
        std::vector<int64_t> valley;
        for (; i < d.size() && d[i] <= kValleyEnd * middle; ++i) valley.push_back(strides[i]);
        if (i < d.size()) return valley; // closed, so its lowest point shows
    }
    return {};
}

// Where the parabola through (x, y) bottoms out, if it opens upwards.
std::optional<double> parabolaBottom(const std::vector<double>& x, const std::vector<double>& y)
{
    double s[5] = {}, t[3] = {}; // sums of x^k and of y x^k
    for (size_t i = 0; i < x.size(); ++i)
        for (int k = 0; k < 5; ++k) {
            s[k] += std::pow(x[i], k);
            if (k < 3) t[k] += y[i] * std::pow(x[i], k);
        }
    // The normal equations [s0 s1 s2; s1 s2 s3; s2 s3 s4] (c, b, a) = t by Cramer's rule.
    const auto det = [](double a, double b, double c, double d, double e, double f, double g, double h, double i) {
        return a * (e * i - f * h) - b * (d * i - f * g) + c * (d * h - e * g);
    };
    const double m = det(s[0], s[1], s[2], s[1], s[2], s[3], s[2], s[3], s[4]);
    const double b = det(s[0], t[0], s[2], s[1], t[1], s[3], s[2], t[2], s[4]) / m;
    const double a = det(s[0], s[1], t[0], s[1], s[2], t[1], s[2], s[3], t[2]) / m;
    if (!std::isfinite(a) || !std::isfinite(b) || a <= 0) return std::nullopt;
    return -b / (2 * a);
}

// Rows whose seams are looked at: runs of consecutive rows at a few places.
std::vector<int64_t> seamRows(int64_t count, int64_t width)
{
    std::vector<int64_t> rows;
    for (int64_t place = 0; place < kSeamPlaces; ++place)
        for (int64_t row = 0; row < kSeamRows; ++row) rows.push_back(count / width * (2 * place + 1) / (2 * kSeamPlaces) + row);
    return rows;
}

// The shortest row length at which a row's first value mostly stands out from
// the last of the row before (rows end with the file), or a fraction of it
// whose further seams stand out far more often than values within a row do.
std::optional<int64_t> seamedRowLength(const ElementSampler& sampler, int64_t maxWidth)
{
    const Steps steps(sampler, 1, 1);
    const int64_t count = sampler.count();
    const auto seamsStand = [&](int64_t width, int64_t first, double share, int64_t skip) {
        return steps.standAlone(first, width, seamRows(count, width), share, skip);
    };
    for (int64_t width = kLeastSeamedWidth; width <= maxWidth; ++width) {
        const int64_t first = count % width;
        if (!seamsStand(width, first, kSeamsShown, 0)) continue;
        // The longest fraction first, then fractions of it in turn: a length
        // that fits twice into the true one has half its further seams true.
        for (int64_t parts = 2; parts <= width / kLeastSeamedWidth; ++parts)
            if (width % parts == 0 && seamsStand(width / parts, first, kFurtherSeamsShown, parts)) width /= parts, parts = 1;
        return width;
    }
    return std::nullopt;
}

// The row length at the bottom of the first valley of differences, with the lengths either side of it.
std::vector<int64_t> valleyLengths(const ElementSampler& sampler, int64_t maxStride)
{
    const std::vector<int64_t> valley = firstValley(sampler, maxStride);
    if (valley.empty()) return {};
    // Squared differences add up noise and structure, so the valley is a
    // parabola near its bottom; many more values than finding it took, since
    // its bottom moves with the noise of its sides.
    const std::vector<double> msd = strideDifferences(sampler, valley, kFitStarts, kFitRun, true);
    const auto [low, high] = std::ranges::minmax(msd);
    const int64_t lowest = valley[static_cast<size_t>(std::ranges::min_element(msd) - msd.begin())];
    std::vector<double> x, y; // the valley's lower part, relative to its lowest point
    for (size_t i = 0; i < valley.size(); ++i)
        if (msd[i] <= low + (high - low) / 3)
            x.push_back(static_cast<double>(valley[i] - lowest)), y.push_back(msd[i] / std::max(high, 1.0));
    int64_t bottom = lowest;
    if (const std::optional<double> b = parabolaBottom(x, y))
        // A flat fit may bottom out anywhere: within the valley, or its lowest point.
        if (const double at = static_cast<double>(lowest) + *b; at >= static_cast<double>(valley.front()) &&
                                                                   at <= static_cast<double>(valley.back()))
            bottom = std::llround(at);
    // Slopes across the image tilt the parabola, more so the wider the valley.
    const int64_t aside = std::max<int64_t>(
        1, std::min({static_cast<int64_t>(valley.size()) / kAsideShare, bottom / kAsideShare, kMostAside}));
    std::vector<int64_t> lengths{bottom};
    for (int64_t step = 1; step <= aside; ++step)
        for (const int64_t length : {bottom - step, bottom + step})
            if (length >= 2) lengths.push_back(length);
    return lengths;
}

} // namespace

std::vector<int64_t> rowLengths(const ElementSampler& sampler, int64_t maxWidth)
{
    const int64_t maxStride = std::min(maxWidth, (sampler.count() - kFitRun) / 2);
    if (maxStride < 3) return {};
    const std::optional<int64_t> seamed = seamedRowLength(sampler, maxStride);
    const std::vector<int64_t> valley = valleyLengths(sampler, maxStride);
    // Seams where a row's end differs from its start; the valley where rows
    // are alike, among them scenes symmetric about their middle, whose seams
    // show only here and there and may pass at a few rows' length.
    const bool fewRows = seamed && std::ranges::any_of(valley, [&](int64_t length) {
        return length >= kLeastValleyUnderSeams && *seamed % length == 0 && *seamed / length >= kFewestRowsUnderSeams;
    });
    return seamed && !fewRows ? std::vector{*seamed} : valley;
}

} // namespace torvex
