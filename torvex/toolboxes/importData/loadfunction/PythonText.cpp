#include "toolboxes/importData/loadfunction/PythonText.h"

#include <QChar>

namespace torvex {

namespace {

// str.isprintable(): everything outside the "Other" and "Separator"
// categories, plus the ASCII space.
bool isPythonPrintable(char32_t codePoint)
{
    if (codePoint == U' ') return true;
    switch (QChar::category(codePoint)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Other_PrivateUse:
    case QChar::Other_NotAssigned:
    case QChar::Separator_Space:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

// The shortest of \xhh, \uhhhh and \Uhhhhhhhh that holds the code point.
QString hexEscape(char32_t codePoint)
{
    const auto hex = [codePoint](int digits) {
        return QString::number(codePoint, 16).rightJustified(digits, u'0');
    };
    if (codePoint <= 0xff) return "\\x" + hex(2);
    if (codePoint <= 0xffff) return "\\u" + hex(4);
    return "\\U" + hex(8);
}

} // namespace

QString pythonRepr(const QString& text)
{
    const char16_t quote = text.contains(u'\'') && !text.contains(u'"') ? u'"' : u'\'';
    QString out(1, quote);
    for (qsizetype i = 0; i < text.size();) {
        // A Python str holds code points, and a lone surrogate is one of them.
        const QChar unit = text.at(i);
        const bool pair = unit.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        const char32_t codePoint = pair ? QChar::surrogateToUcs4(unit, text.at(i + 1)) : unit.unicode();
        const qsizetype units = pair ? 2 : 1;

        if (codePoint == quote || codePoint == U'\\') out += QString(u'\\') + unit;
        else if (codePoint == U'\t') out += "\\t";
        else if (codePoint == U'\n') out += "\\n";
        else if (codePoint == U'\r') out += "\\r";
        else if (isPythonPrintable(codePoint)) out += QStringView(text).mid(i, units);
        else out += hexEscape(codePoint);
        i += units;
    }
    out += quote;
    return out;
}

} // namespace torvex
