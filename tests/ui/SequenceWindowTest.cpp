// Image sequences in the window: the filtered list, the background load, the
// choice of frames, and numbered folders.
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/loadfunction/ImageSequenceLoadFunction.h"
#include "toolboxes/importData/model/AppContext.h"
#include "toolboxes/importData/ui/PreviewImageItem.h"

#include "../support/TempFiles.h"
#include "../support/WaitUntil.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace torvex;

namespace {

class SequenceWindow : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        // Gray images of 4 x 6, 5 x 6 and 4 x 6 pixels and a text file; a second folder of two images.
        for (int i : {0, 1, 2}) test::writeGrayImage(folder.filePath(QString("img%1.png").arg(i)), 6, i == 1 ? 5 : 4, i);
        for (int i : {0, 1}) test::writeGrayImage(second.filePath(QString("b%1.png").arg(i)), 6, 4, 100 + i);
        test::writeFile(folder.filePath("notes.txt"), "hello");
    }
    static inline QTemporaryDir folder, second;

    static bool waitForLoad(ImportData& w)
    {
        return test::waitUntil([&] { return w.imageSequence && !w.session().load.running(); });
    }
    static QString status(ImportData& w) { return w.ui->statusbar->currentMessage(); }
    static void filter(ImportData& w, const QString& text)
    {
        w.ui->lineEdit_filter->setText(text);
        w.onFilterChanged();
    }
};

// The top left value of each frame: the number of the file it came from.
QStringList frameNumbers(const NdArray& stack)
{
    QStringList numbers;
    for (int64_t i = 0; i < stack.extent(0); ++i)
        numbers << QString::number(int(stack.index(i).slice(0, 0, 1).slice(1, 0, 1).minMax().first));
    return numbers;
}

} // namespace

TEST_F(SequenceWindow, AFolderLoadsFilteredAndStackedWhileTheFilterIsLocked)
{
    ImportData w(nullptr, nullptr, {}, folder.path(), true);
    EXPECT_FALSE(w.ui->comboBox_outputType->isEnabled()); // a folder-only window stays with sequences
    EXPECT_FALSE(w.ui->lineEdit_filter->isEnabled());
    ASSERT_TRUE(waitForLoad(w));
    EXPECT_TRUE(w.ui->lineEdit_filter->isEnabled());
    EXPECT_EQ(w.imageSequence->shape(), (Shape{4, 5, 6})); // "*" passes the text file too: a placeholder frame
    EXPECT_EQ(status(w), w.filteredList->at(0)); // the preview names the file of the frame shown
    EXPECT_EQ(w.ui->listWidget_data->item(0)->text(), "data_imgs");

    filter(w, "*.png");
    ASSERT_TRUE(waitForLoad(w));
    ASSERT_EQ(w.ui->listWidget_imageList->count(), 3);
    // A bad pattern changes nothing; a filter that passes nothing is a load error.
    w.ui->radioButton_regex->setChecked(true);
    filter(w, "(");
    EXPECT_TRUE(status(w).startsWith("Error: "));
    EXPECT_EQ(w.filteredList->size(), 3);
    filter(w, "nothing");
    EXPECT_TRUE(test::waitUntil([&] { return status(w).startsWith("Error loading images: "); }));
    EXPECT_FALSE(w.imageSequence);

    // An image that fits no stack is named with what is wrong with it.
    QTemporaryDir grayAlpha;
    test::runPython("import sys\nfrom PIL import Image\nImage.new('LA', (3, 2)).save(sys.argv[1] + '/ga.png')\n",
                    {grayAlpha.path()});
    w.ui->lineEdit_filter->setText(".*");
    w.openFile(grayAlpha.path());
    EXPECT_TRUE(test::waitUntil([&] { return !w.session().load.running(); }));
    EXPECT_EQ(status(w), "Error loading images: ga.png has 2 channels (gray and alpha), but the frames of this "
                         "sequence have 3");

    // Opening a raw file cancels a load and frees the controls at once.
    QTemporaryDir rawDir;
    w.openFile(folder.path());
    w.openFile(test::writeFile(rawDir.filePath("v.raw"), QByteArray(64, '\x07')));
    EXPECT_TRUE(w.ui->lineEdit_filter->isEnabled());
    EXPECT_FALSE(w.imageSequence);
}

TEST_F(SequenceWindow, ChecksRangesAndRowsChooseTheFrames)
{
    ImportData w(nullptr, nullptr, {}, folder.path(), true);
    filter(w, "img*");
    ASSERT_TRUE(waitForLoad(w));
    w.ui->listWidget_imageList->item(1)->setCheckState(Qt::Unchecked);
    EXPECT_EQ(w.checkedIndexes, (QList<int>{0, 2}));
    EXPECT_EQ(w.ui->label_totalFrame->text(), "/ 2");
    // Clicking a chosen row shows its frame; an unchosen one only its path.
    w.onImageListRowChanged(2);
    EXPECT_EQ(w.ui->spinBox_frame->value(), 2);
    w.onImageListRowChanged(1);
    EXPECT_EQ(status(w), w.filteredList->at(1));
    EXPECT_EQ(w.ui->spinBox_frame->value(), 2);

    w.ui->spinBox_rg1->setValue(2);
    EXPECT_EQ(w.checkedIndexes, (QList<int>{1, 2}));
    EXPECT_EQ(w.ui->listWidget_imageList->item(0)->checkState(), Qt::Unchecked);
    // A start above the end is pushed back to the end.
    w.ui->spinBox_rg2->setValue(2);
    w.ui->spinBox_rg1->setValue(3);
    EXPECT_EQ(w.ui->spinBox_rg1->value(), 2);
    EXPECT_EQ(w.checkedIndexes, QList<int>{1});

    w.onSelectAll();
    EXPECT_EQ(w.checkedIndexes, (QList<int>{0, 1, 2}));
    EXPECT_EQ(w.ui->spinBox_rg1->value(), 2); // the range boxes stay
    EXPECT_EQ(w.session().entries.find(0)->record.checked_indexes, (QList<int>{0, 1, 2}));
}

// Each entry keeps its own list, checks and stack (what they hold is the
// session test's): the filter of one folder and the files of another never meet.
TEST_F(SequenceWindow, EntriesOfBothKindsComeBackWholeAndImportWhatTheyShow)
{
    QTemporaryDir rawDir;
    const QString raw = test::writeFile(rawDir.filePath("v.raw"), QByteArray(400 * 640, '\x09'));
    AppContext context;
    ImportData w(nullptr, &context, {}, raw);
    w.ui->comboBox_outputType->setCurrentIndex(1);
    w.openFile(folder.path());
    ASSERT_TRUE(waitForLoad(w));
    filter(w, "img*"); // a new filter on the same entry
    ASSERT_TRUE(waitForLoad(w));
    w.ui->lineEdit_filter->setText("*"); // the next folder's filter
    w.openFile(second.path());
    ASSERT_TRUE(waitForLoad(w));
    ASSERT_EQ(w.ui->listWidget_data->count(), 3);

    w.ui->listWidget_data->setCurrentRow(0);
    EXPECT_EQ(w.ui->comboBox_outputType->currentText(), "Volume Data");
    EXPECT_EQ(w.ui->stackedWidget->currentIndex(), 0);

    w.ui->listWidget_data->setCurrentRow(1);
    EXPECT_EQ(w.ui->comboBox_outputType->currentText(), "Image Sequence");
    EXPECT_EQ(w.ui->stackedWidget_preview->currentIndex(), 1);
    EXPECT_EQ(w.ui->lineEdit_files_folder->text(), folder.path());
    ASSERT_EQ(w.ui->listWidget_imageList->count(), 3);
    EXPECT_EQ(w.ui->spinBox_rg2->maximum(), 3);

    w.ui->listWidget_imageList->item(0)->setCheckState(Qt::Unchecked);
    w.ui->listWidget_data->setCurrentRow(2);
    w.ui->listWidget_data->setCurrentRow(1);
    EXPECT_EQ(w.ui->listWidget_imageList->item(0)->checkState(), Qt::Unchecked);
    EXPECT_EQ(w.checkedIndexes, (QList<int>{1, 2}));
    w.onImport();
    const NdArray imported = context.get_component("workspace_manager")->get_workspace_data().at("data_imgs");
    EXPECT_TRUE(imported.sharesStorageWith(*w.imageSequence));
    EXPECT_EQ(imported.shape(), w.selectedimageSequence->shape());
}

// The order notice, sorting by number, missing files, and the generated
// function giving the same stack in both orders.
TEST_F(SequenceWindow, ANumberedFolderIsSortedByNumberOnRequestAndReportedWithItsGaps)
{
    QTemporaryDir numbered;
    for (int n = 1; n <= 120; ++n)
        if (n != 57) test::writeGrayImage(numbered.filePath(QString("slice_%1.png").arg(n)), 4, 3, n);
    ImportData w(nullptr, nullptr, {}, {}, true);
    QSignalSpy messages(w.ui->statusbar, &QStatusBar::messageChanged);
    w.openFile(numbered.path());
    ASSERT_TRUE(waitForLoad(w));
    const QString outOfOrder = "Numbered names out of order: slice_10.png sorts before slice_2.png";
    const QString missing = "Missing 1 of 120 numbered files: 57";
    QStringList shown;
    for (const QList<QVariant>& m : messages) shown << m.at(0).toString();
    // The load's own messages; the notes beside the list, and in the
    // status bar once it falls silent.
    const qsizetype loaded = shown.indexOf("119 image(s) loaded");
    ASSERT_GE(loaded, 0);
    EXPECT_EQ(shown.mid(loaded + 1), QStringList{w.filteredList->at(0)});
    EXPECT_EQ(w.ui->label_sequenceNotes->text(), outOfOrder + "\n" + missing);
    w.ui->statusbar->clearMessage();
    EXPECT_EQ(status(w), outOfOrder + "; " + missing);
    EXPECT_TRUE(w.ui->checkBox_naturalOrder->isEnabled());
    EXPECT_FALSE(w.ui->checkBox_naturalOrder->isChecked());

    for (const bool natural : {false, true}) {
        w.ui->checkBox_naturalOrder->setChecked(natural);
        ASSERT_TRUE(waitForLoad(w));
        EXPECT_EQ(w.ui->listWidget_imageList->item(1)->text(), natural ? "slice_2.png" : "slice_10.png");
        EXPECT_EQ(frameNumbers(*w.imageSequence).mid(0, 3),
                  natural ? QStringList({"1", "2", "3"}) : QStringList({"1", "10", "100"}));
        const QString text = imageSequenceLoadFunctionText(*w.filteredList, "*.png", false, natural);
        const QString python = test::runPython(
            text + "\nimport sys\nprint(','.join(str(int(v)) for v in load_image_sequence(sys.argv[1])[:, 0, 0, 0]))\n",
            {numbered.path()});
        EXPECT_EQ(python, frameNumbers(*w.imageSequence).join(','));
    }
    EXPECT_EQ(w.session().entries.find(0)->naturalOrder, true);
}

// A frame drawn for a file that is no image is marked in the list, and an
// import that holds it says so in amber after the import notice.
TEST_F(SequenceWindow, PlaceholderFramesAreMarkedAndNamedOnImport)
{
    AppContext context;
    ImportData w(nullptr, &context, {}, folder.path(), true);
    ASSERT_TRUE(waitForLoad(w));
    QListWidgetItem* text = w.ui->listWidget_imageList->item(3);
    EXPECT_FALSE(text->icon().isNull());
    EXPECT_TRUE(text->toolTip().startsWith(folder.filePath("notes.txt") + "\nNot read as an image"));
    EXPECT_TRUE(w.ui->listWidget_imageList->item(0)->icon().isNull());
    const QString loadNotice = "1 of 4 frames are placeholders for files that could not be read: notes.txt";
    EXPECT_EQ(w.ui->label_sequenceNotes->text(), loadNotice);
    for (const bool placeholderChosen : {true, false}) {
        text->setCheckState(placeholderChosen ? Qt::Checked : Qt::Unchecked);
        w.onImport();
        EXPECT_EQ(status(w) == loadNotice, placeholderChosen);
        EXPECT_EQ(w.ui->statusbar->styleSheet().contains("#a85d00"), placeholderChosen); // amber
    }
}

// While a load runs, the images decoded so far are shown as they come and the
// frame controls move over them; a file that is no image shows nothing.
TEST_F(SequenceWindow, ThePreviewFollowsTheFramesDecodedSoFar)
{
    ImportData w(nullptr, nullptr, {}, {}, true);
    const auto shownWidth = [&] { return int(w.preview_ImgItem2->boundingRect().width()); };
    w._onFrameDecoded(w._load_id, 0, NdArray::zeros({4, 5}, DType::UInt8));
    EXPECT_EQ(shownWidth(), 5);
    w._onFrameDecoded(w._load_id, 2, NdArray::zeros({4, 7}, DType::UInt16));
    EXPECT_EQ(w.ui->spinBox_frame->maximum(), 3);
    EXPECT_EQ(shownWidth(), 5); // the frame in view stays
    w.ui->spinBox_frame->setValue(3);
    EXPECT_EQ(shownWidth(), 7);
    w.ui->spinBox_frame->setValue(2);
    EXPECT_EQ(shownWidth(), 0);
    w._onFrameDecoded(w._load_id - 1, 1, NdArray::zeros({4, 9}, DType::UInt8)); // a superseded load's
    EXPECT_EQ(shownWidth(), 0);
}

// Slices of a real scan at 16 bits (PNG, TIFF and a 40-page TIFF) beside an
// 8-bit one and a file that is no image: each box reloads; the values stay
// those Pillow reads, in one widened type, every page a row and a frame, as
// the generated code reads them.
TEST_F(SequenceWindow, KeptDepthAndEveryPageMatchPillowValueForValueAndTheGeneratedCode)
{
    QTemporaryDir scans;
    test::runPython(R"(
import sys, numpy as np, PIL.Image
d, moon = sys.argv[1], np.array(PIL.Image.open("/usr/lib/python3/dist-packages/skimage/data/moon.png"))[:64, :48]
for k, ext in enumerate(["png", "tif"]):
    PIL.Image.fromarray((moon * 251 + 997 * k).astype(np.uint16)).save(f"{d}/s{k}.{ext}")
PIL.Image.fromarray(moon).save(d + "/s2.png")
pages = [PIL.Image.fromarray((moon * 200 + 311 * k).astype(np.uint16)) for k in range(40)]
pages[0].save(d + "/s3.tif", save_all=True, append_images=pages[1:])
open(d + "/s4.png", "wb").write(b"not an image")
)", {scans.path()});
    ImportData w(nullptr, nullptr, {}, scans.path(), true);
    ASSERT_TRUE(waitForLoad(w));
    EXPECT_EQ(w.imageSequence->dtype(), DType::UInt8);
    w.ui->checkBox_keepDepth->setChecked(true);
    ASSERT_TRUE(waitForLoad(w));
    ASSERT_EQ(w.imageSequence->shape(), (Shape{5, 64, 48}));
    const auto [lo, hi] = w.imageSequence->minMax();
    EXPECT_EQ(w.preview_ImgItem2->levels(), (ValueRange{lo, hi})); // one display range over all frames
    w.ui->checkBox_allPages->setChecked(true);
    ASSERT_TRUE(waitForLoad(w));
    ASSERT_EQ(w.imageSequence->shape(), (Shape{44, 64, 48}));
    EXPECT_EQ(w.ui->listWidget_imageList->item(5)->text(), "s3.tif [3/40]");
    EXPECT_EQ(w.ui->listWidget_imageList->item(5)->toolTip(), scans.filePath("s3.tif") + " [3/40]");
    w.ui->spinBox_rg1->setValue(43);
    EXPECT_EQ(w.selectedimageSequence->extent(0), 2);

    const QString npy = scans.filePath("stack.npy");
    saveNpy(*w.imageSequence, npy);
    const QString text = imageSequenceLoadFunctionText(*w.filteredList, "s*", false, false, w.session().reading);
    EXPECT_EQ(test::runPython(text + R"(
import sys, glob, numpy as np, PIL.Image, PIL.ImageSequence
tool = np.load(sys.argv[2])
files = sorted(glob.glob(sys.argv[1] + "/s[0-3].*"))
pillow = [np.array(p) for f in files for p in PIL.ImageSequence.Iterator(PIL.Image.open(f))]
print(tool.dtype, all(np.array_equal(t, p) for t, p in zip(tool, pillow)), len(pillow),
      np.array_equal(load_image_sequence(sys.argv[1])[..., 0], tool[:43]), int(tool[43].max()) <= 255)
)", {scans.path(), npy}), "uint16 True 43 True True");
}
