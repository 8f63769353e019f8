// The guess on raw files written from real photographs, scans and elevation
// maps, scored by kind of file beside a guess from the file size alone.
#include "toolboxes/importData/guess/LayoutGuesses.h"

#include "../support/TempFiles.h"

#include <QFile>
#include <QTextStream>

#include <cmath>
#include <cstdio>
#include <map>

using namespace torvex;

namespace {

struct Truth {
    QString name, category, source, type;
    int64_t width, height, frames, offset;
    bool little, heldOut;
};

std::vector<Truth> readTruth(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    std::vector<Truth> rows;
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QList<QByteArray> f = line.split('\t');
        if (f.size() < 10) continue;
        rows.push_back({f[0], f[1], f[2], f[3], f[4].toLongLong(), f[5].toLongLong(), f[6].toLongLong(),
                        f[7].toLongLong(), f[8] == "1", f[9] == "held out"});
    }
    return rows;
}

int pixelBytes(const QString& type) { return type.section('-', 0, 0).toInt() / 8; }

// Right when it decodes the same: byte order is moot for bytes and for 16-bit
// values of two equal bytes, and colour read backwards is the other colour order.
bool right(const Truth& t, const LayoutOption& o)
{
    const bool colourSwap = t.type.startsWith("24-bit") && o.imgType.startsWith("24-bit") &&
                            (o.imgType != t.type) == (o.littleEndian != t.little);
    const bool typeRight = o.imgType == t.type ? (o.littleEndian == t.little || pixelBytes(t.type) == 1 ||
                                                  t.category.contains("x257"))
                                               : colourSwap;
    return typeRight && o.width == t.width && o.height == t.height && o.frames == t.frames && o.offset == t.offset;
}

// The file size alone: one frame, no header, the true type, closest to square.
bool baselineRight(const Truth& t, int64_t fileBytes)
{
    const int64_t pixels = fileBytes / pixelBytes(t.type);
    int64_t height = static_cast<int64_t>(std::sqrt(static_cast<double>(pixels)));
    while (pixels % height) --height;
    return t.offset == 0 && t.frames == 1 && t.height == height && t.width == pixels / height;
}

struct Tally {
    int files = 0, right = 0, baseline = 0;
    QString line(const QString& name) const
    {
        return QString("%1 %2 / %3 right (%4 %), size only %5 %\n")
            .arg(name, -24)
            .arg(right, 3)
            .arg(files, 3)
            .arg(100.0 * right / files, 5, 'f', 1)
            .arg(100.0 * baseline / files, 5, 'f', 1);
    }
};

} // namespace

TEST(RealCorpus, MostRawFilesFromRealPicturesGuessFullyRight)
{
    QTemporaryDir dir;
    QFile script(TORVEX_CORPUS_SCRIPT);
    ASSERT_TRUE(script.open(QIODevice::ReadOnly));
    test::runPython(QString::fromUtf8(script.readAll()), {dir.path()});
    std::map<QString, Tally> byCategory;
    Tally tuned, heldOut;
    for (const Truth& t : readTruth(dir.filePath("truth.tsv"))) {
        const QByteArray bytes = test::readFile(dir.filePath(t.name));
        const LayoutGuesses guesses = guessLayouts(t.name, bytes);
        const bool ok = !guesses.best.empty() && right(t, guesses.best.front());
        const bool base = baselineRight(t, bytes.size());
        for (Tally* tally : {&byCategory[t.category], t.heldOut ? &heldOut : &tuned})
            ++tally->files, tally->right += ok, tally->baseline += base;
        if (!ok && qEnvironmentVariableIsSet("TORVEX_CORPUS_MISSES"))
            std::printf("miss %s %s %s %lldx%lldx%lld @%lld %d: %s\n", qPrintable(t.name), qPrintable(t.source),
                        qPrintable(t.type), (long long)t.width, (long long)t.height, (long long)t.frames,
                        (long long)t.offset, t.little, qPrintable(guesses.status()));
    }
    QString table;
    for (const auto& [category, tally] : byCategory) table += tally.line(category);
    table += tuned.line("all tuned on") + heldOut.line("all held out");
    std::printf("%s", qPrintable(table));
    const double share = double(tuned.right + heldOut.right) / (tuned.files + heldOut.files);
    const double baseline = double(tuned.baseline + heldOut.baseline) / (tuned.files + heldOut.files);
    EXPECT_GE(share, 0.80); // 83 of 98 when written
    EXPECT_GE(share, 2 * baseline);
}
