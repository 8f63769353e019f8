// Image sequences in the window: the filtered list, the background load, the choice of frames.
#include "toolboxes/importData/ImportData.h"

#include "../support/TempFiles.h"
#include "../support/WaitUntil.h"

#include <QThread>

#include <gtest/gtest.h>

using namespace torvex;

namespace {

class SequenceWindow : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        folder = new QTemporaryDir;
        // Three gray images of 4 x 6, 5 x 6 and 4 x 6 pixels, and a text file.
        test::runPython("import sys, numpy\nfrom PIL import Image\nd = sys.argv[1]\n"
                        "for i, h in enumerate((4, 5, 4)):\n"
                        "    Image.fromarray((numpy.arange(h * 6).reshape(h, 6) * 5 + i).astype('uint8')).save(f'{d}/img{i}.png')\n"
                        "open(f'{d}/notes.txt', 'w').write('hello')\n",
                        {folder->path()});
    }
    static void TearDownTestSuite() { delete folder; }
    static QTemporaryDir* folder;

    static bool waitForLoad(ImportData& w)
    {
        return test::waitUntil([&] { return w.imageSequence && !(w._loader_thread && w._loader_thread->isRunning()); });
    }
    static QString status(ImportData& w) { return w.ui->statusbar->currentMessage(); }
};
QTemporaryDir* SequenceWindow::folder = nullptr;

} // namespace

TEST_F(SequenceWindow, AFolderLoadsFilteredAndStacked)
{
    ImportData w(nullptr, nullptr, {}, folder->path(), true);
    ASSERT_TRUE(waitForLoad(w));
    EXPECT_EQ(w.fileList->size(), 4);
    EXPECT_EQ(w.filteredList->size(), 4); // the wildcard "*" passes everything
    EXPECT_EQ(w.imageSequence->shape(), (Shape{4, 5, 6})); // text file as a placeholder frame
    EXPECT_EQ(status(w), w.filteredList->at(0)); // the preview names the file of the frame shown
    EXPECT_EQ(w.ui->listWidget_data->item(0)->text(), "data_imgs");
    EXPECT_TRUE(w.ui->pushButton_import->isEnabled());

    w.ui->lineEdit_filter->setText("*.png");
    w.onFilterChanged();
    ASSERT_TRUE(waitForLoad(w));
    ASSERT_EQ(w.ui->listWidget_imageList->count(), 3);

    // A bad pattern changes nothing.
    w.ui->radioButton_regex->setChecked(true);
    w.ui->lineEdit_filter->setText("(");
    w.onFilterChanged();
    EXPECT_TRUE(status(w).startsWith("Error: "));
    EXPECT_EQ(w.filteredList->size(), 3);
    EXPECT_TRUE(w.imageSequence.has_value());
}

TEST_F(SequenceWindow, ChecksRangesAndRowsChooseTheFrames)
{
    ImportData w(nullptr, nullptr, {}, folder->path(), true);
    w.ui->lineEdit_filter->setText("img*");
    w.onFilterChanged();
    ASSERT_TRUE(waitForLoad(w));
    QListWidget* list = w.ui->listWidget_imageList;
    const NdArray stack = *w.imageSequence;

    list->item(1)->setCheckState(Qt::Unchecked);
    EXPECT_EQ(w.checkedIndexes, (QList<int>{0, 2}));
    EXPECT_EQ(w.selectedimageSequence->shape(), (Shape{2, 5, 6}));
    EXPECT_EQ(w.selectedimageSequence->index(1).data(), stack.index(2).data());
    EXPECT_EQ(w.ui->label_totalFrame->text(), "/ 2");
    // Clicking a chosen row shows its frame; an unchosen one only its path.
    w.onImageListRowChanged(2);
    EXPECT_EQ(w.ui->spinBox_frame->value(), 2);
    w.onImageListRowChanged(1);
    EXPECT_EQ(status(w), w.filteredList->at(1));
    EXPECT_EQ(w.ui->spinBox_frame->value(), 2);

    w.ui->spinBox_rg1->setValue(2);
    EXPECT_EQ(w.checkedIndexes, (QList<int>{1, 2}));
    EXPECT_EQ(list->item(0)->checkState(), Qt::Unchecked);
    EXPECT_EQ(w.selectedimageSequence->index(0).data(), stack.index(1).data());
    // A start above the end is pushed back to the end.
    w.ui->spinBox_rg2->setValue(2);
    w.ui->spinBox_rg1->setValue(3);
    EXPECT_EQ(w.ui->spinBox_rg1->value(), 2);
    EXPECT_EQ(w.checkedIndexes, QList<int>{1});

    w.onSelectAll();
    EXPECT_EQ(w.checkedIndexes, (QList<int>{0, 1, 2}));
    EXPECT_EQ(w.ui->spinBox_rg1->value(), 2); // the range boxes stay
    EXPECT_EQ(w.selectedimageSequence->data(), stack.data());
    const DataEntry entry = w.ui->listWidget_data->currentItem()->data(Qt::UserRole).value<DataEntry>();
    EXPECT_EQ(entry.checked_indexes, (QList<int>{0, 1, 2}));
}

// Superseding and closing mid-load are the life-cycle and fault tests' part.
TEST_F(SequenceWindow, TheFilterIsLockedWhileLoadingAndAnEmptyResultIsAnError)
{
    ImportData w(nullptr, nullptr, {}, {}, true);
    EXPECT_FALSE(w.ui->comboBox_outputType->isEnabled()); // a folder-only window stays with sequences
    w.openFile(folder->path());
    EXPECT_FALSE(w.ui->lineEdit_filter->isEnabled());
    ASSERT_TRUE(waitForLoad(w));
    EXPECT_TRUE(w.ui->lineEdit_filter->isEnabled());

    w.ui->lineEdit_filter->setText("nothing");
    w.onFilterChanged();
    EXPECT_TRUE(test::waitUntil([&] { return status(w).startsWith("Error loading images: "); }));
    EXPECT_FALSE(w.imageSequence);
}

TEST_F(SequenceWindow, RawAndSequenceEntriesEachComeBackWhole)
{
    QTemporaryDir rawDir;
    const QString raw = test::writeFile(rawDir.filePath("v.raw"), QByteArray(400 * 640, '\x09'));
    ImportData w(nullptr, nullptr, {}, raw);
    w.ui->comboBox_outputType->setCurrentIndex(1);
    w.openFile(folder->path());
    ASSERT_TRUE(waitForLoad(w));
    w.ui->listWidget_imageList->item(0)->setCheckState(Qt::Unchecked);
    ASSERT_EQ(w.ui->listWidget_data->count(), 2);

    w.ui->listWidget_data->setCurrentRow(0);
    EXPECT_EQ(w.ui->comboBox_outputType->currentText(), "Volume Data");
    EXPECT_EQ(w.ui->stackedWidget->currentIndex(), 0);
    EXPECT_EQ(w.ui->lineEdit_files_folder->text(), raw);

    w.ui->listWidget_data->setCurrentRow(1);
    EXPECT_EQ(w.ui->comboBox_outputType->currentText(), "Image Sequence");
    EXPECT_EQ(w.ui->stackedWidget_preview->currentIndex(), 1);
    EXPECT_EQ(w.checkedIndexes, (QList<int>{1, 2, 3}));
    EXPECT_EQ(w.ui->listWidget_imageList->item(0)->checkState(), Qt::Unchecked);
    EXPECT_EQ(w.selectedimageSequence->extent(0), 3);
    EXPECT_EQ(w.ui->spinBox_rg2->maximum(), 4);
    EXPECT_EQ(w.ui->lineEdit_files_folder->text(), folder->path());
}
