#include "Histogram.h"

#include <algorithm>
#include <cmath>

namespace torvex {

std::vector<int64_t> sampledHistogram(const NdArray& frame, ValueRange range, int bins, int64_t samples)
{
    std::vector<int64_t> counts(static_cast<size_t>(std::max(bins, 1)), 0);
    if (frame.ndim() < 2 || frame.size() == 0) return counts;
    // One step for rows and columns alike keeps the grid square.
    const auto step = static_cast<int64_t>(
        std::max(1.0, std::floor(std::sqrt(static_cast<double>(frame.size()) / static_cast<double>(samples)))));
    const NdArray grid = frame.slice(0, 0, frame.extent(0), step).slice(1, 0, frame.extent(1), step);
    const double perValue = range.lo < range.hi ? static_cast<double>(counts.size()) / (range.hi - range.lo) : 0;
    const auto last = static_cast<int64_t>(counts.size()) - 1;
    visitDType(frame.dtype(), [&](auto tag) {
        using T = decltype(tag);
        const ByteOrder order = frame.byteOrder();
        grid.forEach([&](const std::byte* element) {
            const auto v = static_cast<double>(loadElement<T>(element, order));
            if (!(v >= range.lo && v <= range.hi)) return; // NaN fails too
            ++counts[static_cast<size_t>(std::min(last, static_cast<int64_t>((v - range.lo) * perValue)))];
        });
    });
    return counts;
}

} // namespace torvex
