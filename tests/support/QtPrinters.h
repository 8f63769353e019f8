#pragma once

#include <QString>
#include <QStringList>

#include <ostream>

// Readable failure messages for Qt's text types.
inline void PrintTo(const QString& text, std::ostream* os) { *os << '"' << text.toStdString() << '"'; }
inline void PrintTo(const QStringList& texts, std::ostream* os) { *os << texts.join(" | ").toStdString(); }
