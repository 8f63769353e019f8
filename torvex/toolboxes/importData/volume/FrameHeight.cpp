#include "FrameHeight.h"

#include <algorithm>
#include <cmath>

namespace torvex {

namespace {

// Runs of values compared at places spread over the file; the values are
// averaged in short stretches along the row first, which leaves row-to-row
// and frame-to-frame changes but divides per-pixel noise, so that a dip of a
// few grey levels shows under noise of tens.
constexpr int kPlaces = 768;
constexpr int64_t kRun = 2048;
constexpr int64_t kStretch = 64;
constexpr int64_t kPlaceStep = 4099;
// How far past chance the weaker side must be to be a frame. Lags of two
// frames dip too, and lags a little off a frame with a row length a little
// off dip even more (their neighbours are off by a row and some values), so
// the shortest frame wins, not the deepest dip.
constexpr double kSignificant = 5;
constexpr int64_t kAsLong = 100;
// A lag of a few rows dips under a row length a little off; frames are taller.
constexpr int64_t kMinHeight = 16;
// Most lags show no dip at all, which a few places tell.
constexpr int kScreenPlaces = 48;
constexpr double kScreenPasses = 1;

// Stretch means of a run at `start`.
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

double squaredDistance(const std::vector<double>& a, const std::vector<double>& b)
{
    double sum = 0;
    for (size_t i = 0; i < a.size(); ++i) sum += (a[i] - b[i]) * (a[i] - b[i]);
    return sum;
}

// How clearly a frame lag of `height` rows matches better than lags a row
// shorter and longer do (the weaker side), as a sign test over the places:
// standard deviations by which more places match better than chance gives,
// or NAN if the file is too short. Signs, not sizes: a few places straddle a
// frame's edge and differ hugely, which would swamp a mean.
double dipStrength(const ElementSampler& sampler, int64_t width, int64_t height, int places)
{
    const int64_t lag = width * height;
    const int64_t run = std::min(kRun, width * 4) / kStretch * kStretch;
    const int64_t lastStart = sampler.count() - lag - width - run;
    if (run == 0 || lastStart < 0) return NAN;
    int better[2] = {0, 0};
    const std::vector<int64_t> starts = sampleStarts(lastStart, places, kPlaceStep);
    for (const int64_t start : starts) {
        const std::vector<double> base = stretchMeans(sampler, start, run);
        const double atFrame = squaredDistance(base, stretchMeans(sampler, start + lag, run));
        for (int side = 0; side < 2; ++side) {
            const int64_t neighbour = start + lag + (side ? width : -width);
            better[side] += squaredDistance(base, stretchMeans(sampler, neighbour, run)) > atFrame;
        }
    }
    const auto n = static_cast<double>(starts.size());
    return (2.0 * std::min(better[0], better[1]) - n) / std::sqrt(n);
}

} // namespace

std::optional<FrameShape> findFrames(const ElementSampler& sampler, const std::vector<int64_t>& widths,
                                     int64_t maxHeight, int64_t maxHeader)
{
    struct Found {
        FrameShape shape;
        int64_t area() const { return shape.width * shape.height; }
    };
    std::vector<Found> found;
    for (const int64_t width : widths) {
        const int64_t rows = sampler.count() / width;
        for (int64_t height = kMinHeight; height <= std::min(maxHeight, rows / 2); ++height) {
            const int64_t header = sampler.count() % (width * height);
            if (header > maxHeader) continue;
            if (dipStrength(sampler, width, height, kScreenPlaces) < kScreenPasses) continue;
            if (dipStrength(sampler, width, height, kPlaces) >= kSignificant)
                found.push_back({{width, height, header}});
        }
    }
    if (found.empty()) return std::nullopt;
    // Of the shortest frame, and of frames about as long, which a row length
    // a value off with a row more or less makes and which dip as well: the
    // one that leaves the shortest header.
    const int64_t shortest = std::ranges::min(found, {}, &Found::area).area();
    std::erase_if(found, [&](const Found& f) { return f.area() > shortest + shortest / kAsLong; });
    return std::ranges::min(found, {}, [](const Found& f) { return f.shape.header; }).shape;
}

} // namespace torvex
