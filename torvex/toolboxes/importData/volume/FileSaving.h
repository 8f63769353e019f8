#pragma once

#include <QString>

#include <functional>

class QIODevice;

namespace torvex {

// Writes a file through `write`, which puts its bytes on the device it is
// given. A regular file, or a new one, is written beside the target and
// renamed over it, so that a failure leaves any earlier file whole. A target
// that exists and is no regular file (a device such as /dev/full, a FIFO) is
// written in place: renaming over it would replace the node itself. Throws
// std::runtime_error with the system's reason when opening, writing or
// finishing fails.
void saveFile(const QString& path, const std::function<void(QIODevice&)>& write);

} // namespace torvex
