// Display conversion of 4096 x 4096 uint16 frames, cycling through the frames
// of a 1 GiB volume so that no frame is still in a cache, laid out in C order,
// column-major and at an odd address. Beside each: a plain min/max-and-scale
// loop over the same frames, and the 10 ms a frame may take.
#include "BenchReport.h"
#include "toolboxes/importData/volume/DisplayImage.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <map>
#include <string>

#include <unistd.h>

using namespace torvex;

namespace {

constexpr int64_t side = 4096;
constexpr int64_t frameBytes = side * side * 2;
constexpr int64_t frames = (int64_t{1} << 30) / frameBytes;
constexpr double limitMs = 10;

// The volume, one byte longer than 1 GiB so that frames can start at odd addresses.
const QByteArray& volume()
{
    static const QByteArray bytes = [] {
        QByteArray b(frames * frameBytes + 1, Qt::Uninitialized);
        uint32_t state = 12345; // xorshift: values all over the range, made fast
        for (char& c : b) {
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            c = static_cast<char>(state);
        }
        return b;
    }();
    return bytes;
}

struct Layout {
    const char* name;
    int64_t offset; // of the first frame
    Shape strides;  // of a frame
    ByteOrder order = ByteOrder::Native;
};

const Layout layouts[] = {
    {"C order", 0, {side * 2, 2}},
    {"column-major", 0, {2, side * 2}},
    {"odd address", 1, {side * 2, 2}},
    {"big-endian", 0, {side * 2, 2}, ByteOrder::Big},
};

NdArray frameAt(const Layout& layout, int64_t index)
{
    return NdArray::strided(volume(), layout.offset + index * frameBytes, {side, side}, layout.strides,
                            DType::UInt16, layout.order);
}

// What a straightforward conversion does: one pass for min and max, one to
// scale, both in the image's row order; rows of adjacent elements are walked
// as such, so that the compiler vectorises them (this file is built with -O3,
// these loops also for AVX2, as the conversion is).
uint16_t elementAt(const std::byte* p)
{
    uint16_t v;
    std::memcpy(&v, p, 2);
    return v;
}

__attribute__((target_clones("avx2", "default"))) void widenByRow(const std::byte* row, int64_t n, int64_t stride,
                                                                  uint16_t& lo, uint16_t& hi)
{
    uint16_t rowLo = lo, rowHi = hi; // locals: the bytes read might alias references
    if (stride == 2) {
        for (int64_t x = 0; x < n; ++x) {
            const uint16_t v = elementAt(row + 2 * x);
            rowLo = v < rowLo ? v : rowLo;
            rowHi = v > rowHi ? v : rowHi;
        }
    } else {
        for (int64_t x = 0; x < n; ++x) {
            const uint16_t v = elementAt(row + stride * x);
            rowLo = v < rowLo ? v : rowLo;
            rowHi = v > rowHi ? v : rowHi;
        }
    }
    lo = rowLo;
    hi = rowHi;
}

__attribute__((target_clones("avx2", "default"))) void scaleRow(const std::byte* row, int64_t n, int64_t stride,
                                                                uint16_t lo, float scale, uint8_t* out)
{
    if (stride == 2) {
        for (int64_t x = 0; x < n; ++x)
            out[x] = static_cast<uint8_t>(static_cast<float>(elementAt(row + 2 * x) - lo) * scale);
        return;
    }
    for (int64_t x = 0; x < n; ++x)
        out[x] = static_cast<uint8_t>(static_cast<float>(elementAt(row + stride * x) - lo) * scale);
}

QImage referenceImage(const NdArray& frame)
{
    const int64_t h = frame.extent(0), w = frame.extent(1);
    uint16_t lo = 65535, hi = 0;
    for (int64_t y = 0; y < h; ++y) widenByRow(frame.data() + y * frame.stride(0), w, frame.stride(1), lo, hi);
    QImage image(static_cast<int>(w), static_cast<int>(h), QImage::Format_Grayscale8);
    const float scale = hi > lo ? 255.0f / static_cast<float>(hi - lo) : 0.0f;
    for (int64_t y = 0; y < h; ++y)
        scaleRow(frame.data() + y * frame.stride(0), w, frame.stride(1), lo, scale,
                 image.scanLine(static_cast<int>(y)));
    return image;
}

template <class Convert> void cycleFrames(benchmark::State& state, const Layout& layout, Convert convert)
{
    int64_t index = 0;
    for (auto _ : state) {
        const QImage image = convert(frameAt(layout, index));
        benchmark::DoNotOptimize(image.constBits());
        index = (index + 1) % frames;
    }
}

// Keeps the time per frame of each run, for the summary. With repetitions,
// the median stands for the run (it is reported after the repetitions).
class SummaryReporter : public benchmark::ConsoleReporter {
public:
    using ConsoleReporter::ConsoleReporter;

    std::map<std::string, double> msPerFrame;

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.error_occurred || (run.run_type == Run::RT_Aggregate && run.aggregate_name != "median"))
                continue;
            msPerFrame[run.run_name.function_name] = run.GetAdjustedRealTime();
        }
        ConsoleReporter::ReportRuns(runs);
    }
};

} // namespace

int main(int argc, char** argv)
{
    volume(); // made before any timing
    for (const Layout& layout : layouts) {
        benchmark::RegisterBenchmark((std::string("display/") + layout.name).c_str(),
                                     [&layout](benchmark::State& s) { cycleFrames(s, layout, displayImage); })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
        benchmark::RegisterBenchmark((std::string("reference/") + layout.name).c_str(),
                                     [&layout](benchmark::State& s) { cycleFrames(s, layout, referenceImage); })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
    benchmark::Initialize(&argc, argv);
    // Colours only on a terminal: their codes would run into the lines read by bench/report.sh.
    SummaryReporter reporter(isatty(STDOUT_FILENO) ? SummaryReporter::OO_Defaults : SummaryReporter::OO_Tabular);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    // Runs left out by --benchmark_filter are left out of the summary too.
    for (const Layout& layout : layouts) {
        const auto display = reporter.msPerFrame.find(std::string("display/") + layout.name);
        const auto native = reporter.msPerFrame.find("display/C order");
        if (display != reporter.msPerFrame.end() && layout.order == ByteOrder::Big && native != reporter.msPerFrame.end())
            bench::reportFigure(std::string("display 4096x4096 uint16 frame, ") + layout.name, display->second, "ms",
                                "<= 1.5 x C order (" + bench::number(native->second) + " ms)",
                                display->second / (1.5 * native->second), display->second <= 1.5 * native->second);
        else if (display != reporter.msPerFrame.end())
            bench::reportAtMost(std::string("display 4096x4096 uint16 frame, ") + layout.name, display->second,
                                "ms", limitMs);
        const auto reference = reporter.msPerFrame.find(std::string("reference/") + layout.name);
        if (reference != reporter.msPerFrame.end())
            bench::reportInfo(std::string("display reference: plain min/max + scale loop, ") + layout.name,
                              reference->second, "ms");
    }
    return 0;
}
