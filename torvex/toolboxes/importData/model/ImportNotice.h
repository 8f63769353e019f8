#pragma once

#include "toolboxes/importData/volume/NdArray.h"

#include <QString>

namespace torvex {

// A shape as Python writes a tuple: "(60, 384, 512)", "(5,)", "()".
QString pythonShapeText(const Shape& shape);
// What the host tells the user once an array is in the workspace:
// "Imported cdata ((60, 384, 512), uint8, 11.2 MiB) into the workspace".
QString importNotice(const QString& name, const NdArray& array);

} // namespace torvex
