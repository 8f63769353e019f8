#include "ElementSampler.h"

#include <algorithm>
#include <cmath>

namespace torvex {

ElementSampler::ElementSampler(QByteArrayView bytes, ElementReading reading)
    : _bytes(bytes), _reading(reading),
      _count(bytes.size() > reading.phase ? (bytes.size() - reading.phase) / reading.size() : 0)
{
}

void ElementSampler::decode(int64_t first, int64_t n, double* out) const
{
    const auto* at = reinterpret_cast<const std::byte*>(_bytes.data()) + _reading.phase + first * _reading.size();
    visitDType(_reading.dtype, [&](auto zero) {
        using T = decltype(zero);
        for (int64_t i = 0; i < n; ++i, at += sizeof(T))
            out[i] = static_cast<double>(loadElement<T>(at, _reading.order));
    });
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

std::vector<int64_t> sampleStarts(int64_t lastStart, int n, int64_t maxStep)
{
    constexpr int kGroups = 8;
    constexpr double kGolden = 0.6180339887498949;
    const int64_t step = std::min(maxStep, lastStart / n);
    std::vector<int64_t> starts;
    for (int i = 0; i < n; ++i) {
        const int group = i % kGroups, member = i / kGroups;
        const double place = (group + std::fmod(kGolden * (group + 1), 1.0)) / kGroups;
        const auto start = static_cast<int64_t>(static_cast<double>(lastStart) * place) + member * step;
        starts.push_back(std::clamp(start, int64_t{0}, lastStart));
    }
    return starts;
}

} // namespace torvex
