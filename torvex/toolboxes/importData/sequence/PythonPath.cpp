#include "toolboxes/importData/sequence/PythonPath.h"

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

QString pythonDirname(const QString& path)
{
    QString head = path.left(path.lastIndexOf(u'/') + 1);
    // A head of slashes only is the root, and "//" is a root of its own on POSIX.
    if (head.count(u'/') != head.size()) {
        while (head.endsWith(u'/')) head.chop(1);
    }
    return head;
}

} // namespace torvex
