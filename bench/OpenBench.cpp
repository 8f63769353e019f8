// Opening a 1 GiB raw volume: reading, zero-copy decoding and the first frame
// for display, each against the plain system operation it must stay close to.
#include "BenchReport.h"
#include "host/AppContext.h"
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/volume/DisplayImage.h"
#include "toolboxes/importData/volume/RawDecoder.h"
#include "toolboxes/importData/volume/RawFile.h"

#include <QApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

using namespace torvex;

namespace {

constexpr int64_t kWidth = 2048, kHeight = 4096, kFrames = 64;
constexpr int64_t kBytes = kWidth * kHeight * kFrames * 2;

// Median wall time of several runs, in seconds.
double medianSeconds(int runs, const std::function<void()>& work)
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        times.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    std::nth_element(times.begin(), times.begin() + runs / 2, times.end());
    return times[runs / 2];
}

void writeVolume(const QString& path)
{
    std::vector<uint16_t> frame(static_cast<size_t>(kWidth * kHeight));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) std::abort();
    for (int64_t f = 0; f < kFrames; ++f) {
        for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint16_t>(i * 7 + f * 131);
        file.write(reinterpret_cast<const char*>(frame.data()), static_cast<qint64>(frame.size() * 2));
    }
}

// What any program must do at least: one read() of the file into fresh memory.
void plainRead(const QString& path)
{
    char* buffer = static_cast<char*>(std::malloc(kBytes));
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY);
    for (int64_t done = 0; done < kBytes;) {
        const ssize_t got = ::read(fd, buffer + done, static_cast<size_t>(std::min<int64_t>(kBytes - done, 1 << 30)));
        if (got <= 0) break;
        done += got;
    }
    ::close(fd);
    std::free(buffer);
}

// Peak resident memory of this process so far, in bytes.
int64_t peakResidentBytes()
{
    QFile status("/proc/self/status");
    status.open(QIODevice::ReadOnly);
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmHWM:")) return line.mid(6).trimmed().split(' ').first().toLongLong() * 1024;
    return -1;
}

// In a fresh process: the window opens the file and is set to read it whole;
// then the volume is imported as "DHWC", its one full copy. Prints both peaks.
int openInWindowAndReportPeak(int argc, char** argv, const QString& path)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    AppContext context;
    ImportData w(nullptr, &context, {}, path);
    w.ui->comboBox_imgType->setCurrentText("16-bit Unsigned");
    w.ui->comboBox_order->setCurrentText("C");
    w.ui->spinBox_width->setValue(kWidth);
    w.ui->spinBox_height->setValue(kHeight);
    w.ui->spinBox_totalFrame->setValue(kFrames);
    if (!w.transferedData || w.transferedData->extent(0) != kFrames) return 1;
    const int64_t open = peakResidentBytes();
    w.onImport();
    if (context.get_component("workspace_manager")->get_workspace_data().size() != 1) return 1;
    std::printf("%lld %lld\n", static_cast<long long>(open), static_cast<long long>(peakResidentBytes()));
    return 0;
}

// A time bounded by a multiple of the plain operation it must stay close to.
void reportAgainst(const char* what, double seconds, double reference, const char* referenceName, double limit)
{
    const double ratio = seconds / reference;
    bench::reportFigure(what, seconds * 1e3, "ms",
                        "<= " + bench::constant(limit) + " x " + referenceName + " (" + bench::number(reference * 1e3)
                            + " ms)",
                        ratio, ratio <= limit);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::strcmp(argv[1], "--peak") == 0) return openInWindowAndReportPeak(argc, argv, argv[2]);

    QTemporaryDir dir;
    const QString path = dir.filePath("volume_2048x4096x64_u16.raw");
    writeVolume(path);
    plainRead(path); // bring the file into the page cache

    QProcess child;
    child.start(QString::fromLocal8Bit(argv[0]), {"--peak", path});
    child.waitForFinished(-1);
    const QList<QByteArray> peaks = child.readAllStandardOutput().trimmed().split(' ');
    const double peak = peaks.value(0).toDouble(), importPeak = peaks.value(1).toDouble();
    const bool peaksMeasured = child.exitStatus() == QProcess::NormalExit && child.exitCode() == 0 && peak > 0
                               && importPeak > 0;
    if (peaksMeasured) {
        const double peakLimit = 1.1 * kBytes + 150e6;
        const std::string file = bench::number(kBytes / 1e6) + " MB";
        bench::reportFigure("peak memory with the 1 GiB file open", peak / 1e6, "MB",
                            "<= 1.1 x " + file + " + 150 MB = " + bench::number(peakLimit / 1e6) + " MB",
                            peak / peakLimit, peak <= peakLimit);
        const double added = importPeak - peak, addedLimit = 1.1 * kBytes;
        bench::reportFigure("memory added by importing it as DHWC (one copy)", added / 1e6, "MB",
                            "<= 1.1 x " + file + " = " + bench::number(addedLimit / 1e6) + " MB", added / addedLimit,
                            added <= addedLimit);
    } else {
        std::fprintf(stderr, "the peak memory run failed: %s\n", child.readAllStandardError().constData());
    }

    std::vector<char> src(kBytes, 1), dst(kBytes, 0);
    const double memcpySeconds = medianSeconds(5, [&] { std::memcpy(dst.data(), src.data(), kBytes); });
    dst = {};
    src = {};

    const QByteArray bytes = readWholeFile(path);
    for (const char* order : {"C", "F"}) {
        const RawLayout p{.imgType = "16-bit Unsigned", .width = kWidth, .height = kHeight, .frame = kFrames,
                          .readOrder = order};
        const double decode = medianSeconds(21, [&] { decodeRawVolume(bytes, p); });
        reportAgainst(order[0] == 'C' ? "decode 1 GiB 16-bit Unsigned, order C"
                                      : "decode 1 GiB 16-bit Unsigned, order F",
                      decode, memcpySeconds, "memcpy of 1 GiB", 0.01);
    }

    const double readSeconds = medianSeconds(5, [&] { plainRead(path); });
    const double openSeconds = medianSeconds(5, [&] {
        const QByteArray file = readWholeFile(path);
        const NdArray stack = *decodeRawVolume(file, {.imgType = "16-bit Unsigned", .width = kWidth,
                                                      .height = kHeight, .frame = kFrames, .readOrder = "C"});
        const QImage first = displayImage(stack.index(0));
        if (first.isNull()) std::abort();
    });
    reportAgainst("open: read + decode + first frame shown", openSeconds, readSeconds, "read() into fresh buffer",
                  1.3);
    return peaksMeasured ? 0 : 1;
}
