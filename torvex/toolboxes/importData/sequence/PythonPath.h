#pragma once

#include <QString>

namespace torvex {

// Python's os.path.basename: the part after the last "/".
QString pythonBasename(const QString& path);
// Python's os.path.dirname (posixpath): "a.png" has an empty directory part.
QString pythonDirname(const QString& path);
// The extension os.path.splitext finds: from the last dot of the final
// component, empty when no dot follows a character other than a dot.
QString pythonExtension(const QString& path);

} // namespace torvex
