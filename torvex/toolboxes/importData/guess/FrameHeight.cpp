#include "FrameHeight.h"

#include "Steps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
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
// A side matches worse only by more than this share of the frame's
// distance, a millionth of its distance by level, and for integers a
// 64th of a level squared (the rounding of a stretch mean).
constexpr double kClearlyBetter = 1.05;
constexpr double kRoundingShare = 1e-6;
constexpr double kLevelSquared = 1.0 / 64;
// A lag of a few rows dips under a row length a little off; frames are taller.
constexpr int64_t kMinHeight = 16;
// Seams read per frame height; the share of them that must stand out, and of
// the further seams of a fraction of that height (rows within a frame rarely do).
constexpr int64_t kSeams = 12;
constexpr int64_t kSeamRun = 1024;
constexpr double kSeamsShown = 2.0 / 3;
constexpr double kFurtherSeamsShown = 1.0 / 3;
// How much worse than the best a row length's rows may line up and still be tried.
constexpr double kAlignedMargin = 0.05;
// Rows compared aside of a frame that changes from one to the next, as a share of its height.
constexpr int64_t kProfileAside = 8;

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

// How clearly a frame lag matches better than lags `aside` rows shorter and
// longer do (the weaker side), by level and by shape, as a sign
// test over `places` places: standard deviations by which more places match
// better than chance gives, or NAN if the file is too short. Signs, not
// sizes: a few places straddle a frame's edge and differ hugely, which would swamp a mean.
std::array<double, 2> dipStrengths(const ElementSampler& sampler, const FrameShape& shape, int64_t aside, int places)
{
    const int64_t width = shape.width, lag = width * shape.height;
    const int64_t run = std::min(kRun, width * 4) / kStretch * kStretch;
    const int64_t lastStart = sampler.count() - lag - aside * width - run;
    if (run == 0 || lastStart < 0) return {NAN, NAN};
    // Noise-free data repeat their rounding in patterns that a sign test
    // reads as a dip: differences within rounding are ties.
    const bool integer = !isFloating(sampler.reading().dtype);
    const auto margin = [&](double level) { return kRoundingShare * level + (integer ? kLevelSquared : 0); };
    int better[2][2] = {}; // [by shape][side]
    const std::vector<int64_t> starts = sampleStarts(lastStart, places, kPlaceStep);
    for (const int64_t start : starts) {
        const std::vector<double> base = stretchMeans(sampler, start, run);
        const std::array<double, 2> atFrame = distances(base, stretchMeans(sampler, start + lag, run));
        for (int side = 0; side < 2; ++side) {
            const int64_t neighbour = start + lag + (side ? aside : -aside) * width;
            const std::array<double, 2> off = distances(base, stretchMeans(sampler, neighbour, run));
            for (int shape = 0; shape < 2; ++shape)
                better[shape][side] += off[shape] > atFrame[shape] * kClearlyBetter + margin(off[0]);
        }
    }
    const auto n = static_cast<double>(starts.size());
    const auto strength = [&](const int* sides) { return (2.0 * std::min(sides[0], sides[1]) - n) / std::sqrt(n); };
    return {strength(better[0]), strength(better[1])};
}

// The frames found that are longer than the shortest by at most a `1 / asLong` share.
std::vector<FrameShape> aboutShortest(std::vector<FrameShape> found, int64_t asLong)
{
    if (found.empty()) return found;
    const auto area = [](const FrameShape& f) { return f.width * f.height; };
    const int64_t least = area(std::ranges::min(found, {}, area));
    std::erase_if(found, [&](const FrameShape& f) { return area(f) > least + least / asLong; });
    return found;
}

// The shortest of the frames found, then of those about as long the one with the shortest header.
std::optional<FrameShape> shortest(std::vector<FrameShape> found)
{
    found = aboutShortest(std::move(found), kAsLong);
    if (found.empty()) return std::nullopt;
    return std::ranges::min(found, {}, &FrameShape::header);
}

// The median distance by level of runs a frame apart: least at the true
// frame among frames a few rows longer or shorter.
double lagDistance(const ElementSampler& sampler, const FrameShape& shape)
{
    const int64_t lag = shape.width * shape.height;
    const int64_t run = std::min(kRun, shape.width * 4) / kStretch * kStretch;
    std::vector<double> levels;
    for (const int64_t start : sampleStarts(sampler.count() - lag - run, kPlaces, kPlaceStep))
        levels.push_back(distances(stretchMeans(sampler, start, run), stretchMeans(sampler, start + lag, run))[0]);
    return median(std::move(levels));
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

// Row steps by row length, made once per length.
class RowStepsByWidth {
public:
    explicit RowStepsByWidth(const ElementSampler& sampler) : _sampler(sampler) {}

    const Steps& operator()(int64_t width)
    {
        return _steps.try_emplace(width, _sampler, width, std::min(kSeamRun, width)).first->second;
    }

private:
    const ElementSampler& _sampler;
    std::map<int64_t, Steps> _steps;
};

// The tallest fraction of `frame` among `shapes` (the same row length and
// header, a height that divides its height) that `passes`, then fractions of that in
// turn: a frame that fits twice into the true one passes half of its test.
template <typename Passes>
FrameShape finest(FrameShape frame, const std::vector<FrameShape>& shapes, Passes passes)
{
    for (auto part = shapes.rbegin(); part != shapes.rend(); ++part)
        if (part->width == frame.width && part->header == frame.header && part->height < frame.height &&
            frame.height % part->height == 0 && passes(frame, *part))
            frame = *part; // shapes run by height within a row length: shorter ones follow
    return frame;
}

// The shortest frame whose seams mostly stand out, or a fraction of it whose
// further seams stand out far more often than rows within a frame do (seams
// where frames meet with little change hide some of them).
std::optional<FrameShape> seamedFrames(const ElementSampler& sampler, const std::vector<FrameShape>& shapes,
                                       RowStepsByWidth& rowSteps)
{
    const auto seamsStand = [&](const FrameShape& shape, double share, int64_t skip) {
        return rowSteps(shape.width)
            .standAlone(shape.header, shape.width * shape.height, seamsOf(shape, sampler.count()), share, skip);
    };
    std::vector<FrameShape> found;
    std::ranges::copy_if(shapes, std::back_inserter(found), [&](const FrameShape& f) { return seamsStand(f, kSeamsShown, 0); });
    const std::optional<FrameShape> frame = shortest(found);
    if (!frame) return std::nullopt;
    return finest(*frame, shapes, [&](const FrameShape& whole, const FrameShape& part) {
        return seamsStand(part, kFurtherSeamsShown, whole.height / part.height);
    });
}

// Frames whose lag matches better than lags `aside(height)` rows off do, by
// level where any do so, else by shape. Frames of one scene often differ in
// overall brightness, which hides the level's dip; their shape then tells,
// but a smooth scene's shape changes so little from row to row that a lag of
// whole rows dips by shape too under a row length a little off.
template <typename Aside>
std::vector<FrameShape> alikeFrames(const ElementSampler& sampler, const std::vector<FrameShape>& shapes, Aside aside,
                                    bool byLevelOnly = false)
{
    std::vector<FrameShape> byLevel, byShape;
    for (const FrameShape& shape : shapes) {
        const int64_t rows = aside(shape.height);
        if (std::ranges::max(dipStrengths(sampler, shape, rows, kScreenPlaces)) < kScreenPasses) continue;
        const std::array<double, 2> strengths = dipStrengths(sampler, shape, rows, kPlaces);
        if (strengths[0] >= kSignificant) byLevel.push_back(shape);
        if (strengths[1] >= kSignificant) byShape.push_back(shape);
    }
    return byLevel.empty() && !byLevelOnly ? byShape : byLevel;
}

} // namespace

std::optional<FrameShape> findFrames(const ElementSampler& sampler, const std::vector<int64_t>& widths,
                                     int64_t maxHeight, int64_t maxHeader)
{
    // Row lengths a little off from the true one give lags of nearly whole
    // rows that pass for frames; their rows line up clearly worse.
    RowStepsByWidth rowSteps(sampler);
    const auto typical = [&](int64_t width) { return rowSteps(width).typical(); };
    const double best = typical(std::ranges::min(widths, {}, typical));
    // Frames fill the file but for a short header, which leaves few heights per row length.
    std::vector<FrameShape> shapes;
    for (const int64_t width : widths) {
        if (typical(width) > best * (1 + kAlignedMargin)) continue;
        const int64_t rows = sampler.count() / width;
        for (int64_t height = kMinHeight; height <= std::min(maxHeight, rows / 2); ++height)
            if (const int64_t header = sampler.count() % (width * height); header <= maxHeader)
                shapes.push_back({width, height, header});
    }
    // Seams first: they need no likeness between frames, and rows alike
    // throughout a frame leave likeness with nothing to tell.
    if (const auto frame = seamedFrames(sampler, shapes, rowSteps)) return frame;
    // Then likeness of neighbouring rows. Frames of twice the height pass
    // more easily (their lag crosses more change), so a fraction of the frame
    // found is tried without the screen.
    if (const auto frame = shortest(alikeFrames(sampler, shapes, [](int64_t) { return 1; })))
        return finest(*frame, shapes, [&](const FrameShape&, const FrameShape& part) {
            return std::ranges::max(dipStrengths(sampler, part, 1, kPlaces)) >= kSignificant;
        });
    // Last, frames that change more from one to the next than rows do within
    // one (a scene that moves): they still repeat their profile down the
    // frame, which rows a good part of a frame aside do not.
    const auto partAside = [](int64_t height) { return std::max<int64_t>(2, height / kProfileAside); };
    // Profiles a few rows off pass as well; the lag of the true frame matches best.
    const std::vector<FrameShape> found = aboutShortest(alikeFrames(sampler, shapes, partAside, true), kProfileAside);
    if (found.empty()) return std::nullopt;
    std::vector<double> distance;
    for (const FrameShape& shape : found) distance.push_back(lagDistance(sampler, shape));
    return found[static_cast<size_t>(std::ranges::min_element(distance) - distance.begin())];
}

} // namespace torvex
