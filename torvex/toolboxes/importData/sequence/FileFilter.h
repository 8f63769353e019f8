#pragma once

#include <QString>
#include <QStringList>

namespace torvex {

// The regular expression a wildcard stands for: "." made literal, "*" any
// run; every other character keeps its regular-expression meaning.
QString wildcardPattern(const QString& wildcard);

// The files that pass `pattern`, in order. A wildcard's pattern is matched
// against the base name, a regular expression against the full path; a
// match must start at the first character and need not reach the end.
// Throws std::runtime_error for a bad pattern, and for one so costly to
// match that it would stall the window.
QStringList filterFiles(const QStringList& files, const QString& pattern, bool matchBaseName);

// A file name cut to at most `maxLength` characters for the image list,
// keeping its extension: "a_very_long_na...xyz.tif".
QString displayName(const QString& fileName, int maxLength = 35);

} // namespace torvex
