#pragma once

#include "toolboxes/importData/loadfunction/LoadFunctionParams.h"

#include <QString>

namespace torvex {

// The text of a stand-alone Python function load_data(file_name) that reads a
// raw file of the layout in p with NumPy and returns the array that an import
// with the same settings gives. Throws std::runtime_error with
// "Unsupported image type: <type>" for a type it does not know.
QString volumeLoadFunctionText(const LoadFunctionParams& p);

} // namespace torvex
