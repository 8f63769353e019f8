#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <utility>

namespace torvex {

// Natural order of file names: runs of decimal digits (any script's) compare
// by value, the text between them as text, and names equal that way (a01,
// a1) by their plain text. A total order, as Python's
//   (parts with every odd part an int, name)   from re.split(r'(\d+)', name)
// sorts them.
bool naturalLess(const QString& a, const QString& b);

// Sorts paths in plain order (code points, as Python sorts text), or in the
// natural order of their file names.
void sortFiles(QStringList& paths, bool natural);

// The first pair, in plain order, whose numbers put them the other way round:
// the first name that a later one should precede, and the first such later
// one: ("img10.png", "img2.png"). None when both orders agree. `plainSorted`
// must be sorted plainly.
std::optional<std::pair<QString, QString>> firstNumberedPairOutOfOrder(const QStringList& plainSorted);

// The numbers missing from one numbered series: names that differ only in
// one run of digits, with the same text before and after it.
struct MissingNumbers {
    qint64 missing = 0;   // how many numbers of the span have no file
    qint64 span = 0;      // last number minus first plus one
    QList<qint64> first;  // the first ten missing numbers, ascending
};
// None when the names are not one such series, when nothing is missing, or
// when a number does not fit in 63 bits.
std::optional<MissingNumbers> missingNumbers(const QStringList& names);

// "Missing 3 of 500 numbered files: 17, 18, 240", ten numbers at most, then "…".
QString missingNumbersMessage(const MissingNumbers& gap);

} // namespace torvex
