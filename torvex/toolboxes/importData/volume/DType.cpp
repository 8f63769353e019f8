#include "DType.h"

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

} // namespace torvex
