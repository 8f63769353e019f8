#pragma once

#include "ElementSampler.h"

#include <QString>

#include <optional>
#include <vector>

namespace torvex {

// The reading under which a file's neighbouring values are smoothest: read
// with the wrong type or byte order, the bytes of one value land in
// another and neighbours jump; read right, an image changes little from
// pixel to pixel.
struct ElementChoice {
    std::optional<ElementReading> reading;
    QString reason; // why there is none
};

// The element types a guess tries. Float16 is left to names: 16-bit
// integers often read as plausible half floats too.
inline const std::vector<DType> kGuessedTypes{DType::UInt8,  DType::UInt16,  DType::Int16,  DType::UInt32,
                                              DType::Int32,  DType::Float32, DType::Float64};

// Chooses among the types and byte orders given. Reads 64 spread-out runs of values.
ElementChoice chooseElementReading(QByteArrayView bytes, const std::vector<DType>& dtypes,
                                   const std::vector<ByteOrder>& orders);

} // namespace torvex
