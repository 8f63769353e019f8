#pragma once

#include "ElementSampler.h"

#include <vector>

namespace torvex {

// How much values change over a lag (one value, or one row) at places spread
// over the file, and whether they change far more at a given place. Where one
// row or frame ends and the next begins, they do whenever a row's end
// differs from its start (any gradient along it) or a frame's bottom from its
// top, which tells a row length or frame height even where rows and frames
// share no structure.
class Steps {
public:
    // Steps of `run` values each between values `lag` apart.
    Steps(const ElementSampler& sampler, int64_t lag, int64_t run);

    // The median step: smallest at a row length where columns line up.
    double typical() const { return _typical; }

    // Whether the values from `element` on differ from those `lag` before
    // them far beyond what values that far apart usually do.
    bool standsOut(int64_t element) const;

    // Whether at least `share` of the places `first + k * period`, for the
    // given k but every `skip`th (none for 0), stand out alone: not the lags
    // before and after them, as they do where a run of values straddles a
    // seam nearby. It stops reading as soon as the count decides, since each
    // place far from the others costs a read of the file.
    bool standAlone(int64_t first, int64_t period, const std::vector<int64_t>& ks, double share, int64_t skip = 0) const;

private:
    double stepAt(int64_t element) const;

    const ElementSampler& _sampler;
    int64_t _lag;
    int64_t _run;
    double _typical = 0; // median step
    double _spread = 0;  // median absolute deviation of the steps, with a floor
};

} // namespace torvex
