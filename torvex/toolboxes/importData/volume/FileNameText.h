#pragma once

#include <QString>
#include <QStringList>

namespace torvex {

// A file name or path as lists and titles show it: line breaks, tabs, other
// control characters and U+FFFD (what Qt makes of bytes that are not valid
// UTF-8) written as escapes, "\n", "\t", "\x1b", "\ufffd"; a backslash stays
// as it is. Any other name comes back unchanged.
QString printablePath(const QString& path);

// Why `path` cannot be opened when its name held bytes that are not valid in
// the system's encoding, which Qt cannot give back once read; empty for a path
// that exists or has no such character.
QString unreachableNameReason(const QString& path);

// The names in `folder` that Qt leaves out of its listings, as their bytes
// are not valid in the system's encoding; shown with each byte above ASCII
// as "\xff".
QStringList unreachableNames(const QString& folder);

} // namespace torvex
