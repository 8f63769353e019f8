#pragma once

#include "ElementSampler.h"

#include <vector>

namespace torvex {

// How alike the values of a file are some lag apart, measured on runs read at
// a few dozen places: the evidence of rows and frames. Values a row (or
// frame) apart are alike in every picture, but so are values a few columns
// aside of them: only a row's lag is clearly more alike than its neighbours'.
class Likeness {
public:
    // `places` places, chosen so that lags up to `maxLag` stay within the data.
    Likeness(const ElementSampler& sampler, int64_t maxLag, int places);

    // Mean absolute difference of values `lag` apart.
    double step(int64_t lag) const;
    // step(lag) over the mean step `aside` before and after it: well below 1
    // where `lag` is a row or a frame, near 1 for any other.
    double dip(int64_t lag, int64_t aside) const;

    // How much more values change from the last row of a frame to the first
    // of the next than between the rows either side of that seam (rows of
    // `row` values, frames of `frame` values), at up to `places` frame ends:
    // near 1 inside one picture, well above it between two.
    double seam(int64_t frame, int64_t row, int places) const;

private:
    const ElementSampler& _sampler;
    std::vector<int64_t> _starts;
    std::vector<std::vector<double>> _runs; // the values at each start
};

} // namespace torvex
