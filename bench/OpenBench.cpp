// Opening raw volumes that are mapped, not read: the time to the first frame
// shown for a 1 GiB file in the page cache and for a 48 GiB sparse file (twice
// this machine's memory), the memory held while paging through the large one,
// a width change on it, and the one copy an import as "DHWC" makes.
#include "BenchFiles.h"
#include "BenchReport.h"
#include "../tests/support/VolumePanel.h"
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

#include <unistd.h>

using namespace torvex;

namespace {

constexpr int64_t kWidth = 4096, kHeight = 4096, kFrameBytes = kWidth * kHeight * 2;
constexpr int64_t kFrames = 32, kBytes = kFrameBytes * kFrames; // 1 GiB
constexpr int64_t kLargeBytes = int64_t(48) << 30, kLargeFrames = kLargeBytes / kFrameBytes;
constexpr int kPagedFrames = 16;

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

// The window set to show `path` as 4096 x 4096 "16-bit Unsigned" frames.
void showAsFrames(ImportData& w, int64_t frames)
{
    test::enterVolumePanel(
        w, {.layout = {.imgType = "16-bit Unsigned", .width = kWidth, .height = kHeight, .frame = frames, .readOrder = "C"}});
    if (!w.transferedData || w.transferedData->extent(0) != frames) std::exit(1);
}

// In a fresh process, the window on the 48 GiB file: peak resident memory
// after paging through frames spread over all of it, then the time of a width
// change until the new first frame's image is set. Prints both.
int pageLargeFile(int argc, char** argv, const QString& path)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    AppContext context;
    ImportData w(nullptr, &context, {}, path);
    showAsFrames(w, kLargeFrames);
    for (int i = 0; i < kPagedFrames; ++i) w.ui->spinBox_frame->setValue(1 + static_cast<int>(i * kLargeFrames / kPagedFrames));
    const int64_t peak = bench::statusBytes("VmHWM");
    const double widthChange = medianSeconds(5, [&] {
        test::editVolumePanel(w, [](VolumeParams& p) { p.layout.width = p.layout.width == kWidth ? kWidth / 2 : kWidth; });
    });
    if (!w.transferedData || w.transferedData->extent(2) != w._captureVolumeParams().layout.width) return 1;
    std::printf("%lld %.9f\n", static_cast<long long>(peak), widthChange);
    return 0;
}

// In a fresh process, the window on the 1 GiB file: peak resident memory once
// it shows its first frame, then the private memory an import as "DHWC" adds
// (the file's pages it reads on the way are the page cache's, not a copy).
int importSmallFile(int argc, char** argv, const QString& path)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    AppContext context;
    ImportData w(nullptr, &context, {}, path);
    showAsFrames(w, kFrames);
    const int64_t open = bench::statusBytes("VmHWM"), anonymous = bench::statusBytes("RssAnon");
    w.onImport();
    if (context.get_component("workspace_manager")->get_workspace_data().size() != 1) return 1;
    std::printf("%lld %lld\n", static_cast<long long>(open),
                static_cast<long long>(bench::statusBytes("RssAnon") - anonymous));
    return 0;
}

// Numbers a child run of this program prints, or none when it failed.
std::vector<double> childFigures(const char* self, const char* mode, const QString& path)
{
    QProcess child;
    child.start(QString::fromLocal8Bit(self), {mode, path});
    child.waitForFinished(-1);
    std::vector<double> figures;
    for (const QByteArray& word : child.readAllStandardOutput().trimmed().split(' ')) figures.push_back(word.toDouble());
    if (child.exitStatus() != QProcess::NormalExit || child.exitCode() != 0 || figures.empty() || figures[0] <= 0) {
        std::fprintf(stderr, "%s failed: %s\n", mode, child.readAllStandardError().constData());
        return {};
    }
    return figures;
}

// Mapping a file, decoding it as views and making its first frame's image.
void openAndShowFirstFrame(const QString& path, int64_t frames)
{
    const std::shared_ptr<const MappedFile> file = MappedFile::open(path);
    const NdArray stack = *decodeRawVolume(file->bytes(), {.imgType = "16-bit Unsigned", .width = kWidth,
                                                             .height = kHeight, .frame = static_cast<int>(frames),
                                                             .readOrder = "C"});
    if (displayImage(stack.index(0)).isNull()) std::abort();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::strcmp(argv[1], "--page") == 0) return pageLargeFile(argc, argv, argv[2]);
    if (argc == 3 && std::strcmp(argv[1], "--import") == 0) return importSmallFile(argc, argv, argv[2]);

    QTemporaryDir dir;
    const QString path = dir.filePath("volume_4096x4096x32_u16.raw");
    const QString large = dir.filePath("sparse_48GiB.raw");
    bench::writeUInt16Volume(path, kWidth, kHeight, kFrames);
    if (QFile sparse(large); !sparse.open(QIODevice::WriteOnly) || !sparse.resize(kLargeBytes)) return 1;

    const QString cat = "cat '" + path + "' > /dev/null";
    const double catSeconds = medianSeconds(3, [&] { QProcess::execute("sh", {"-c", cat}); });
    const std::string catText = "cat of the 1 GiB file: " + bench::number(catSeconds * 1e3) + " ms";
    constexpr double openLimit = 0.05;
    for (const auto& [name, file, frames] : {std::tuple{"open 1 GiB raw file until its first frame is shown", path, kFrames},
                                             std::tuple{"open 48 GiB sparse raw file until its first frame is shown",
                                                        large, kLargeFrames}}) {
        const double seconds = medianSeconds(5, [&] { openAndShowFirstFrame(file, frames); });
        bench::reportFigure(name, seconds * 1e3, "ms", "<= 50 ms (" + catText + ")", seconds / openLimit,
                            seconds <= openLimit);
    }

    bool measured = true;
    if (const std::vector<double> paged = childFigures(argv[0], "--page", large); paged.size() == 2) {
        const double limit = 300e6 + kPagedFrames * double(kFrameBytes);
        bench::reportFigure("peak memory, 48 GiB file open, " + std::to_string(kPagedFrames) + " frames paged through",
                            paged[0] / 1e6, "MB",
                            "<= 300 MB + " + std::to_string(kPagedFrames) + " frames of 33.55 MB = " +
                                bench::number(limit / 1e6) + " MB",
                            paged[0] / limit, paged[0] <= limit);
        const double frameSeconds = medianSeconds(5, [&] {
            const std::shared_ptr<const MappedFile> file = MappedFile::open(path);
            displayImage(NdArray::wrap(file->bytes(), 0, kFrameBytes, DType::UInt16).reshape({kHeight, kWidth}));
        });
        bench::reportFigure("width change on the 48 GiB file until the new first frame is set", paged[1] * 1e3, "ms",
                            "<= 50 ms (one frame's display image alone: " + bench::number(frameSeconds * 1e3) +
                                " ms)",
                            paged[1] / 0.05, paged[1] <= 0.05);
    } else {
        measured = false;
    }
    if (const std::vector<double> imported = childFigures(argv[0], "--import", path); imported.size() == 2) {
        const double openLimit = 300e6 + kFrameBytes;
        bench::reportFigure("peak memory with the 1 GiB file open, first frame shown", imported[0] / 1e6, "MB",
                            "<= 300 MB + one frame of 33.55 MB = " + bench::number(openLimit / 1e6) + " MB",
                            imported[0] / openLimit, imported[0] <= openLimit);
        const double added = imported[1], addedLimit = 1.1 * kBytes;
        bench::reportFigure("private memory added by importing it as DHWC (one copy)", added / 1e6, "MB",
                            "<= 1.1 x " + bench::number(kBytes / 1e6) + " MB = " + bench::number(addedLimit / 1e6) +
                                " MB",
                            added / addedLimit, added <= addedLimit);
    } else {
        measured = false;
    }

    std::vector<char> src(kBytes, 1), dst(kBytes, 0);
    const double memcpySeconds = medianSeconds(5, [&] { std::memcpy(dst.data(), src.data(), kBytes); });
    dst = {};
    src = {};
    const std::shared_ptr<const MappedFile> file = MappedFile::open(path);
    for (const char* order : {"C", "F"}) {
        const RawLayout p{.imgType = "16-bit Unsigned", .width = kWidth, .height = kHeight, .frame = kFrames,
                          .readOrder = order};
        const double decode = medianSeconds(21, [&] { decodeRawVolume(file->bytes(), p); });
        const double ratio = decode / memcpySeconds;
        bench::reportFigure(std::string("decode 1 GiB 16-bit Unsigned, order ") + order, decode * 1e3, "ms",
                            "<= 0.01 x memcpy of 1 GiB (" + bench::number(memcpySeconds * 1e3) + " ms)", ratio,
                            ratio <= 0.01);
    }
    return measured ? 0 : 1;
}
