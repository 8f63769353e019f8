#include "Likeness.h"

#include "GuessTuning.h"

#include <algorithm>
#include <cmath>

namespace torvex {

Likeness::Likeness(const ElementSampler& sampler, int64_t maxLag, int places) : _sampler(sampler)
{
    const int64_t run = std::min(kGuessTuning.run, sampler.count());
    const int64_t last = sampler.count() - maxLag - run;
    if (last < 0) return;
    _starts = sampleStarts(last, places, kGuessTuning.placeStep);
    for (const int64_t start : _starts) {
        _runs.emplace_back(static_cast<size_t>(run));
        sampler.decode(start, run, _runs.back().data());
    }
}

double Likeness::step(int64_t lag) const
{
    double sum = 0;
    int64_t pairs = 0;
    std::vector<double> shifted;
    for (size_t k = 0; k < _starts.size(); ++k) {
        shifted.resize(_runs[k].size());
        _sampler.decode(_starts[k] + lag, static_cast<int64_t>(shifted.size()), shifted.data());
        for (size_t i = 0; i < shifted.size(); ++i)
            if (const double d = std::fabs(shifted[i] - _runs[k][i]); std::isfinite(d)) sum += d, ++pairs;
    }
    return pairs ? sum / static_cast<double>(pairs) : NAN;
}

double Likeness::seam(int64_t frame, int64_t row, int places) const
{
    const int64_t frames = _sampler.count() / frame, run = std::min(kGuessTuning.run, row);
    std::vector<double> rows(static_cast<size_t>(4 * run)); // two rows above the seam, two below
    std::vector<std::pair<double, double>> steps; // across the seam, and either side

    for (int k = 1; k <= places && k < frames; ++k) {
        const int64_t end = k * frames / std::min<int64_t>(places + 1, frames) * frame;
        // Along the row, away from its start, where a picture's border is often flat.
        const int64_t start = end - 2 * row + (row - run) / 2;
        if (start < 0 || start + 3 * row + run > _sampler.count()) continue;
        for (int r = 0; r < 4; ++r) _sampler.decode(start + r * row, run, rows.data() + r * run);
        double across = 0, aside = 0;
        for (int64_t i = 0; i < run; ++i) {
            const auto at = [&](int r) { return rows[static_cast<size_t>(r * run + i)]; };
            const double a = std::fabs(at(2) - at(1)), b = std::fabs(at(1) - at(0)) + std::fabs(at(3) - at(2));
            if (std::isfinite(a) && std::isfinite(b)) across += a, aside += b / 2;
        }
        steps.emplace_back(across, aside);
    }
    // Each frame end must be a seam, not a few strong ones among rows alike
    // (hence the lower quartile: every other one is a seam at half a frame);
    // in flat parts both steps are near 0, and their ratio means nothing.
    double floor = 0;
    for (const auto& [across, aside] : steps) floor += aside / static_cast<double>(steps.size());
    std::vector<double> ratios;
    for (const auto& [across, aside] : steps) ratios.push_back(across / std::max({aside, floor, 1e-12}));
    if (ratios.empty()) return 1.0;
    const auto quartile = ratios.begin() + static_cast<std::ptrdiff_t>(ratios.size() / 4);
    std::ranges::nth_element(ratios, quartile);
    return *quartile;
}

double Likeness::dip(int64_t lag, int64_t aside) const
{
    const double sides = (step(lag - aside) + step(lag + aside)) / 2;
    // Flat data is alike at every lag: no evidence either way.
    return sides > 0 ? step(lag) / sides : 1.0;
}

} // namespace torvex
