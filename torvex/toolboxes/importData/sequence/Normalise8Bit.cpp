#include "Normalise8Bit.h"

#include <cmath>
#include <type_traits>

namespace torvex {

namespace {

// Minimum and maximum that turn NaN as soon as one element is NaN.
template <class Compute, class T> std::pair<Compute, Compute> minMaxOf(const NdArray& a)
{
    Compute lo = static_cast<Compute>(loadElement<T>(a.data(), a.byteOrder())), hi = lo;
    a.forEach([&](const std::byte* p) {
        const auto v = static_cast<Compute>(loadElement<T>(p, a.byteOrder()));
        if (std::isnan(v)) lo = hi = v;
        else if (!std::isnan(lo)) {
            if (v < lo) lo = v;
            if (v > hi) hi = v;
        }
    });
    return {lo, hi};
}

// (value - min) / (max - min) * 255 in Compute, truncated to uint8.
template <class Compute, class T> NdArray stretch(const NdArray& a)
{
    const auto extremes = minMaxOf<Compute, T>(a);
    const Compute lo = extremes.first, hi = extremes.second; // not a binding: clang 14 cannot capture those
    if (!(hi > lo)) return NdArray::zeros(a.shape(), DType::UInt8);
    const Compute range = hi - lo;
    const Compute scale = 255;
    NdArray out = NdArray::empty(a.shape(), DType::UInt8);
    auto* dst = reinterpret_cast<uint8_t*>(out.mutableData());
    a.forEach([&](const std::byte* p) {
        const Compute x = (static_cast<Compute>(loadElement<T>(p, a.byteOrder())) - lo) / range * scale;
        // Only an infinite range gives NaN here; it casts to 0 as in C on x86.
        *dst++ = x >= 0 ? static_cast<uint8_t>(x) : 0;
    });
    return out;
}

} // namespace

NdArray normaliseToUInt8(const DecodedImage& image)
{
    const NdArray& a = image.pixels;
    if (a.size() == 0) return NdArray::zeros(a.shape(), DType::UInt8);
    if (image.bilevel) return stretch<double, uint8_t>(a);
    return visitDType(a.dtype(), [&](auto tag) -> NdArray {
        using T = decltype(tag);
        if constexpr (std::is_same_v<T, uint8_t>) return a;
        else if constexpr (std::is_same_v<T, uint16_t>) return stretch<float, T>(a);
        else if constexpr (std::is_same_v<T, float> || std::is_same_v<T, double>) return stretch<T, T>(a);
        else return stretch<double, T>(a);
    });
}

} // namespace torvex
