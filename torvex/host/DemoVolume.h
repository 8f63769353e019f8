#pragma once

#include <QString>

namespace torvex {

// Writes a small raw volume that the tool shows as a picture with its start
// settings (8-bit, 400 x 640, one frame, column-major) and returns its path.
QString writeDemoVolume(const QString& folder);

} // namespace torvex
