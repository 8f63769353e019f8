#include "PythonPath.h"

namespace torvex {

QString pythonBasename(const QString& path) { return path.mid(path.lastIndexOf('/') + 1); }

QString pythonExtension(const QString& path)
{
    const QString name = pythonBasename(path);
    const qsizetype dot = name.lastIndexOf('.');
    qsizetype firstNonDot = 0;
    while (firstNonDot < name.size() && name[firstNonDot] == '.') ++firstNonDot;
    if (dot < 0 || dot < firstNonDot) return {};
    return name.mid(dot);
}

} // namespace torvex
