#include "VariableNames.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>

namespace torvex {

namespace {

const QString kFallbackName = QStringLiteral("cdata");

// Python's str.isspace, which str.strip() uses (it counts 0x1C..0x1F too).
bool isPythonSpace(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= 0x09 && u <= 0x0d) || (u >= 0x1c && u <= 0x20) || u == 0x85 || u == 0xa0 || u == 0x1680 ||
           (u >= 0x2000 && u <= 0x200a) || u == 0x2028 || u == 0x2029 || u == 0x202f || u == 0x205f ||
           u == 0x3000;
}

QString pythonStrip(const QString& text)
{
    qsizetype begin = 0, end = text.size();
    while (begin < end && isPythonSpace(text[begin])) ++begin;
    while (end > begin && isPythonSpace(text[end - 1])) --end;
    return text.mid(begin, end - begin);
}

} // namespace

QString uniqueVariableName(const QString& base, const QSet<QString>& existing)
{
    if (!existing.contains(base)) return base;
    for (int counter = 1;; ++counter) {
        const QString candidate = base + "_" + QString::number(counter);
        if (!existing.contains(candidate)) return candidate;
    }
}

bool isPythonKeyword(const QString& name)
{
    // keyword.kwlist of Python 3.11; soft keywords (match, case, _) are not reserved.
    static const std::array<const char*, 35> keywords = {
        "False", "None",   "True",    "and",      "as",       "assert", "async", "await",    "break",
        "class", "continue", "def",   "del",      "elif",     "else",   "except", "finally", "for",
        "from",  "global", "if",      "import",   "in",       "is",     "lambda", "nonlocal", "not",
        "or",    "pass",   "raise",   "return",   "try",      "while",  "with",  "yield"};
    return std::any_of(keywords.begin(), keywords.end(), [&](const char* k) { return name == QLatin1String(k); });
}

QString validVariableName(const QString& typed)
{
    static const QRegularExpression identifier(QStringLiteral("^[a-zA-Z_][a-zA-Z0-9_]*$"));
    const QString stripped = pythonStrip(typed);
    QString name = stripped.isEmpty() ? kFallbackName : QString(stripped).replace(' ', '_');
    if (!identifier.match(name).hasMatch()) name = kFallbackName;
    if (isPythonKeyword(name)) name = kFallbackName;
    return name;
}

} // namespace torvex
