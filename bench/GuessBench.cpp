// Guessing the layout of a 1 GiB headerless file with no hint in its name,
// read through a memory map as the window will hold it: the guess must read
// samples, not the file, so it stays far below one read of the whole file.
#include "BenchReport.h"
#include "toolboxes/importData/volume/LayoutGuess.h"

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

using namespace torvex;

namespace {

constexpr int64_t kWidth = 2048, kHeight = 4096, kFrames = 64;
constexpr double kLimitSeconds = 1.0;

// Frames of a smooth bump that brightens from frame to frame, with noise.
bool writeVolume(const QString& path)
{
    std::vector<uint16_t> bump(static_cast<size_t>(kWidth * kHeight)), frame(bump.size());
    std::mt19937 noise(5);
    for (int64_t y = 0; y < kHeight; ++y)
        for (int64_t x = 0; x < kWidth; ++x)
            bump[static_cast<size_t>(y * kWidth + x)] =
                static_cast<uint16_t>(2000 + 8 * std::hypot(x - 900.0, y - 2300.0) + noise() % 40);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    for (int64_t f = 0; f < kFrames; ++f) {
        std::ranges::transform(bump, frame.begin(), [&](uint16_t v) { return static_cast<uint16_t>(v + 300 * f); });
        file.write(reinterpret_cast<const char*>(frame.data()), static_cast<qint64>(frame.size() * 2));
    }
    return file.error() == QFile::NoError;
}

// One guess on a fresh map of the file, so that its page faults count.
double guessSeconds(QFile& file, QString& summary)
{
    const auto start = std::chrono::steady_clock::now();
    uchar* map = file.map(0, file.size());
    const LayoutGuess guess = guessLayout("volume.raw", QByteArrayView(map, file.size()));
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    file.unmap(map);
    summary = guess.layout ? guess.layout->summary() : guess.reason;
    return seconds;
}

} // namespace

int main()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("volume.raw");
    if (!writeVolume(path)) return 1;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return 1;

    std::vector<double> times;
    QString summary;
    for (int run = 0; run < 5; ++run) times.push_back(guessSeconds(file, summary));
    std::ranges::sort(times);
    bench::reportAtMost("Guess on a 1 GiB 16-bit file, 2048 x 4096 x 64 (median of 5)", times[2] * 1e3, "ms",
                        kLimitSeconds * 1e3);

    const auto start = std::chrono::steady_clock::now();
    const qint64 read = file.readAll().size();
    bench::reportInfo("reference: one read of the whole file",
                      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() * 1e3, "ms");

    const QString expected =
        "Guessed 16-bit Unsigned, 2048 x 4096 x 64, little endian, from the file size and the data";
    if (summary != expected || read != file.size()) {
        std::fprintf(stderr, "wrong guess: %s\n", qPrintable(summary));
        return 1;
    }
    return 0;
}
