// Loading an image sequence of 500 PNG files of 512 x 512, RGB at 8 bits and
// gray at 16 bits kept as they are: the loader's rate against a bare
// single-threaded decode loop over the same files, and the peak memory of a
// load against what its result must hold, also for a folder of files that are
// no images. Both rates are the best of five alternating rounds, as other work
// on the machine slows them.
#include "BenchReport.h"
#include "toolboxes/importData/sequence/ImageLoaderWorker.h"

#include <OpenImageIO/imageio.h>

#include <QGuiApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include <sys/resource.h>

using namespace torvex;

namespace {

constexpr int kFiles = 500, kSide = 512;

// A sequence of the benchmark: where its files are kept, what they hold, how
// they are loaded and the rate the loader must reach.
struct FileSet {
    const char* folder;
    const char* label;
    int channels;
    OIIO::TypeDesc type;
    SequenceReading reading;
    double rateTarget;
};
const FileSet kSets[] = {
    {"torvex-loader-bench", "PNG 512x512 RGB", 3, OIIO::TypeUInt8, {}, 1.8},
    {"torvex-loader-bench-16bit", "16-bit PNG 512x512 gray, bit depth kept", 1, OIIO::TypeUInt16,
     {.keepDepth = true}, 2.0},
};

// Written once and kept: smooth gradients with some noise, so the files
// compress like photographs rather than like flat colour.
QStringList sequenceFiles(const FileSet& set)
{
    const QDir dir(QDir::temp().filePath(set.folder));
    QDir().mkpath(dir.path());
    QStringList paths;
    const int values = kSide * kSide * set.channels;
    std::vector<uint8_t> bytes(values);
    std::vector<uint16_t> words(values);
    uint32_t noise = 12345;
    for (int f = 0; f < kFiles; ++f) {
        const QString path = dir.filePath(QString("frame%1.png").arg(f, 4, 10, QLatin1Char('0')));
        paths.append(path);
        if (QFileInfo::exists(path)) continue;
        for (int i = 0; i < values; ++i) {
            noise = noise * 1664525u + 1013904223u;
            const int y = i / (kSide * set.channels), x = (i / set.channels) % kSide, c = i % set.channels;
            const int value = (x * (c + 1) + y * 2 + f * 3) / 4 + (noise >> 29);
            bytes[i] = static_cast<uint8_t>(value);
            words[i] = static_cast<uint16_t>(value * 97 + (noise >> 22));
        }
        auto out = OIIO::ImageOutput::create(path.toStdString());
        const OIIO::ImageSpec header(kSide, kSide, set.channels, set.type);
        const void* pixels = set.type == OIIO::TypeUInt8 ? static_cast<const void*>(bytes.data()) : words.data();
        if (!out || !out->open((path + ".part").toStdString(), header) || !out->write_image(set.type, pixels)
            || !out->close() || !QFile::rename(path + ".part", path)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
            std::exit(1);
        }
    }
    return paths;
}

// One TIFF of 200 pages of 16-bit gray, written once and kept.
constexpr int kPages = 200;
QString multiPageTiff()
{
    const QString path = QDir::temp().filePath("torvex-loader-bench-pages.tif");
    if (QFileInfo::exists(path)) return path;
    std::vector<uint16_t> pixels(kSide * kSide);
    const std::vector<OIIO::ImageSpec> pages(kPages, OIIO::ImageSpec(kSide, kSide, 1, OIIO::TypeUInt16));
    const std::string part = (path + ".part").toStdString();
    auto out = OIIO::ImageOutput::create(part + ".tif");
    bool ok = out && out->open(part, kPages, pages.data());
    for (int p = 0; ok && p < kPages; ++p) {
        for (int i = 0; i < kSide * kSide; ++i) pixels[i] = static_cast<uint16_t>((i % kSide) * 61 + (i / kSide) * 37 + p * 331);
        ok = (p == 0 || out->open(part, pages[p], OIIO::ImageOutput::AppendSubimage))
             && out->write_image(OIIO::TypeUInt16, pixels.data());
    }
    if (!ok || !out->close() || !QFile::rename(QString::fromStdString(part), path)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        std::exit(1);
    }
    return path;
}

void barePageLoop(const QString& path)
{
    auto in = OIIO::ImageInput::open(path.toStdString());
    if (!in) std::exit(1);
    std::vector<uint16_t> buffer(kSide * kSide);
    for (int page = 0; page < kPages; ++page)
        if (!in->seek_subimage(page, 0) || !in->read_image(page, 0, 0, 1, OIIO::TypeUInt16, buffer.data())) std::exit(1);
}

// Empty files, each a placeholder frame; with nothing decoded, every frame is
// 256 x 256 RGB, so the stack alone is 3.75 GiB.
QStringList nonImageFiles()
{
    const QDir dir(QDir::temp().filePath("torvex-loader-bench-non-images"));
    QDir().mkpath(dir.path());
    QStringList paths;
    for (int i = 0; i < 20000; ++i) {
        paths << dir.filePath(QString("f%1.dat").arg(i, 5, 10, QLatin1Char('0')));
        if (QFile file(paths.last()); !file.exists()) file.open(QIODevice::WriteOnly);
    }
    return paths;
}

double seconds(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void bareDecodeLoop(const QStringList& paths)
{
    std::vector<uint8_t> buffer;
    for (const QString& path : paths) {
        auto in = OIIO::ImageInput::open(path.toStdString());
        if (!in) std::exit(1);
        const OIIO::ImageSpec& header = in->spec();
        buffer.resize(header.image_bytes());
        if (!in->read_image(0, 0, 0, header.nchannels, header.format, buffer.data())) std::exit(1);
    }
}

// Runs one load; returns the bytes of its stack.
int64_t workerLoad(const QStringList& paths, SequenceReading reading = {}, const QList<FramePage>& pages = {})
{
    _ImageLoaderWorker worker(1, paths, reading, pages);
    int64_t stackBytes = -1;
    QObject::connect(&worker, &_ImageLoaderWorker::finished,
                     [&](int, const NdArray& stack) { stackBytes = stack.nbytes(); });
    worker.run();
    if (stackBytes < 0) std::exit(1);
    return stackBytes;
}

double peakMegabytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024.0;
}

} // namespace

int main(int argc, char** argv)
{
    // Placeholders draw text, which needs a GUI application (offscreen will do).
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    // A memory run is a process of its own, so nothing else counts in its peak.
    if (app.arguments().contains("--memory-run")) {
        const int64_t stackBytes = app.arguments().contains("--non-images")
                                       ? workerLoad(nonImageFiles())
                                       : [&] {
                                             const FileSet& set = kSets[app.arguments().last().toInt()];
                                             return workerLoad(sequenceFiles(set), set.reading);
                                         }();
        std::printf("%lld %.1f\n", static_cast<long long>(stackBytes), peakMegabytes());
        return 0;
    }

    for (const FileSet& set : kSets) {
        const QStringList paths = sequenceFiles(set);
        bareDecodeLoop(paths); // the files into the page cache
        double bare = 1e9, loader = 1e9;
        for (int round = 0; round < 5; ++round) {
            bare = std::min(bare, seconds([&] { bareDecodeLoop(paths); }));
            loader = std::min(loader, seconds([&] { workerLoad(paths, set.reading); }));
        }
        const double ratio = bare / loader;
        bench::reportFigure("loader rate, " + std::to_string(kFiles) + " " + set.label, kFiles / loader, "files/s",
                            ">= " + bench::constant(set.rateTarget) + " x bare OpenImageIO loop ("
                                + bench::number(kFiles / bare) + " files/s)",
                            ratio, ratio >= set.rateTarget);
    }

    {
        const QString tiff = multiPageTiff();
        const PagedRows rows = everyPage({tiff});
        const SequenceReading reading{.keepDepth = true, .allPages = true};
        barePageLoop(tiff);
        double bare = 1e9, loader = 1e9;
        for (int round = 0; round < 5; ++round) {
            bare = std::min(bare, seconds([&] { barePageLoop(tiff); }));
            loader = std::min(loader, seconds([&] { workerLoad(rows.paths, reading, rows.pages); }));
        }
        bench::reportFigure("loader rate, a 200-page 16-bit TIFF 512x512, every page kept", kPages / loader, "pages/s",
                            ">= 2 x bare OpenImageIO loop (" + bench::number(kPages / bare) + " pages/s)",
                            bare / loader, bare / loader >= 2);
    }

    const int setCount = static_cast<int>(std::size(kSets));
    for (int run = 0; run <= setCount; ++run) {
        const bool nonImages = run == setCount;
        QProcess child;
        child.start(app.applicationFilePath(), nonImages ? QStringList{"--memory-run", "--non-images"}
                                                         : QStringList{"--memory-run", QString::number(run)});
        if (!child.waitForFinished(600000) || child.exitCode() != 0) {
            std::fprintf(stderr, "memory run failed\n");
            return 1;
        }
        long long stackBytes = 0;
        double peak = 0;
        std::sscanf(child.readAllStandardOutput().constData(), "%lld %lf", &stackBytes, &peak);
        // ru_maxrss is in KiB, so both sides are in MiB.
        const double stackMegabytes = stackBytes / 1048576.0;
        const double limit = 2.5 * stackMegabytes + 200;
        bench::reportFigure(nonImages ? "loader peak memory, 20 000 files that are no images"
                                      : "loader peak memory, " + std::to_string(kFiles) + " " + kSets[run].label,
                            peak, "MiB",
                            "<= 2.5 x " + bench::number(stackMegabytes) + " MiB stack + 200 MiB = "
                                + bench::number(limit) + " MiB",
                            peak / limit, peak <= limit);
    }
    // Missed targets show in the figures; the exit status tells only whether all were measured.
    return 0;
}
