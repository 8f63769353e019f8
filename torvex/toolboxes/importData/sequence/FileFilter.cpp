#include "FileFilter.h"

#include "toolboxes/importData/sequence/PythonPath.h"

#include <QElapsedTimer>
#include <QRegularExpression>

#include <stdexcept>

namespace torvex {

namespace {

// Backtracking steps allowed for one file name, and time for the whole list:
// beyond them a pattern is reported instead of freezing the window.
constexpr char kMatchLimit[] = "(*LIMIT_MATCH=1000000)";
constexpr qint64 kFilterBudgetMs = 3000;

} // namespace

QString wildcardPattern(const QString& wildcard)
{
    return QString(wildcard).replace(".", "\\.").replace("*", ".*");
}

QStringList filterFiles(const QStringList& files, const QString& pattern, bool matchBaseName)
{
    const QRegularExpression re(kMatchLimit + pattern);
    if (!re.isValid()) throw std::runtime_error(re.errorString().toStdString());
    QElapsedTimer clock;
    clock.start();
    QStringList passed;
    for (const QString& file : files) {
        const QRegularExpressionMatch m = re.match(matchBaseName ? pythonBasename(file) : file, 0,
                                                   QRegularExpression::NormalMatch,
                                                   QRegularExpression::AnchorAtOffsetMatchOption);
        if (!m.isValid() || clock.elapsed() > kFilterBudgetMs)
            throw std::runtime_error("the pattern is too costly to match; simplify it");
        if (m.hasMatch()) passed << file;
    }
    return passed;
}

QString displayName(const QString& fileName, int maxLength)
{
    // Lengths count characters (code points), not UTF-16 units.
    const QList<uint> name = fileName.toUcs4();
    if (name.size() <= maxLength) return fileName;
    const QList<uint> ext = pythonExtension(fileName).toUcs4();
    const QList<uint> stem = name.mid(0, name.size() - ext.size());
    const qsizetype available = maxLength - ext.size() - 3;
    // A negative length drops that many characters from the end, as a slice does.
    const qsizetype keep = available >= 0 ? std::min(available, stem.size()) : std::max<qsizetype>(0, stem.size() + available);
    return QString::fromUcs4(reinterpret_cast<const char32_t*>(stem.constData()), keep) + "..." +
           QString::fromUcs4(reinterpret_cast<const char32_t*>(ext.constData()), ext.size());
}

} // namespace torvex
