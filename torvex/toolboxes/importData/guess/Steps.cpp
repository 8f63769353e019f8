#include "Steps.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace torvex {

namespace {

constexpr int kPlaces = 192;
constexpr int64_t kPlaceStep = 4099;
// A seam stands this many spreads above the typical step; rows within a frame
// of a noisy gradient stay within a few.
constexpr double kStandsOut = 4;
// Noise-free data has steps all alike: a spread of a small share of the step
// itself, and of half a level for integers, keeps rounding from making every
// larger step stand out.
constexpr double kLeastSpread = 0.05;

} // namespace

Steps::Steps(const ElementSampler& sampler, int64_t lag, int64_t run) : _sampler(sampler), _lag(lag), _run(run)
{
    const int64_t lastStart = sampler.count() - _run;
    if (lastStart < lag) return;
    std::vector<double> steps;
    for (const int64_t start : sampleStarts(lastStart - lag, kPlaces, kPlaceStep))
        if (const double step = stepAt(start + lag); std::isfinite(step)) steps.push_back(step);
    if (steps.empty()) return;
    _typical = median(steps);
    for (double& step : steps) step = std::fabs(step - _typical);
    const double level = isFloating(sampler.reading().dtype) ? 1e-12 : 0.5;
    _spread = std::max({median(steps), kLeastSpread * _typical, level});
}

double Steps::stepAt(int64_t element) const
{
    std::vector<double> below(static_cast<size_t>(_run)), above(below.size());
    _sampler.decode(element, _run, below.data());
    _sampler.decode(element - _lag, _run, above.data());
    double sum = 0;
    int64_t pairs = 0;
    for (size_t i = 0; i < below.size(); ++i)
        if (const double d = std::fabs(below[i] - above[i]); std::isfinite(d)) sum += d, ++pairs;
    return pairs ? sum / static_cast<double>(pairs) : NAN;
}

bool Steps::standsOut(int64_t element) const
{
    if (_spread == 0 || element < _lag || element + _run > _sampler.count()) return false;
    return stepAt(element) > _typical + kStandsOut * _spread;
}

bool Steps::standAlone(int64_t first, int64_t period, const std::vector<int64_t>& ks, double share, int64_t skip) const
{
    std::vector<int64_t> places;
    for (const int64_t k : ks)
        if (!skip || k % skip) places.push_back(first + k * period);
    const auto needed = static_cast<size_t>(std::ceil(share * static_cast<double>(places.size())));
    size_t standing = 0;
    for (size_t i = 0; i < places.size() && standing < needed && standing + places.size() - i >= needed; ++i)
        standing += standsOut(places[i]) && !standsOut(places[i] - _lag) && !standsOut(places[i] + _lag);
    return !places.empty() && standing >= needed;
}

} // namespace torvex
