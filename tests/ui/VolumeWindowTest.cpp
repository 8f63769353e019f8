// The window with a raw file: opening, the panel's reaction, preview, readout.
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/ui/PreviewSurface.h"
#include "toolboxes/importData/ui/ImportDataForm.h"

#include "../support/ModalWatcher.h"
#include "../support/TempFiles.h"

#include <QLabel>
#include <QStatusBar>

#include <gtest/gtest.h>

using namespace torvex;

namespace {

QByteArray ramp(int64_t n)
{
    QByteArray out(n, Qt::Uninitialized);
    for (qsizetype i = 0; i < n; ++i) out[i] = static_cast<char>(i * 7);
    return out;
}

class VolumeWindow : public ::testing::Test {
protected:
    QTemporaryDir dir;
    // Exactly one 8-bit frame of the start settings (400 x 640).
    QString exactFile = test::writeFile(dir.filePath("exact.raw"), ramp(400 * 640));
    QString status(ImportData& w) { return w.ui->statusbar->currentMessage(); }
};

} // namespace

TEST_F(VolumeWindow, OpeningAFileDecodesShowsTheBadgeAndMakesOneEntry)
{
    ImportData w(nullptr, nullptr, {}, exactFile);
    EXPECT_EQ(w.windowTitle(), "Import Data - " + exactFile);
    EXPECT_EQ(status(w), "File loaded successfully!");
    ASSERT_TRUE(w.prasedData);
    EXPECT_EQ(w.prasedData->shape(), (Shape{1, 640, 400, 1}));
    EXPECT_EQ(w.transferedData->data(), w.prasedData->data());
    EXPECT_EQ(w._bytes_badge->text(), QString::fromUtf8("\u2714\u00a0All bytes matched"));
    EXPECT_TRUE(w._bytes_badge->isVisibleTo(&w));
    ASSERT_EQ(w.ui->listWidget_data->count(), 1);
    EXPECT_EQ(w.ui->listWidget_data->item(0)->text(), "cdata");
    EXPECT_FALSE(w._pending_add_entry);

    // Later panel changes update the entry instead of adding one.
    w.ui->spinBox_height->setValue(320);
    EXPECT_EQ(w._bytes_badge->text(), QString::fromUtf8("\u26a0\u00a0+128000 B"));
    EXPECT_EQ(w.ui->listWidget_data->count(), 1);
    EXPECT_EQ(w.ui->listWidget_data->item(0)->data(Qt::UserRole).value<DataEntry>().params->height, 320);

    // Two frames of 320 rows, permuted to 320 frames of 2 rows, then flipped.
    w.ui->spinBox_totalFrame->setValue(2);
    EXPECT_EQ(w.prasedData->shape(), (Shape{2, 320, 400, 1}));
    EXPECT_EQ(w.ui->label_totalFrame->text(), "/ 2");
    w.ui->spinBox_frame->setValue(2);
    w.ui->comboBox_permute->setCurrentText("1,0,2");
    EXPECT_EQ(w.transferedData->shape(), (Shape{320, 2, 400, 1}));
    EXPECT_TRUE(w.transferedData->sharesStorageWith(*w.prasedData));
    EXPECT_EQ(w.ui->spinBox_frame->maximum(), 320);
    EXPECT_EQ(w.ui->spinBox_frame->value(), 2);
    EXPECT_FALSE(w.ui->spinBox_frame->isHidden());
}

// The panel's rules under random edits are the decode property test's; here
// what it leaves out: the exact text, the badge, and files that fail or are empty.
TEST_F(VolumeWindow, BadParametersAndBadFilesReport)
{
    ImportData w(nullptr, nullptr, {}, exactFile);
    w.ui->spinBox_totalFrame->setValue(1000000);
    EXPECT_EQ(status(w), "Error: The image data is not complete");
    w.ui->spinBox_totalFrame->setValue(1);
    w.ui->spinBox_width->setValue(0);
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

TEST_F(VolumeWindow, ReadoutFollowsTheMouseOverTheShownFrame)
{
    ImportData w(nullptr, nullptr, {}, exactFile);
    w.resize(900, 700);
    w.show();
    w._onVolumeMouseMoved(w._preview_plot->sceneBoundingRect().center());
    const QString text = w._pixel_info_label->text();
    EXPECT_TRUE(text.startsWith("X:")) << text.toStdString();
    w._onVolumeMouseMoved(w._preview_plot->sceneBoundingRect().bottomRight() + QPointF(50, 50));
    EXPECT_EQ(w._pixel_info_label->text(), "");
}
