#pragma once

#include "StillImageDecoder.h"

namespace torvex {

// Images kept at their stored depth, and the one type a stack of them takes.

// The image with its stored values: 8/16-bit unsigned, 16/32-bit signed and
// 32-bit unsigned stay as they are, a 1-bit image becomes uint8 0 and 1, and
// any float becomes float32 (half exactly; double rounded).
NdArray keepStoredValues(const DecodedImage& image);

// The narrowest type that holds every value of both types exactly: uint8 and
// uint16 give uint16, uint16 and int16 give int32, uint32 and a signed type
// float64; any float gives float32.
DType widenedType(DType a, DType b);

} // namespace torvex
