#include "RepeatLength.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace torvex {

namespace {

constexpr int kStarts = 64;
constexpr int64_t kRowRun = 16;
constexpr int64_t kFrameRun = 64;
constexpr int64_t kStartRows = 64;
constexpr int64_t kRowStartStep = 4099; // apart in rows and columns alike
// Values a repeat apart differ much less than values at most strides do.
constexpr double kBelowMedian = 0.7;
constexpr double kBelowPeak = 0.5;
// Values read to place a row length exactly.
constexpr int kFitStarts = 64;
constexpr int64_t kFitRun = 256;

double mean(const std::vector<double>& values)
{
    double sum = 0;
    for (double v : values) sum += v;
    return sum / static_cast<double>(values.size());
}

// Mean absolute difference of values `stride` units apart, for strides 1 to maxStride (index 0 unused).
std::vector<double> strideDifferences(const ElementSampler& sampler, int64_t unit, int64_t maxStride)
{
    // Rows of rows are compared by their shape, not their level: frames of
    // one scene often differ in overall brightness.
    const bool byShape = unit > 1;
    const int64_t run = byShape ? std::min(kFrameRun, unit) : kRowRun;
    const int64_t lastStart = sampler.count() - maxStride * unit - run;
    // Rows of rows start within a few rows in the middle of the file, so that
    // all strides read one stretch of it; runs along rows start in a few places all over it.
    std::vector<int64_t> starts;
    if (byShape) {
        const int64_t span = std::min(lastStart, kStartRows * unit);
        for (int i = 1; i <= kStarts; ++i) starts.push_back((lastStart - span) / 2 + span * i / kStarts);
    } else {
        starts = sampleStarts(lastStart, kStarts, kRowStartStep);
    }
    std::vector<double> sums(static_cast<size_t>(maxStride + 1), 0.0);
    std::vector<int64_t> pairs(sums.size(), 0);
    std::vector<double> base(static_cast<size_t>(run)), shifted(base.size());
    for (const int64_t start : starts) {
        sampler.decode(start, run, base.data());
        const double baseLevel = byShape ? mean(base) : 0;
        for (int64_t stride = 1; stride <= maxStride; ++stride) {
            sampler.decode(start + stride * unit, run, shifted.data());
            const double shift = byShape ? mean(shifted) - baseLevel : 0;
            for (int64_t r = 0; r < run; ++r)
                if (const double d = std::fabs(shifted[r] - base[r] - shift); std::isfinite(d))
                    sums[stride] += d, ++pairs[stride];
        }
    }
    for (size_t s = 1; s < sums.size(); ++s) sums[s] = pairs[s] ? sums[s] / static_cast<double>(pairs[s]) : NAN;
    return sums;
}

} // namespace

std::vector<Repeat> repeats(const ElementSampler& sampler, int64_t unit, int64_t maxStride)
{
    maxStride = std::min(maxStride, (sampler.count() - std::max(kFrameRun, unit)) / unit);
    if (maxStride < 3) return {};
    const std::vector<double> d = strideDifferences(sampler, unit, maxStride);

    std::vector<double> sorted;
    for (size_t s = 2; s < d.size(); ++s)
        if (std::isfinite(d[s])) sorted.push_back(d[s]);
    if (sorted.empty()) return {};
    std::ranges::nth_element(sorted, sorted.begin() + sorted.size() / 2);
    const double median = sorted[sorted.size() / 2];

    // Near strides differ little too (neighbours are alike), so a repeat is
    // in a valley that falls well below the peak before it.
    std::vector<Repeat> found;
    int valleys = 0;
    double peak = 0;
    const auto inValley = [&](int64_t s) { return d[s] <= kBelowMedian * median && d[s] <= kBelowPeak * peak; };
    for (int64_t s = 2; s <= maxStride; ++s) {
        if (!inValley(s)) {
            peak = std::max(peak, d[s]);
            continue;
        }
        std::vector<Repeat> valley;
        for (; s <= maxStride && inValley(s); ++s) valley.push_back({s, d[s] / median, valleys});
        if (s <= maxStride) { // closed, so its lowest point shows
            found.insert(found.end(), valley.begin(), valley.end());
            ++valleys;
        }
        peak = 0; // the next valley needs a rise of its own
        --s;
    }
    return found;
}

std::vector<int64_t> rowLengths(const ElementSampler& sampler, const std::vector<Repeat>& found)
{
    std::vector<int64_t> valley;
    for (const Repeat& r : found)
        if (r.valley == 0) valley.push_back(r.stride);
    if (valley.empty()) return {};
    // Many more values than finding the valley takes: the parabola's bottom
    // moves with the noise of its sides.
    const int64_t lastStart = sampler.count() - valley.back() - kFitRun;
    if (lastStart < 0) return {valley.front()};
    std::vector<double> msd(valley.size(), 0.0), base(kFitRun), shifted(kFitRun);
    for (const int64_t start : sampleStarts(lastStart, kFitStarts, kRowStartStep)) {
        sampler.decode(start, kFitRun, base.data());
        for (size_t i = 0; i < valley.size(); ++i) {
            sampler.decode(start + valley[i], kFitRun, shifted.data());
            for (int64_t r = 0; r < kFitRun; ++r)
                if (const double d = shifted[r] - base[r]; std::isfinite(d)) msd[i] += d * d;
        }
    }
    // Least squares over the valley's lower part, where it is still a parabola.
    const auto [low, high] = std::ranges::minmax(msd);
    const int64_t lowest = valley[static_cast<size_t>(std::ranges::min_element(msd) - msd.begin())];
    double s[5] = {}, t[3] = {}; // sums of x^k and of y x^k, x relative to the lowest
    for (size_t i = 0; i < valley.size(); ++i) {
        if (msd[i] > low + (high - low) / 3) continue;
        const auto x = static_cast<double>(valley[i] - lowest);
        const double y = msd[i] / std::max(high, 1.0);
        for (int k = 0; k < 5; ++k) s[k] += std::pow(x, k);
        for (int k = 0; k < 3; ++k) t[k] += y * std::pow(x, k);
    }
    // Solve [s0 s1 s2; s1 s2 s3; s2 s3 s4] (c, b, a) = t by Cramer's rule.
    const auto det = [](double a, double b, double c, double d, double e, double f, double g, double h, double i) {
        return a * (e * i - f * h) - b * (d * i - f * g) + c * (d * h - e * g);
    };
    const double m = det(s[0], s[1], s[2], s[1], s[2], s[3], s[2], s[3], s[4]);
    const double b = det(s[0], t[0], s[2], s[1], t[1], s[3], s[2], t[2], s[4]) / m;
    const double a = det(s[0], s[1], t[0], s[1], s[2], t[1], s[2], s[3], t[2]) / m;
    int64_t bottom = lowest;
    if (std::isfinite(a) && a > 0 && std::fabs(b / (2 * a)) < static_cast<double>(valley.size()))
        bottom = lowest + std::llround(-b / (2 * a));
    std::vector<int64_t> lengths{bottom};
    for (const int64_t aside : {bottom - 1, bottom + 1})
        if (aside >= 2) lengths.push_back(aside);
    return lengths;
}

} // namespace torvex
