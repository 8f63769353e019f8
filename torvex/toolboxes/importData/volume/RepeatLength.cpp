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
// Repeats this close to the closest are as good.
constexpr double kAsClose = 1.2;

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

std::vector<int64_t> closestRepeats(std::vector<Repeat> found, bool firstValleyOnly)
{
    if (firstValleyOnly) std::erase_if(found, [](const Repeat& r) { return r.valley > 0; });
    std::ranges::stable_sort(found, {}, &Repeat::difference);
    std::vector<int64_t> strides;
    for (const Repeat& r : found)
        if (r.difference <= kAsClose * found.front().difference) strides.push_back(r.stride);
    return strides;
}

} // namespace torvex
