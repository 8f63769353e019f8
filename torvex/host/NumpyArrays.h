#pragma once

// Include before any Qt header: Qt's `slots` macro breaks Python's headers.
#include <pybind11/numpy.h>

#include "toolboxes/importData/volume/NdArray.h"

#include <optional>

namespace torvex {

// The array as a NumPy array over the same bytes (same strides, the matching
// byte order, read-only where the array is), which keeps the storage alive.
// A picked array is gathered into one new block first. Needs the GIL.
pybind11::array numpyView(const NdArray& array);

// A copy of a C-ordered NumPy array in this machine's byte order, when its
// type is one of DType's; std::nullopt otherwise. Needs the GIL.
std::optional<NdArray> ndArrayCopy(const pybind11::array& array);

} // namespace torvex
