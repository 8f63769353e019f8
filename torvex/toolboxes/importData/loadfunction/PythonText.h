#pragma once

#include <QString>

namespace torvex {

// Python 3's repr() of a str: the literal that generated code embeds so that
// Python reads back exactly the same text.
QString pythonRepr(const QString& text);

} // namespace torvex
