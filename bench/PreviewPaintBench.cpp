// The Volume Data preview in a real X window: from a change of the frame or of
// the width to the new frame on screen, for a 2 GiB file of 4096 x 4096
// 16-bit frames. Needs an X server (DISPLAY); bench/report.sh starts one.
#include "BenchReport.h"
#include "../tests/support/VolumePanel.h"
#include "host/HostWindow.h"
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/ui/PreviewSurface.h"
#include "toolboxes/importData/volume/Histogram.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QtGui/qguiapplication_platform.h>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

#include <unistd.h>

using namespace torvex;

namespace {

constexpr int kSide = 4096, kFrames = 64;

void writeVolume(const QString& path)
{
    std::vector<uint16_t> frame(size_t{kSide} * kSide);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) std::abort();
    for (int f = 0; f < kFrames; ++f) {
        // A ramp that moves from frame to frame, so that each frame looks different.
        for (size_t i = 0; i < frame.size(); ++i)
            frame[i] = static_cast<uint16_t>((i % kSide) * 13 + (i / kSide) * 5 + f * 997);
        file.write(reinterpret_cast<const char*>(frame.data()), static_cast<qint64>(frame.size() * 2));
    }
    // On disk before the clock starts: no write-back competes with the opening.
    file.flush();
    ::fsync(file.handle());
}

// Counts the paints of a widget.
struct PaintCounter : QObject {
    int paints = 0;
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) ++paints;
        return false;
    }
};

// The X server has done every request sent so far: a round trip.
void syncWithServer()
{
    auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* connection = x11->connection();
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

// Milliseconds from the start of `change` until the surface has painted
// afterwards and the X server holds the pixels.
double msUntilPainted(QWidget* viewport, PaintCounter& counter, const std::function<void()>& change)
{
    QElapsedTimer timer;
    timer.start();
    const int before = counter.paints;
    change();
    while (counter.paints == before && timer.elapsed() < 10000) QApplication::processEvents(QEventLoop::AllEvents, 5);
    // The paint has gone to the back buffer; the flush to the window follows in the same pass.
    QApplication::processEvents();
    syncWithServer();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "xcb");
    if (qEnvironmentVariableIsEmpty("DISPLAY")) {
        std::fprintf(stderr, "no DISPLAY: this benchmark needs an X server\n");
        return 1;
    }
    QApplication app(argc, argv);
    QTemporaryDir dir;
    const QString path = dir.filePath("volume_4096x4096x64_u16.raw");
    writeVolume(path);

    PaintCounter counter;
    QElapsedTimer opening;
    opening.start();
    HostWindow host(path);
    ImportData& w = *host.importData();
    QWidget* viewport = w.preview_layoutWin->viewport();
    viewport->installEventFilter(&counter);
    test::enterVolumePanel(w, {.layout = {.imgType = "16-bit Unsigned", .width = kSide, .height = kSide, .frame = kFrames}});
    host.resize(1400, 900);
    host.show();
    msUntilPainted(viewport, counter, [] {});
    const double openedMs = static_cast<double>(opening.nsecsElapsed()) / 1e6;
    if (!w.transferedData || w.transferedData->extent(0) != kFrames) {
        std::fprintf(stderr, "the volume did not open as 64 frames of 4096 x 4096\n");
        return 1;
    }
    bench::reportInfo("window with the first 4096x4096 u16 frame of a 2 GiB file on screen", openedMs, "ms");

    const auto pageThrough = [&](int first, int count) {
        std::vector<double> times;
        for (int frame = first; frame < first + count; ++frame)
            times.push_back(msUntilPainted(viewport, counter, [&] { w.ui->spinBox_frame->setValue(frame); }));
        return median(times);
    };
    bench::reportAtMost("next 4096x4096 u16 frame on screen, fitted (median of 11)", pageThrough(2, 11), "ms", 50);
    // About 1.6 screen pixels per array pixel: drawn from the full frame.
    w._preview_plot->zoomAbout(QPointF(viewport->width() / 2.0, viewport->height() / 2.0), 8);
    bench::reportAtMost("next frame on screen, zoomed in past 1:1 (median of 11)", pageThrough(13, 11), "ms", 50);
    w._preview_plot->autoRange();

    // The strip under the preview: its histogram, and paging with a range of the user's.
    const NdArray frame = w.transferedData->index(0);
    const std::optional<ValueRange> values = displayFrame(frame).values;
    std::vector<double> histograms;
    for (int i = 0; i < 11; ++i) {
        QElapsedTimer timer;
        timer.start();
        sampledHistogram(frame, values.value_or(ValueRange{0, 1}), 256, drawnHistogramSamples);
        histograms.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    bench::reportAtMost("histogram of a 4096x4096 u16 frame, as drawn (median of 11)", median(histograms), "ms", 10);
    w.preview_ImgItem->setLevels(ValueRange{1000, 30000});
    bench::reportAtMost("next frame on screen with a display range set (median of 11)", pageThrough(24, 11), "ms", 50);
    w.preview_ImgItem->setLevels(std::nullopt);

    // What a paint costs by itself, against a frame of a 16th of the side: the
    // view draws what it shows at screen resolution, whatever the frame's size.
    const auto repaintMs = [&] {
        std::vector<double> times;
        for (int i = 0; i < 21; ++i) {
            QElapsedTimer timer;
            timer.start();
            viewport->repaint();
            times.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
        }
        return median(times);
    };
    bench::reportInfo("repaint of the fitted preview, 4096x4096 frame (median of 21)", repaintMs(), "ms");
    w.preview_ImgItem->setImage(frame.slice(0, 0, kSide, 16).slice(1, 0, kSide, 16));
    bench::reportInfo("repaint of the fitted preview, 256x256 frame (median of 21)", repaintMs(), "ms");

    std::vector<double> widths;
    for (int i = 0; i < 6; ++i)
        widths.push_back(
            msUntilPainted(viewport, counter, [&] {
                test::editVolumePanel(w, [&](VolumeParams& p) { p.layout.width = i % 2 ? kSide : kSide - 96; });
            }));
    bench::reportAtMost("4096x4096 u16 frame on screen after a width change (median of 6)", median(widths), "ms", 50);
    return 0;
}
