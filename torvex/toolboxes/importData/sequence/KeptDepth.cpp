#include "KeptDepth.h"

#include <algorithm>

namespace torvex {

NdArray keepStoredValues(const DecodedImage& image)
{
    const NdArray& a = image.pixels;
    if (image.bilevel) return a.dtype() == DType::UInt8 ? a : a.astype(DType::UInt8);
    if (isFloating(a.dtype()) && a.dtype() != DType::Float32) return a.astype(DType::Float32);
    return a;
}

DType widenedType(DType a, DType b)
{
    if (a == b) return a;
    if (isFloating(a) || isFloating(b)) return DType::Float32;
    const auto isSigned = [](DType t) { return t == DType::Int16 || t == DType::Int32; };
    const auto bits = [](DType t) { return itemSize(t) * 8; };
    const auto integer = [](bool signedType, int width) {
        switch (width) {
        case 8: return DType::UInt8; // only unsigned 8-bit arrays exist
        case 16: return signedType ? DType::Int16 : DType::UInt16;
        default: return signedType ? DType::Int32 : DType::UInt32;
        }
    };
    if (isSigned(a) == isSigned(b)) return integer(isSigned(a), std::max(bits(a), bits(b)));
    const DType unsignedType = isSigned(a) ? b : a, signedType = isSigned(a) ? a : b;
    if (bits(signedType) > bits(unsignedType)) return signedType;
    // A signed type twice as wide holds both; past 32 bits only float64 does.
    return bits(unsignedType) < 32 ? integer(true, 2 * bits(unsignedType)) : DType::Float64;
}

} // namespace torvex
