// The window with raw files: opening, the panel's reaction, preview, readout,
// entries brought back into the widgets, renamed and imported; and drops of
// local files and folders, which choose the mode by themselves.
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/ui/LevelsHistogram.h"
#include "toolboxes/importData/ui/PreviewSurface.h"
#include "toolboxes/importData/ui/ImportDataForm.h"

#include "../support/ModalWatcher.h"
#include "../support/TempFiles.h"
#include "../support/VolumePanel.h"

#include <QCheckBox>
#include <QDir>
#include <QDropEvent>
#include <QLabel>
#include <QMainWindow>
#include <QMimeData>
#include <QStatusBar>
#include <QToolButton>

#include <gtest/gtest.h>

using namespace torvex;

namespace {

class VolumeWindow : public ::testing::Test {
protected:
    QTemporaryDir dir;
    // Exactly one 8-bit frame of the start settings (400 x 640).
    QString exactFile = test::writeFile(dir.filePath("exact.raw"), QByteArray(400 * 640, '\x07'));
    // Two 8 x 6 frames of 16-bit values.
    QString second = test::writeFile(dir.filePath("second.raw"), QByteArray(2 * 8 * 6 * 2, '\x01'));
    // For drops: an image by its name, another file and a folder.
    QString png = test::writeFile(dir.filePath("B.PNG"), "not really a png");
    QString other = test::writeFile(dir.filePath("a.dat"), "x");
    QString folder = QDir(dir.path()).mkdir("sub") ? dir.filePath("sub") : QString();
    QString status(ImportData& w) { return w.ui->statusbar->currentMessage(); }
};

// The window with its drag handlers in reach: Qt delivers a drop only to the
// widget that accepted the drag's entry, which a test has no real drag for.
struct DropTarget : ImportData {
    using ImportData::ImportData;

    // Hands local paths (or other URLs) to the handler of E; whether the window accepted them.
    template <class E>
    bool deliver(const QStringList& paths)
    {
        QList<QUrl> urls;
        for (const QString& path : paths) urls << (path.startsWith('/') ? QUrl::fromLocalFile(path) : QUrl(path));
        QMimeData mime;
        mime.setUrls(urls);
        E event(QPoint(5, 5), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        event.setAccepted(false);
        if constexpr (std::is_same_v<E, QDropEvent>) dropEvent(&event);
        else dragEnterEvent(&event);
        return event.isAccepted();
    }
};

} // namespace

TEST_F(VolumeWindow, OpeningAFileDecodesShowsTheBadgeAndMakesOneEntry)
{
    ImportData w(nullptr, nullptr, {}, exactFile);
    EXPECT_EQ(w.windowTitle(), "Import Data - " + exactFile);
    EXPECT_EQ(status(w), "File loaded successfully!");
    ASSERT_TRUE(w.prasedData);
    EXPECT_EQ(w.prasedData->shape(), (Shape{1, 640, 400, 1}));
    EXPECT_EQ(w._bytes_badge->text(), QString::fromUtf8("\u2714\u00a0All bytes matched"));
    EXPECT_TRUE(w._bytes_badge->isVisibleTo(&w));
    ASSERT_EQ(w.ui->listWidget_data->count(), 1);
    EXPECT_EQ(w.ui->listWidget_data->item(0)->text(), "cdata");

    // Later panel changes update the entry instead of adding one.
    test::editVolumePanel(w, [](VolumeParams& p) { p.layout.height = 320; });
    EXPECT_EQ(w._bytes_badge->text(), QString::fromUtf8("\u26a0\u00a0+128000 B"));
    EXPECT_EQ(w.ui->listWidget_data->count(), 1);
    EXPECT_EQ(w.ui->listWidget_data->item(0)->data(Qt::UserRole).value<DataEntry>().params->layout.height, 320);

    // Two frames of 320 rows, permuted to 320 frames of 2 rows.
    test::editVolumePanel(w, [](VolumeParams& p) { p.layout.frame = 2; });
    EXPECT_EQ(w.ui->label_totalFrame->text(), "/ 2");
    w.ui->spinBox_frame->setValue(2);
    test::editVolumePanel(w, [](VolumeParams& p) { p.transfer.permute = "1,0,2"; });
    EXPECT_EQ(w.transferedData->shape(), (Shape{320, 2, 400, 1}));
    EXPECT_EQ(w.ui->spinBox_frame->maximum(), 320);
    EXPECT_EQ(w.ui->spinBox_frame->value(), 2);
    EXPECT_FALSE(w.ui->spinBox_frame->isHidden());
}

// The panel's rules under random edits are the decode property test's; here
// what it leaves out: the exact text, the badge, and files that fail or are empty.
TEST_F(VolumeWindow, BadParametersAndBadFilesReport)
{
    ImportData w(nullptr, nullptr, {}, exactFile);
    test::editVolumePanel(w, [](VolumeParams& p) { p.layout.frame = 1000000; });
    EXPECT_EQ(status(w), "Error: The image data is not complete");
    test::editVolumePanel(w, [](VolumeParams& p) { p.layout.frame = 1, p.layout.width = 0; });
    EXPECT_TRUE(w._bytes_badge->isHidden());

    test::ModalWatcher watcher;
    w.openFile(dir.filePath("missing.raw"));
    EXPECT_FALSE(w.readedBinary);
    ASSERT_EQ(watcher.texts.size(), 1);
    EXPECT_TRUE(watcher.texts[0].startsWith("Error|Error reading file:\n"));
    EXPECT_EQ(w.windowTitle(), "Import Data - " + exactFile);

    const QString empty = test::writeFile(dir.filePath("empty.raw"), {});
    w.openFile(empty);
    EXPECT_TRUE(w.readedBinary && w.readedBinary->isEmpty());
    EXPECT_TRUE(status(w) == "File loaded successfully!");
    EXPECT_EQ(w._bytes_badge->text(), QString::fromUtf8("\u26a0\u00a0-256000 B"));
}

TEST_F(VolumeWindow, EachLoadIsARowThatBringsItsPanelBackUnderAPythonName)
{
    ImportData w(nullptr, nullptr, {}, exactFile);
    w.openFile(second);
    const VolumeParams edited{.layout = {"16-bit Unsigned", 0, 0, 8, 6, 2, ByteOrder::Big}, .transfer = {.hflip = true}};
    test::enterVolumePanel(w, edited);
    ASSERT_EQ(w.ui->listWidget_data->count(), 2);
    EXPECT_EQ(w.ui->listWidget_data->item(1)->text(), "cdata_1");
    EXPECT_EQ(w.ui->label_data_mode->text(), ""); // a new entry is current before it holds data

    w.ui->spinBox_frame->setValue(2);
    w.ui->listWidget_data->setCurrentRow(0);
    EXPECT_EQ(w.ui->label_data_mode->text(), "Volume Data");
    EXPECT_EQ(w._captureVolumeParams(), VolumeParams::resetValues());
    EXPECT_EQ(w.ui->lineEdit_files_folder->text(), exactFile);
    EXPECT_EQ(status(w), exactFile);

    w.ui->listWidget_data->setCurrentRow(1);
    EXPECT_EQ(w._captureVolumeParams(), edited);
    EXPECT_EQ(w.ui->spinBox_frame->value(), 1);
    EXPECT_EQ(w.ui->label_totalFrame->text(), "/ 2");

    // Renames are forced to Python names and select their row; duplicates are allowed.
    QListWidgetItem* first = w.ui->listWidget_data->item(0);
    first->setText("  my data ");
    EXPECT_EQ(first->text(), "my_data");
    EXPECT_EQ(w.ui->listWidget_data->currentItem(), first);
    w.ui->listWidget_data->item(1)->setText("my_data");
    EXPECT_EQ(w.ui->listWidget_data->item(1)->text(), "my_data");
    EXPECT_EQ(w.session().entries.find(1)->name, "my_data");
}

// What an import holds in each format is the function dialog test's.
TEST_F(VolumeWindow, ImportFailuresReportOnTheHostOrInABox)
{
    QMainWindow host;
    host.statusBar();
    // Without a context the failure goes to the host's status bar only.
    ImportData orphan(&host, nullptr, {}, exactFile);
    test::ModalWatcher watcher;
    orphan.onImport();
    EXPECT_TRUE(watcher.texts.isEmpty());
    EXPECT_EQ(host.statusBar()->currentMessage(), "The window has no application context");
    ImportData empty;
    empty.onImport();
    EXPECT_EQ(watcher.texts, QStringList{"Error|No data to import"});
}

TEST_F(VolumeWindow, DropsRouteByWhatIsDroppedAndNothingUsableIsIgnored)
{
    // What is dropped; the mode it sets (0 a raw volume, 1 images); the source shown; the images listed.
    const struct { QStringList dropped; int mode; QString shown; QStringList listed; } rows[] = {
        {{exactFile}, 0, exactFile, {}},
        {{png}, 1, dir.path(), {png}},                           // a capital extension is still an image
        {{exactFile, other}, 1, dir.path(), {other, exactFile}}, // several files: images, sorted
        {{folder, other}, 1, dir.path(), {other}},               // files win over folders
        {{folder, dir.path()}, 1, folder, {}},                   // the first folder only
    };
    DropTarget w(nullptr, nullptr, {}, exactFile);
    // Drops of nothing usable are ignored and keep the source.
    EXPECT_FALSE(w.deliver<QDropEvent>({"https://example.org/a.png"}));
    EXPECT_EQ(status(w), "Error: No valid files or folders");
    EXPECT_FALSE(w.deliver<QDropEvent>({dir.filePath("gone.raw")}));
    EXPECT_FALSE(w.deliver<QDropEvent>({}));
    EXPECT_TRUE(w.readedBinary.has_value());
    // A drag is welcome when it holds an existing local path.
    EXPECT_TRUE(w.deliver<QDragEnterEvent>({"https://example.org/a.png", dir.filePath("gone"), exactFile}));
    EXPECT_FALSE(w.deliver<QDragEnterEvent>({"https://example.org/a.png"}));

    for (const auto& row : rows) {
        SCOPED_TRACE(row.dropped.join(", ").toStdString());
        EXPECT_TRUE(w.deliver<QDropEvent>(row.dropped));
        EXPECT_EQ(w.ui->comboBox_outputType->currentIndex(), row.mode);
        EXPECT_EQ(w.ui->lineEdit_files_folder->text(), row.shown);
        EXPECT_EQ(w.fileList.value_or(QStringList()), row.listed);
        EXPECT_EQ(w.readedBinary.has_value(), row.mode == 0);
    }
}

// Each panel widget writes and reads its own field, quietly: a record unlike the
// defaults in every field comes back whole with nothing decoded, an empty one
// leaves the panel alone, and the fields a record lacks restore their defaults.
TEST_F(VolumeWindow, ThePanelGivesBackEveryFieldOfTheRecordItRestores)
{
    ImportData w(nullptr, nullptr, {}, exactFile);
    const VolumeParams record{.layout = {"32-bit Real", 3, 5, 7, 9, 2, ByteOrder::Big, "C", "ABCABC"},
                              .transfer = {"2,0,1", true, true}};
    for (const auto& restored : {std::optional(record), std::optional<VolumeParams>(), std::optional(record)}) {
        w._restoreVolumeParams(restored);
        EXPECT_EQ(w._captureVolumeParams(), record);
        EXPECT_EQ(w.prasedData->shape(), (Shape{1, 640, 400, 1}));
    }
    // The byte-order boxes exclude each other.
    test::volumePanelWidget<QCheckBox>(w, [](VolumeParams& p) { p.layout.byteOrder = ByteOrder::Little; })->click();
    EXPECT_EQ(w._captureVolumeParams().layout.byteOrder, ByteOrder::Little);
    w._restoreVolumeParams(VolumeParams{.layout = {.width = 7}});
    EXPECT_EQ(w._captureVolumeParams(), VolumeParams{.layout = {.width = 7}});
}

TEST_F(VolumeWindow, ReadoutFollowsTheMouseLevelsChangeTheDisplayOnlyDoubleClickFits)
{
    // Two 8-bit frames of 400 x 640, column x holding x % 200, plus 50 in the second.
    QByteArray bytes(2 * 400 * 640, 0);
    for (int i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i % 400 % 200 + (i >= 400 * 640 ? 50 : 0));
    ImportData w(nullptr, nullptr, {}, test::writeFile(dir.filePath("ramp.raw"), bytes));
    test::editVolumePanel(w, [](VolumeParams& p) { p.layout.readOrder = "C", p.layout.frame = 2; });
    w.resize(900, 700);
    w.show();
    QApplication::processEvents();
    auto* levels = w.ui->page_prev_stackImages->findChild<LevelsHistogram*>();
    ASSERT_TRUE(levels);
    PreviewSurface* surface = w.preview_layoutWin;
    const QPointF pixel(150.5, 320.5); // value 150, then 200
    const auto shownGray = [&] {
        return qGray(surface->viewport()->grab().toImage().pixel(surface->mapFromScene(pixel)));
    };
    const auto readout = [&] {
        w._onVolumeMouseMoved(pixel);
        return w._pixel_info_label->text();
    };
    const auto drag = [&](double from, double to) {
        for (auto [type, x] :
             {std::pair{QEvent::MouseButtonPress, from}, {QEvent::MouseMove, to}, {QEvent::MouseButtonRelease, to}}) {
            QMouseEvent event(type, QPointF(x, 20), levels->mapToGlobal(QPointF(x, 20)), Qt::LeftButton,
                              type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(levels, &event);
        }
        QApplication::processEvents();
    };
    // Zoomed in, so that a screen pixel shows one array pixel.
    const QRectF fitted = w._preview_plot->sceneBoundingRect();
    w._preview_plot->zoomAbout(surface->mapFromScene(pixel), 4);
    const QByteArray data(reinterpret_cast<const char*>(w.transferedData->data()), w.transferedData->nbytes());
    const QString readBefore = readout();
    EXPECT_EQ(readBefore, QString::fromUtf8("X:150  Y:320  \u25b6  150"));
    w._onVolumeMouseMoved({-5, 10}); // off the frame
    EXPECT_EQ(w._pixel_info_label->text(), "");
    EXPECT_EQ(levels->shownLevels(), (ValueRange{0, 199}));
    EXPECT_EQ(shownGray(), 150 * 255 / 199);

    // The top handle to 99: whole numbers, 150 saturates; the range stays for the next frame.
    drag(levels->xOf(199), levels->xOf(99.2));
    EXPECT_EQ(w.preview_ImgItem->levels(), (ValueRange{0, 99}));
    EXPECT_FALSE(levels->autoButton()->isChecked());
    EXPECT_EQ(shownGray(), 255);
    drag(levels->xOf(0), levels->xOf(500)); // the bottom one stops short of the top one
    EXPECT_EQ(w.preview_ImgItem->levels(), (ValueRange{98, 99}));
    EXPECT_EQ(readout(), readBefore);
    w.ui->spinBox_frame->setValue(2);
    EXPECT_EQ(w.preview_ImgItem->levels(), (ValueRange{98, 99}));

    // Auto: each frame by its own range again.
    levels->autoButton()->click();
    EXPECT_TRUE(levels->autoButton()->isChecked());
    EXPECT_EQ(levels->shownLevels(), (ValueRange{50, 249}));
    EXPECT_EQ(shownGray(), (200 - 50) * 255 / 199);
    EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(w.transferedData->data()), w.transferedData->nbytes()), data);

    // A double-click fits the frame again.
    const QPointF at(50, 50);
    QMouseEvent click(QEvent::MouseButtonDblClick, at, surface->viewport()->mapToGlobal(at), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(surface->viewport(), &click);
    EXPECT_EQ(w._preview_plot->sceneBoundingRect(), fitted);
}
