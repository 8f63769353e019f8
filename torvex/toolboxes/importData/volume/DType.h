#pragma once

#include <Imath/half.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>

namespace torvex {

// The eight element types an array can hold.
enum class DType { UInt8, Int16, UInt16, Int32, UInt32, Float16, Float32, Float64 };

// Host order, or explicitly little- or big-endian (what a file says it holds).
enum class ByteOrder { Native, Little, Big };

int itemSize(DType dtype) noexcept;
constexpr bool isFloating(DType dtype) noexcept
{
    return dtype == DType::Float16 || dtype == DType::Float32 || dtype == DType::Float64;
}
// NumPy's name of the type: "uint8", "float16", ...
std::string dtypeName(DType dtype);

// IEEE 754 binary16: converts to float exactly, and from float with
// round-to-nearest-even (NumPy's astype), NaN payloads kept.
using Float16 = Imath::half;

// The C++ type behind each DType, for dispatch with visitDType.
template <DType D> struct DTypeTraits;
template <> struct DTypeTraits<DType::UInt8> { using type = uint8_t; };
template <> struct DTypeTraits<DType::Int16> { using type = int16_t; };
template <> struct DTypeTraits<DType::UInt16> { using type = uint16_t; };
template <> struct DTypeTraits<DType::Int32> { using type = int32_t; };
template <> struct DTypeTraits<DType::UInt32> { using type = uint32_t; };
template <> struct DTypeTraits<DType::Float16> { using type = Float16; };
template <> struct DTypeTraits<DType::Float32> { using type = float; };
template <> struct DTypeTraits<DType::Float64> { using type = double; };

// Calls fn(T{}) with the C++ type of dtype and returns what it returns.
template <class Fn> decltype(auto) visitDType(DType dtype, Fn&& fn)
{
    switch (dtype) {
    case DType::UInt8: return fn(uint8_t{});
    case DType::Int16: return fn(int16_t{});
    case DType::UInt16: return fn(uint16_t{});
    case DType::Int32: return fn(int32_t{});
    case DType::UInt32: return fn(uint32_t{});
    case DType::Float16: return fn(Float16{});
    case DType::Float32: return fn(float{});
    case DType::Float64: break;
    }
    return fn(double{});
}

// True when elements of this order must be byte-swapped on this host.
constexpr bool needsSwap(ByteOrder order) noexcept
{
    return (order == ByteOrder::Little && std::endian::native != std::endian::little)
           || (order == ByteOrder::Big && std::endian::native != std::endian::big);
}

// Reads one element that may sit at any (unaligned) address.
template <class T> T loadElement(const std::byte* p, ByteOrder order) noexcept
{
    T value;
    std::memcpy(&value, p, sizeof(T));
    if constexpr (sizeof(T) > 1) {
        if (needsSwap(order)) {
            auto* bytes = reinterpret_cast<unsigned char*>(&value);
            for (size_t i = 0; i < sizeof(T) / 2; ++i) std::swap(bytes[i], bytes[sizeof(T) - 1 - i]);
        }
    }
    return value;
}

} // namespace torvex
