// Scoring the guess on the raw files write_real_corpus.py writes: by kind of
// file, beside a guess from the file size alone. Shared by the corpus test and
// the guess benchmark.
#pragma once

#include "toolboxes/importData/guess/LayoutGuesses.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QString>

#include <cmath>
#include <cstdio>
#include <map>
#include <vector>

namespace torvex::corpus {

struct Truth {
    QString name, category, type;
    int64_t width, height, frames, offset;
    bool little, heldOut;
};

// Writes the corpus into `dir` and reads back its table of true layouts.
inline std::vector<Truth> write(const QString& dir)
{
    QProcess python;
    python.start(qEnvironmentVariable("TORVEX_TEST_PYTHON", "/usr/bin/python3"), {TORVEX_CORPUS_SCRIPT, dir});
    python.waitForFinished(300000);
    QFile file(QDir(dir).filePath("truth.tsv"));
    std::vector<Truth> rows;
    if (python.exitCode() != 0 || !file.open(QIODevice::ReadOnly)) return rows;
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QList<QByteArray> f = line.split('\t');
        if (f.size() < 10) continue;
        rows.push_back({f[0], f[1], f[3], f[4].toLongLong(), f[5].toLongLong(), f[6].toLongLong(),
                        f[7].toLongLong(), f[8] == "1", f[9] == "held out"});
    }
    return rows;
}

inline int pixelBytes(const QString& type) { return type.section('-', 0, 0).toInt() / 8; }

// Right when it decodes the same: byte order is moot for bytes and for 16-bit
// values of two equal bytes, and colour read backwards is the other colour order.
inline bool right(const Truth& t, const LayoutOption& o)
{
    const bool colourSwap = t.type.startsWith("24-bit") && o.imgType.startsWith("24-bit") &&
                            (o.imgType != t.type) == (o.littleEndian != t.little);
    const bool typeRight = o.imgType == t.type ? (o.littleEndian == t.little || pixelBytes(t.type) == 1 ||
                                                  t.category.contains("x257"))
                                               : colourSwap;
    return typeRight && o.width == t.width && o.height == t.height && o.frames == t.frames && o.offset == t.offset;
}

// The file size alone: one frame, no header, the true type, closest to square.
inline bool baselineRight(const Truth& t, int64_t fileBytes)
{
    const int64_t pixels = fileBytes / pixelBytes(t.type);
    auto height = static_cast<int64_t>(std::sqrt(static_cast<double>(pixels)));
    while (pixels % height) --height;
    return t.offset == 0 && t.frames == 1 && t.height == height && t.width == pixels / height;
}

struct Tally {
    int files = 0, right = 0, baseline = 0;
    double share() const { return files ? double(right) / files : 0; }
    double baselineShare() const { return files ? double(baseline) / files : 0; }
    QString line(const QString& name) const
    {
        return QString("%1 %2 / %3 right (%4 %), size only %5 %\n")
            .arg(name, -24)
            .arg(right, 3)
            .arg(files, 3)
            .arg(100 * share(), 5, 'f', 1)
            .arg(100 * baselineShare(), 5, 'f', 1);
    }
};

struct Score {
    std::map<QString, Tally> byCategory;
    Tally tuned, heldOut, all;
    QString table() const
    {
        QString text;
        for (const auto& [category, tally] : byCategory) text += tally.line(category);
        return text + tuned.line("all tuned on") + heldOut.line("all held out") + all.line("all");
    }
};

// Guesses every file of the corpus in `dir`; `misses` prints the wrong ones.
inline Score score(const QString& dir, const std::vector<Truth>& truths, bool misses = false)
{
    Score s;
    for (const Truth& t : truths) {
        QFile file(QDir(dir).filePath(t.name));
        if (!file.open(QIODevice::ReadOnly)) continue;
        const QByteArray bytes = file.readAll();
        const LayoutGuesses guesses = guessLayouts(t.name, bytes);
        const bool ok = !guesses.best.empty() && right(t, guesses.best.front());
        const bool base = baselineRight(t, bytes.size());
        for (Tally* tally : {&s.byCategory[t.category], t.heldOut ? &s.heldOut : &s.tuned, &s.all})
            ++tally->files, tally->right += ok, tally->baseline += base;
        if (!ok && misses)
            std::printf("miss %s %s %s %lldx%lldx%lld @%lld: %s\n", qPrintable(t.name), qPrintable(t.category),
                        qPrintable(t.type), (long long)t.width, (long long)t.height, (long long)t.frames,
                        (long long)t.offset, qPrintable(guesses.status()));
    }
    return s;
}

} // namespace torvex::corpus
