#include "toolboxes/importData/sequence/NumberedNames.h"

#include "toolboxes/importData/sequence/PythonPath.h"

#include <algorithm>
#include <set>

namespace torvex {

namespace {

// A name cut into text and digit runs: text, digits, text, ..., text.
struct Parts {
    QList<QStringView> text;   // one more than digits
    QList<QStringView> digits;
};

Parts partsOf(QStringView name)
{
    Parts parts;
    qsizetype start = 0, i = 0;
    while (i < name.size()) {
        if (!name[i].isDigit()) {
            ++i;
            continue;
        }
        parts.text << name.mid(start, i - start);
        const qsizetype run = i;
        while (i < name.size() && name[i].isDigit()) ++i;
        parts.digits << name.mid(run, i - run);
        start = i;
    }
    parts.text << name.mid(start);
    return parts;
}

// Compares two digit runs by value, whatever their length or script.
int compareNumbers(QStringView a, QStringView b)
{
    const auto significant = [](QStringView run) {
        qsizetype lead = 0;
        while (lead + 1 < run.size() && run[lead].digitValue() == 0) ++lead;
        return run.mid(lead);
    };
    a = significant(a);
    b = significant(b);
    if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
    for (qsizetype i = 0; i < a.size(); ++i)
        if (a[i].digitValue() != b[i].digitValue()) return a[i].digitValue() < b[i].digitValue() ? -1 : 1;
    return 0;
}

// Plain order: code points, as Python compares text.
int comparePlain(QStringView a, QStringView b)
{
    const QList<uint> x = a.toUcs4(), y = b.toUcs4();
    return std::lexicographical_compare(x.begin(), x.end(), y.begin(), y.end()) ? -1 : x == y ? 0 : 1;
}

std::optional<qint64> valueOf(QStringView run)
{
    qint64 value = 0;
    for (QChar c : run) {
        if (value > (std::numeric_limits<qint64>::max() - 9) / 10) return std::nullopt;
        value = value * 10 + c.digitValue();
    }
    return value;
}

} // namespace

bool naturalLess(const QString& a, const QString& b)
{
    const Parts x = partsOf(a), y = partsOf(b);
    const qsizetype n = std::min(x.text.size(), y.text.size());
    for (qsizetype i = 0; i < n; ++i) {
        if (const int c = comparePlain(x.text[i], y.text[i])) return c < 0;
        if (i < x.digits.size() && i < y.digits.size())
            if (const int c = compareNumbers(x.digits[i], y.digits[i])) return c < 0;
        // One list ends here: the shorter one comes first, as Python lists compare.
        if (i + 1 == n && x.text.size() != y.text.size()) return x.text.size() < y.text.size();
    }
    return comparePlain(a, b) < 0;
}

void sortFiles(QStringList& paths, bool natural)
{
    // Keys made once: a folder may hold tens of thousands of names.
    struct Keyed {
        QList<uint> plain;
        QString name;
        QString path;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(static_cast<size_t>(paths.size()));
    for (QString& path : paths) keyed.push_back({path.toUcs4(), natural ? pythonBasename(path) : QString(), path});
    std::stable_sort(keyed.begin(), keyed.end(), [natural](const Keyed& a, const Keyed& b) {
        if (natural && a.name != b.name) return naturalLess(a.name, b.name);
        return a.plain < b.plain;
    });
    for (size_t i = 0; i < keyed.size(); ++i) paths[static_cast<qsizetype>(i)] = std::move(keyed[i].path);
}

std::optional<std::pair<QString, QString>> firstNumberedPairOutOfOrder(const QStringList& plainSorted)
{
    const qsizetype n = plainSorted.size();
    // The naturally smallest name from each position on, so that one pass
    // finds the first name that a later one should precede.
    std::vector<qsizetype> smallestFrom(static_cast<size_t>(n + 1), n);
    for (qsizetype i = n - 1; i >= 0; --i) {
        const qsizetype later = smallestFrom[static_cast<size_t>(i + 1)];
        smallestFrom[static_cast<size_t>(i)] =
            later < n && naturalLess(plainSorted[later], plainSorted[i]) ? later : i;
    }
    for (qsizetype i = 0; i + 1 < n; ++i) {
        const qsizetype later = smallestFrom[static_cast<size_t>(i + 1)];
        if (!naturalLess(plainSorted[later], plainSorted[i])) continue;
        for (qsizetype j = i + 1; j < n; ++j)
            if (naturalLess(plainSorted[j], plainSorted[i])) return std::pair{plainSorted[i], plainSorted[j]};
    }
    return std::nullopt;
}

std::optional<MissingNumbers> missingNumbers(const QStringList& names)
{
    if (names.size() < 2) return std::nullopt;
    const Parts model = partsOf(names.first());
    if (model.digits.isEmpty()) return std::nullopt;
    // The one digit run in which the names differ; every other part is the same text.
    std::optional<qsizetype> varying;
    std::vector<Parts> all;
    for (const QString& name : names) {
        Parts parts = partsOf(name);
        if (parts.digits.size() != model.digits.size()) return std::nullopt;
        for (qsizetype i = 0; i < parts.text.size(); ++i)
            if (parts.text[i] != model.text[i]) return std::nullopt;
        for (qsizetype i = 0; i < parts.digits.size(); ++i) {
            if (parts.digits[i] == model.digits[i]) continue;
            if (varying && *varying != i) return std::nullopt;
            varying = i;
        }
        all.push_back(std::move(parts));
    }
    if (!varying) return std::nullopt;
    std::set<qint64> numbers;
    for (const Parts& parts : all) {
        const std::optional<qint64> value = valueOf(parts.digits[*varying]);
        if (!value) return std::nullopt;
        numbers.insert(*value);
    }
    MissingNumbers gap;
    gap.span = *numbers.rbegin() - *numbers.begin() + 1;
    gap.missing = gap.span - static_cast<qint64>(numbers.size());
    if (gap.missing == 0) return std::nullopt;
    for (auto it = numbers.begin(); std::next(it) != numbers.end() && gap.first.size() < 10; ++it)
        for (qint64 n = *it + 1; n < *std::next(it) && gap.first.size() < 10; ++n) gap.first << n;
    return gap;
}

QString missingNumbersMessage(const MissingNumbers& gap)
{
    QStringList listed;
    for (qint64 n : gap.first) listed << QString::number(n);
    if (gap.missing > gap.first.size()) listed << QStringLiteral("\u2026");
    return "Missing " + QString::number(gap.missing) + " of " + QString::number(gap.span) +
           " numbered files: " + listed.join(", ");
}

} // namespace torvex
