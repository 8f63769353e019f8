#pragma once

#include "toolboxes/importData/volume/NdArray.h"
#include "toolboxes/importData/volume/Progress.h"

#include <QString>

namespace torvex {

// A (D, H, W, C[, X]) volume in the axis order an import hands over:
// "HWCD" moves the frame axis last (a view), "DHWC" keeps the order in one
// full copy, made in chunks of frames told to `progress`; unless keepChannel, a
// channel axis of size 1 is squeezed away. Any other format returns the array unchanged.
NdArray reformatForImport(const NdArray& volume, const QString& format, bool keepChannel,
                          const Progress& progress = {});

} // namespace torvex
