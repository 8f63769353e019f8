#include "FrameHeight.h"

#include "Steps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

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
// Seams read per frame height; the share of them that must stand out, and of
// the further seams of a fraction of that height (rows within a frame rarely do).
constexpr int64_t kSeams = 48;
constexpr int64_t kSeamRun = 1024;
constexpr double kSeamsShown = 2.0 / 3;
constexpr double kFurtherSeamsShown = 1.0 / 3;

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

// The shortest of the frames found, then the one with the shortest header.
std::optional<FrameShape> shortest(std::vector<FrameShape> found)
{
    if (found.empty()) return std::nullopt;
    const auto area = [](const FrameShape& f) { return f.width * f.height; };
    const int64_t least = area(std::ranges::min(found, {}, area));
    std::erase_if(found, [&](const FrameShape& f) { return area(f) > least + least / kAsLong; });
    return std::ranges::min(found, {}, &FrameShape::header);
}

// Frames' seams to look at: up to `kSeams` of them, spread over the file.
std::vector<int64_t> seamsOf(const FrameShape& shape, int64_t count)
{
    const int64_t seams = (count - shape.header) / (shape.width * shape.height) - 1;
    std::vector<int64_t> ks;
    for (int64_t k = 1; k <= seams && static_cast<int64_t>(ks.size()) < kSeams; k += std::max<int64_t>(1, seams / kSeams))
        ks.push_back(k);
    return ks;
}

// The shortest frame whose seams mostly stand out, or a fraction of it whose
// further seams stand out far more often than rows within a frame do (seams
// where frames meet with little change hide some of them).
std::optional<FrameShape> seamedFrames(const ElementSampler& sampler, const std::vector<FrameShape>& shapes)
{
    const auto share = [&](const Steps& steps, const FrameShape& shape, int64_t skip) {
        return steps.shareStandingOut(shape.header, shape.width * shape.height, seamsOf(shape, sampler.count()), skip);
    };
    std::vector<FrameShape> found;
    std::map<int64_t, Steps> rowSteps; // by width
    for (const FrameShape& shape : shapes) {
        const Steps& steps =
            rowSteps.try_emplace(shape.width, sampler, shape.width, std::min(kSeamRun, shape.width)).first->second;
        if (share(steps, shape, 0) >= kSeamsShown) found.push_back(shape);
    }
    // A row length a little off has frames of nearly the same length, whose
    // seams pass too; its rows line up worse.
    if (found.empty()) return std::nullopt;
    const int64_t width =
        std::ranges::min(found, {}, [&](const FrameShape& f) { return rowSteps.at(f.width).typical(); }).width;
    std::erase_if(found, [&](const FrameShape& f) { return f.width != width; });
    const std::optional<FrameShape> frame = shortest(found);
    if (!frame) return std::nullopt;
    for (const FrameShape& part : shapes)
        if (part.width == frame->width && part.height < frame->height && frame->height % part.height == 0 &&
            share(rowSteps.at(part.width), part, frame->height / part.height) >= kFurtherSeamsShown)
            return part;
    return frame;
}

} // namespace

std::optional<FrameShape> findFrames(const ElementSampler& sampler, const std::vector<int64_t>& widths,
                                     int64_t maxHeight, int64_t maxHeader)
{
    // Frames fill the file but for a short header, which leaves few heights per row length.
    std::vector<FrameShape> shapes;
    for (const int64_t width : widths) {
        const int64_t rows = sampler.count() / width;
        for (int64_t height = kMinHeight; height <= std::min(maxHeight, rows / 2); ++height)
            if (const int64_t header = sampler.count() % (width * height); header <= maxHeader)
                shapes.push_back({width, height, header});
    }
    // Likeness first, by level first: it tells a row length a little off from
    // the true one. Frames of one scene often differ in overall brightness,
    // which hides the level's dip; their shape then tells, but a smooth
    // scene's shape changes so little from row to row that a lag of whole
    // rows dips by shape too under a row length a little off.
    std::vector<FrameShape> byLevel, byShape;
    for (const FrameShape& shape : shapes) {
        if (std::ranges::max(dipStrengths(sampler, shape.width, shape.height, kScreenPlaces)) < kScreenPasses) continue;
        const std::array<double, 2> strengths = dipStrengths(sampler, shape.width, shape.height, kPlaces);
        if (strengths[0] >= kSignificant) byLevel.push_back(shape);
        if (strengths[1] >= kSignificant) byShape.push_back(shape);
    }
    if (const std::optional<FrameShape> frame = shortest(byLevel.empty() ? byShape : byLevel)) return frame;
    // Then seams, which need no likeness between frames.
    return seamedFrames(sampler, shapes);
}

} // namespace torvex
