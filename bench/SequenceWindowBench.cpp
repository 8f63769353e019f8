// The image-sequence side of the window under load: choosing frames in a
// 1000-frame stack, opening a folder of 20 000 files, and how soon the first
// image of a load is on screen once decoded.
#include "BenchReport.h"
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/ui/PreviewImageItem.h"

#include <QApplication>
#include <QImage>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <functional>

using namespace torvex;

namespace {

double secondsOf(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void report(const char* what, double seconds, double limit)
{
    bench::reportAtMost(what, seconds * 1e3, "ms", limit * 1e3);
}

// A window holding a loaded stack of `frames` 512 x 512 RGB images, all checked.
void loadStack(ImportData& w, int frames)
{
    NdArray stack = NdArray::empty({frames, 512, 512, 3}, DType::UInt8);
    std::fill_n(stack.mutableData(), stack.nbytes(), std::byte{7});
    QStringList files;
    for (int i = 0; i < frames; ++i) files << QString("/data/frame_%1.png").arg(i, 4, 10, QChar('0'));
    w.ui->comboBox_outputType->setCurrentIndex(1);
    w.filteredList = files;
    w._populateImageListWidget(files, true);
    for (int i = 0; i < frames; ++i) w.checkedIndexes << i;
    w.imageSequence = stack;
    w.selectedimageSequence = stack;
    w._refreshPreview();
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    {
        ImportData w;
        loadStack(w, 1000);
        w.ui->spinBox_rg2->setMaximum(1000);
        w.ui->spinBox_rg2->setValue(10);
        report("range 1..1000 chosen in a 1000-frame 512x512 RGB stack",
               secondsOf([&] { w.ui->spinBox_rg2->setValue(1000); }), 0.1);
        double worst = 0;
        for (int row = 0; row < 1000; row += 50)
            worst = std::max(worst, secondsOf([&] { w.ui->listWidget_imageList->item(row)->setCheckState(Qt::Unchecked); }));
        report("worst single uncheck in the 1000-frame stack", worst, 0.1);
        report("select all again in the 1000-frame stack", secondsOf([&] { w.onSelectAll(); }), 0.1);
    }
    {
        QTemporaryDir dir;
        for (int i = 0; i < 20000; ++i) {
            QFile file(dir.filePath(QString("img_%1.png").arg(i, 5, 10, QChar('0'))));
            file.open(QIODevice::WriteOnly);
        }
        ImportData w(nullptr, nullptr, {}, {}, true);
        report("open a folder of 20 000 files, listed and sorted, until the load starts",
               secondsOf([&] { w.openFile(dir.path()); }), 0.1);
    }
    {
        // Large images, so that the first is decoded well after the load starts.
        QTemporaryDir dir;
        QImage image(2048, 2048, QImage::Format_RGB888);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) image.setPixel(x, y, qRgb(x ^ y, x * 7 + y, (x * y) >> 4));
        for (int i = 0; i < 8; ++i) image.save(dir.filePath(QString("big_%1.png").arg(i)));
        ImportData w(nullptr, nullptr, {}, {}, true);
        std::chrono::steady_clock::time_point decoded, shown;
        w.openFile(dir.path());
        // In the loader's thread, the moment the decoded image is sent.
        QObject::connect(w._loader_worker.data(), &_ImageLoaderWorker::frameDecoded, w._loader_worker.data(),
                         [&] { decoded = std::chrono::steady_clock::now(); }, Qt::DirectConnection);
        QObject::connect(w.preview_ImgItem2, &PreviewImageItem::frameShown, &w, [&] {
            if (shown == std::chrono::steady_clock::time_point{}) shown = std::chrono::steady_clock::now();
        });
        while (shown == std::chrono::steady_clock::time_point{} && w.session().load.running())
            QApplication::processEvents(QEventLoop::AllEvents, 1);
        report("first image of a load on screen after its decode", std::chrono::duration<double>(shown - decoded).count(),
               0.1);
    }
    return 0;
}
