// A 1 GiB volume imported as "HWCD" reaches the workspace's Python without a
// copy, and NumPy works on it there as fast as in a plain Python process.
#include "BenchFiles.h"
#include "BenchReport.h"
#include "../tests/support/VolumePanel.h"
#include "host/AppContext.h"
#include "host/PythonWorkspaceManager.h"
#include "toolboxes/importData/ImportData.h"

#include <QApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

using namespace torvex;

namespace {

constexpr int64_t kWidth = 2048, kHeight = 4096, kFrames = 64;
constexpr int kRuns = 3;

double medianOf(std::vector<double> times)
{
    std::nth_element(times.begin(), times.begin() + times.size() / 2, times.end());
    return times[times.size() / 2];
}

// NumPy alone: the file's bytes as the same strided array, in /usr/bin/python3.
double plainNumpySeconds(const QString& path, const QString& shapeAndStrides)
{
    QProcess python;
    python.start("/usr/bin/python3",
                 {"-c",
                  "import numpy, sys, time\n"
                  "shape, strides = eval(sys.argv[2])\n"
                  "a = numpy.lib.stride_tricks.as_strided(numpy.fromfile(sys.argv[1], '<u2'), shape, strides)\n"
                  "times = []\n"
                  "for _ in range(" + QString::number(kRuns) + "):\n"
                  "    start = time.perf_counter(); x = a.mean(); times.append(time.perf_counter() - start)\n"
                  "print(sorted(times)[len(times) // 2])",
                  path, shapeAndStrides});
    if (!python.waitForFinished(-1) || python.exitCode() != 0) {
        std::fprintf(stderr, "%s\n", python.readAllStandardError().constData());
        return -1;
    }
    return python.readAllStandardOutput().trimmed().toDouble();
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTemporaryDir dir;
    const QString path = dir.filePath("volume_2048x4096x64_u16.raw");
    bench::writeUInt16Volume(path, kWidth, kHeight, kFrames);

    AppContext context; // starts the interpreter
    auto* workspace = qobject_cast<PythonWorkspaceManager*>(context.get_component("workspace_manager"));
    if (!workspace || !workspace->unavailableReason().isEmpty()) return 1;
    ImportData w(nullptr, &context, {}, path);
    test::enterVolumePanel(w, {.layout = {.imgType = "16-bit Unsigned", .width = kWidth, .height = kHeight, .frame = kFrames,
                                          .byteOrder = ByteOrder::Little, .readOrder = "C"}});
    w.ui->comboBox_out_format->setCurrentText("HWCD");
    // From what is resident before to the peak after: an earlier, higher peak
    // (the file's reading) must not hide a copy.
    const int64_t before = bench::statusBytes("VmRSS");
    w.onImport();
    const int64_t after = bench::statusBytes("VmHWM");
    const QString shapeAndStrides = workspace->run_python("print((cdata.shape, cdata.strides))").trimmed();
    if (!shapeAndStrides.startsWith("((4096, 2048, 64)")) {
        std::fprintf(stderr, "cdata is not in the namespace: %s\n", qPrintable(shapeAndStrides));
        return 1;
    }
    bench::reportAtMost("peak memory added by a 1 GiB HWCD import into Python", (after - before) / 1e6, "MB", 50);

    std::vector<double> times;
    for (int i = 0; i < kRuns; ++i) {
        const auto start = std::chrono::steady_clock::now();
        workspace->run_python("x = cdata.mean()");
        times.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    const double ours = medianOf(times), plain = plainNumpySeconds(path, shapeAndStrides);
    if (plain <= 0) return 1;
    const double limit = 1.5;
    bench::reportFigure("run_python(\"x = cdata.mean()\") on it", ours * 1e3, "ms",
                        "<= " + bench::constant(limit) + " x NumPy alone (" + bench::number(plain * 1e3) + " ms)",
                        ours / plain, ours / plain <= limit);
    return 0;
}
