#pragma once

#include <QSet>
#include <QString>

namespace torvex {

// `base`, or `base`_1, `base`_2, ... : the first that is not in `existing`.
QString uniqueVariableName(const QString& base, const QSet<QString>& existing);
// Whether a name is a reserved word of the host's Python (3.11).
bool isPythonKeyword(const QString& name);
// The name a typed text becomes: blanks around it dropped, blanks inside it
// turned into underscores, and "cdata" for anything that cannot be a variable.
QString validVariableName(const QString& typed);

} // namespace torvex
