// Guessing the layout of 1 GiB and 3 GiB headerless files with no hint in
// their names, read through a memory map as the window will hold them: the
// guess must read samples, not the file, so it stays far below one read of
// the whole file. Then its share right on raw files from real pictures.
#include "BenchReport.h"
#include "../tests/guess/CorpusScore.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

using namespace torvex;

namespace {

constexpr int64_t kWidth = 2048, kHeight = 4096, kFrames = 64, kLargeFrames = 192;
constexpr double kLimitSeconds = 1.0;
// Samples, not the file: the pages its reads fall on, with the kernel's read-around
// (the frame search reads a few hundred places per height it tries).
constexpr double kTouchedPercent = 25;

// Frames of a smooth bump that brightens from frame to frame, with noise.
bool writeVolume(const QString& path, int64_t frames)
{
    std::vector<uint16_t> bump(static_cast<size_t>(kWidth * kHeight)), frame(bump.size());
    std::mt19937 noise(5);
    for (int64_t y = 0; y < kHeight; ++y)
        for (int64_t x = 0; x < kWidth; ++x)
            bump[static_cast<size_t>(y * kWidth + x)] =
                static_cast<uint16_t>(2000 + 8 * std::hypot(x - 900.0, y - 2300.0) + noise() % 40);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    for (int64_t f = 0; f < frames; ++f) {
        std::ranges::transform(bump, frame.begin(), [&](uint16_t v) { return static_cast<uint16_t>(v + 300 * f); });
        file.write(reinterpret_cast<const char*>(frame.data()), static_cast<qint64>(frame.size() * 2));
    }
    return file.error() == QFile::NoError;
}

// Bytes of the mapping at `address` that this process has touched (its resident set there).
int64_t residentBytes(const uchar* address)
{
    QFile smaps("/proc/self/smaps");
    if (!smaps.open(QIODevice::ReadOnly)) return -1;
    const QByteArray start = QByteArray::number(reinterpret_cast<quintptr>(address), 16) + "-";
    bool inMapping = false;
    for (const QByteArray& line : smaps.readAll().split('\n')) {
        if (line.contains('-') && !line.contains(':')) continue;
        if (line.startsWith(start)) inMapping = true;
        else if (inMapping && line.startsWith("Rss:")) return line.mid(4).trimmed().split(' ').first().toLongLong() * 1024;
    }
    return -1;
}

struct Run {
    double seconds;
    int64_t touched; // bytes of the file mapped in by the guess
    QString summary;
};

// One guess on a fresh map of the file, so that its page faults count.
Run guessOnce(QFile& file)
{
    const auto start = std::chrono::steady_clock::now();
    uchar* map = file.map(0, file.size());
    const LayoutGuesses guess = guessLayouts("volume.raw", QByteArrayView(map, file.size()));
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const int64_t touched = residentBytes(map);
    file.unmap(map);
    return {seconds, touched, guess.best.empty() ? guess.reason : guess.best.front().summary()};
}

// The median of five guesses on a fresh map of the file at `path`.
Run medianGuess(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {0, 0, "cannot open"};
    std::vector<Run> runs;
    for (int run = 0; run < 5; ++run) runs.push_back(guessOnce(file));
    std::ranges::sort(runs, {}, &Run::seconds);
    return runs[2];
}

bool wrong(const Run& run, int64_t frames)
{
    const QString expected = QString("Guessed 16-bit Unsigned, %1 x %2 x %3, little endian, from the file size and the data")
                                 .arg(kWidth)
                                 .arg(kHeight)
                                 .arg(frames);
    if (run.summary == expected) return false;
    std::fprintf(stderr, "wrong guess: %s\n", qPrintable(run.summary));
    return true;
}

} // namespace

int main()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("volume.raw");
    if (!writeVolume(path, kFrames)) return 1;
    const Run median = medianGuess(path);
    const double fileBytes = static_cast<double>(QFileInfo(path).size());
    bench::reportAtMost("Guess on a 1 GiB 16-bit file, 2048 x 4096 x 64 (median of 5)", median.seconds * 1e3, "ms",
                        kLimitSeconds * 1e3);
    bench::reportAtMost("share of that file the guess maps in", 100.0 * median.touched / fileBytes, "%",
                        kTouchedPercent);

    QFile file(path);
    const auto start = std::chrono::steady_clock::now();
    const qint64 read = file.open(QIODevice::ReadOnly) ? file.readAll().size() : 0;
    bench::reportInfo("reference: one read of the whole file",
                      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() * 1e3, "ms");
    file.close();
    QFile::remove(path);

    if (!writeVolume(path, kLargeFrames)) return 1;
    const Run large = medianGuess(path);
    bench::reportAtMost("Guess on a 3 GiB 16-bit file, 2048 x 4096 x 192 (median of 5)", large.seconds * 1e3, "ms",
                        kLimitSeconds * 1e3);
    QFile::remove(path);

    const std::vector<corpus::Truth> truths = corpus::write(dir.path());
    const corpus::Score score = corpus::score(dir.path(), truths);
    bench::reportInfo("raw files from real pictures guessed fully right (" + std::to_string(score.all.files) + ")",
                      100 * score.all.share(), "%");
    bench::reportInfo("the same by closest-to-square size only", 100 * score.all.baselineShare(), "%");

    return wrong(median, kFrames) || wrong(large, kLargeFrames) || read != static_cast<qint64>(fileBytes) ||
           truths.empty();
}
