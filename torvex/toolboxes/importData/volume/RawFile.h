#pragma once

#include <QByteArray>
#include <QString>

namespace torvex {

// The whole content of a regular file, read into one buffer of exactly its
// size (no growth, no second copy). Throws std::runtime_error with the reason.
QByteArray readWholeFile(const QString& path);

} // namespace torvex
