#include "NumpyArrays.h"

#include <cstring>

namespace py = pybind11;

namespace torvex {

namespace {

char byteOrderCode(const NdArray& array)
{
    if (array.itemsize() == 1) return '|';
    switch (array.byteOrder()) {
    case ByteOrder::Little: return '<';
    case ByteOrder::Big: return '>';
    case ByteOrder::Native: break;
    }
    return '=';
}

const char* typeCode(DType dtype)
{
    switch (dtype) {
    case DType::UInt8: return "u1";
    case DType::Int16: return "i2";
    case DType::UInt16: return "u2";
    case DType::Int32: return "i4";
    case DType::UInt32: return "u4";
    case DType::Float16: return "f2";
    case DType::Float32: return "f4";
    case DType::Float64: break;
    }
    return "f8";
}

} // namespace

py::array numpyView(const NdArray& source)
{
    const NdArray array = source.is_picked() ? source.copy() : source;
    const py::dtype dtype(byteOrderCode(array) + std::string(typeCode(array.dtype())));
    if (array.size() == 0) return py::array(dtype, array.shape());
    // A copy of the NdArray holds its storage for as long as NumPy holds the view.
    auto* keeper = new NdArray(array);
    const py::capsule base(keeper, [](void* p) { delete static_cast<NdArray*>(p); });
    py::array view(dtype, array.shape(), array.byteStrides(), array.data(), base);
    if (!array.writeable()) view.attr("setflags")(py::arg("write") = false);
    return view;
}

std::optional<NdArray> ndArrayCopy(const py::array& array)
{
    const py::dtype dtype = array.dtype();
    const char kind = dtype.kind();
    const int size = static_cast<int>(dtype.itemsize());
    std::optional<DType> type;
    for (DType candidate : {DType::UInt8, DType::Int16, DType::UInt16, DType::Int32, DType::UInt32, DType::Float16,
                            DType::Float32, DType::Float64})
        if (typeCode(candidate) == std::string{kind, static_cast<char>('0' + size)}) type = candidate;
    if (!type || !(array.flags() & py::array::c_style) || !dtype.attr("isnative").cast<bool>()) return std::nullopt;
    Shape shape(array.shape(), array.shape() + array.ndim());
    NdArray copy = NdArray::empty(shape, *type);
    if (copy.nbytes() > 0) std::memcpy(copy.mutableData(), array.data(), static_cast<size_t>(copy.nbytes()));
    return copy;
}

} // namespace torvex
