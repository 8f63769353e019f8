#include "FrameHeight.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace torvex {

namespace {

// Runs of values compared at places spread over the file; the values are
// averaged in short stretches along the row first, which leaves row-to-row
// and frame-to-frame changes but divides per-pixel noise, so that a dip of a
// few grey levels shows under noise of tens. The places of a group lie close
// together, so that the few pages a guess reads of a mapped file serve many.
constexpr int kPlaces = 768;
constexpr int64_t kRun = 2048;
constexpr int64_t kStretch = 64;
constexpr int64_t kPlaceStep = 4099;
// Most lags show no dip at all, which a few places tell.
constexpr int kScreenPlaces = 48;
constexpr double kScreenPasses = 1;
// How far past chance the weaker side must be to be a frame. Lags of two
// frames dip too, and lags a little off a frame with a row length a little
// off dip even more (their neighbours are off by a row and some values), so
// the shortest frame wins, not the deepest dip; of frames about as long, the
// one that leaves the shortest header.
constexpr double kSignificant = 5;
constexpr int64_t kAsLong = 100;
// A lag of a few rows dips under a row length a little off; frames are taller.
constexpr int64_t kMinHeight = 16;

// Means of the stretches of a run at `start`.
std::vector<double> stretchMeans(const ElementSampler& sampler, int64_t start, int64_t run)
{
    std::vector<double> values(static_cast<size_t>(run));
    sampler.decode(start, run, values.data());
    std::vector<double> means;
    for (int64_t s = 0; s + kStretch <= run; s += kStretch) {
        double sum = 0;
        for (int64_t i = s; i < s + kStretch; ++i) sum += values[static_cast<size_t>(i)];
        means.push_back(sum / kStretch);
    }
    return means;
}

// Mean squared difference of two runs' stretch means, as they are and about
// their mean difference: by level and by shape.
std::array<double, 2> distances(const std::vector<double>& a, const std::vector<double>& b)
{
    double sum = 0, squares = 0;
    for (size_t i = 0; i < a.size(); ++i) sum += a[i] - b[i], squares += (a[i] - b[i]) * (a[i] - b[i]);
    const auto n = static_cast<double>(a.size());
    return {squares / n, squares / n - (sum / n) * (sum / n)};
}

// How clearly a frame lag of `height` rows matches better than lags a row
// shorter and longer do (the weaker side), by level and by shape, as a sign
// test over `places` places: standard deviations by which more places match
// better than chance gives, or NAN if the file is too short. Signs, not
// sizes: a few places straddle a frame's edge and differ hugely, which would swamp a mean.
std::array<double, 2> dipStrengths(const ElementSampler& sampler, int64_t width, int64_t height, int places)
{
    const int64_t lag = width * height;
    const int64_t run = std::min(kRun, width * 4) / kStretch * kStretch;
    const int64_t lastStart = sampler.count() - lag - width - run;
    if (run == 0 || lastStart < 0) return {NAN, NAN};
    int better[2][2] = {}; // [by shape][side]
    const std::vector<int64_t> starts = sampleStarts(lastStart, places, kPlaceStep);
    for (const int64_t start : starts) {
        const std::vector<double> base = stretchMeans(sampler, start, run);
        const std::array<double, 2> atFrame = distances(base, stretchMeans(sampler, start + lag, run));
        for (int side = 0; side < 2; ++side) {
            const int64_t neighbour = start + lag + (side ? width : -width);
            const std::array<double, 2> aside = distances(base, stretchMeans(sampler, neighbour, run));
            for (int shape = 0; shape < 2; ++shape) better[shape][side] += aside[shape] > atFrame[shape];
        }
    }
    const auto n = static_cast<double>(starts.size());
    const auto strength = [&](const int* sides) { return (2.0 * std::min(sides[0], sides[1]) - n) / std::sqrt(n); };
    return {strength(better[0]), strength(better[1])};
}

} // namespace

std::optional<FrameShape> findFrames(const ElementSampler& sampler, const std::vector<int64_t>& widths,
                                     int64_t maxHeight, int64_t maxHeader)
{
    // By level first. Frames of one scene often differ in overall brightness,
    // which hides the level's dip; their shape then tells, but a smooth
    // scene's shape changes so little from row to row that a lag of whole
    // rows dips by shape too under a row length a little off.
    std::vector<FrameShape> byLevel, byShape;
    for (const int64_t width : widths) {
        const int64_t rows = sampler.count() / width;
        for (int64_t height = kMinHeight; height <= std::min(maxHeight, rows / 2); ++height) {
            const int64_t header = sampler.count() % (width * height);
            if (header > maxHeader) continue;
            if (std::ranges::max(dipStrengths(sampler, width, height, kScreenPlaces)) < kScreenPasses) continue;
            const std::array<double, 2> strengths = dipStrengths(sampler, width, height, kPlaces);
            if (strengths[0] >= kSignificant) byLevel.push_back({width, height, header});
            if (strengths[1] >= kSignificant) byShape.push_back({width, height, header});
        }
    }
    std::vector<FrameShape>& found = byLevel.empty() ? byShape : byLevel;
    if (found.empty()) return std::nullopt;
    const auto area = [](const FrameShape& f) { return f.width * f.height; };
    const int64_t shortest = area(std::ranges::min(found, {}, area));
    std::erase_if(found, [&](const FrameShape& f) { return area(f) > shortest + shortest / kAsLong; });
    return std::ranges::min(found, {}, &FrameShape::header);
}

} // namespace torvex
