#include "ElementSampler.h"

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

} // namespace torvex
