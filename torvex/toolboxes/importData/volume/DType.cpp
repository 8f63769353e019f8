#include "DType.h"

#include <cmath>

namespace torvex {

int itemSize(DType dtype) noexcept
{
    return visitDType(dtype, [](auto tag) { return static_cast<int>(sizeof(tag)); });
}

std::string dtypeName(DType dtype)
{
    switch (dtype) {
    case DType::UInt8: return "uint8";
    case DType::Int16: return "int16";
    case DType::UInt16: return "uint16";
    case DType::Int32: return "int32";
    case DType::UInt32: return "uint32";
    case DType::Float16: return "float16";
    case DType::Float32: return "float32";
    case DType::Float64: break;
    }
    return "float64";
}

float Float16::toFloat() const noexcept
{
    const uint32_t sign = static_cast<uint32_t>(bits & 0x8000u) << 16;
    const uint32_t exponent = (bits >> 10) & 0x1fu;
    const uint32_t mantissa = bits & 0x3ffu;
    if (exponent == 0) {
        // Zero or subnormal: exactly mantissa * 2^-24.
        const float magnitude = std::ldexp(static_cast<float>(mantissa), -24);
        return sign ? -magnitude : magnitude;
    }
    uint32_t out;
    if (exponent == 0x1f) out = sign | 0x7f800000u | (mantissa << 13); // inf or NaN
    else out = sign | ((exponent + 112) << 23) | (mantissa << 13);
    return std::bit_cast<float>(out);
}

Float16 Float16::fromFloat(float value) noexcept
{
    const uint32_t in = std::bit_cast<uint32_t>(value);
    const uint16_t sign = static_cast<uint16_t>((in >> 16) & 0x8000u);
    const uint32_t absBits = in & 0x7fffffffu;
    if (absBits >= 0x7f800000u) // inf or NaN
        return {static_cast<uint16_t>(sign | 0x7c00u | (absBits > 0x7f800000u ? 0x200u : 0u))};
    if (absBits >= 0x477ff000u) return {static_cast<uint16_t>(sign | 0x7c00u)}; // rounds to inf
    if (absBits < 0x38800000u) {
        // Subnormal half: round to nearest even multiple of 2^-24.
        const float scaled = std::nearbyint(std::ldexp(std::bit_cast<float>(absBits), 24));
        return {static_cast<uint16_t>(sign | static_cast<uint16_t>(scaled))};
    }
    // Normal: drop 13 mantissa bits with round-to-nearest-even.
    uint32_t rebased = absBits - (112u << 23);
    const uint32_t rest = rebased & 0x1fffu;
    rebased >>= 13;
    if (rest > 0x1000u || (rest == 0x1000u && (rebased & 1u))) ++rebased;
    return {static_cast<uint16_t>(sign | rebased)};
}

} // namespace torvex
