#pragma once

#include "toolboxes/importData/volume/NdArray.h"

#include <QString>

#include <functional>

namespace torvex {

// The frame that stands for a file that could not be decoded as an image: a
// width x height canvas with the file's name, a separator line and the start
// of its content (text or a hexadecimal dump). `channels` 1 gives a gray
// (H, W) uint8 frame, 3 a tinted (H, W, 3) one. Safe off the GUI thread; text
// is drawn only when a QGuiApplication exists, otherwise the frame keeps its
// background and separator. `canvas` gives the contiguous array to draw in.
NdArray renderPlaceholderFrame(const QString& path, int64_t width, int64_t height, int channels,
                               const std::function<NdArray(const Shape&)>& canvas = [](const Shape& shape) {
                                   return NdArray::empty(shape, DType::UInt8);
                               });

} // namespace torvex
