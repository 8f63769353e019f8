// A numbered folder in the window: order notice, sorting by number, missing
// files, and the generated function giving the same stack in both orders.
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/loadfunction/ImageSequenceLoadFunction.h"

#include "../support/TempFiles.h"
#include "../support/WaitUntil.h"

#include <QImage>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace torvex;

namespace {

// The top left value of each frame: the number of the file it came from.
QStringList frameNumbers(const NdArray& stack)
{
    QStringList numbers;
    for (int64_t i = 0; i < stack.extent(0); ++i)
        numbers << QString::number(int(stack.index(i).slice(0, 0, 1).slice(1, 0, 1).minMax().first));
    return numbers;
}

} // namespace

TEST(NumberedSequence, IsNoticedSortedByNumberAndReportedWithItsGaps)
{
    QTemporaryDir folder;
    for (int n = 1; n <= 120; ++n) {
        if (n == 57) continue;
        QImage image(4, 3, QImage::Format_Grayscale8);
        image.fill(qRgb(n, n, n));
        ASSERT_TRUE(image.save(folder.filePath(QString("slice_%1.png").arg(n))));
    }
    ImportData w(nullptr, nullptr, {}, {}, true);
    QSignalSpy messages(w.ui->statusbar, &QStatusBar::messageChanged);
    const auto load = [&] {
        return test::waitUntil([&] { return w.imageSequence && !w.session().load.running(); });
    };
    w.openFile(folder.path());
    ASSERT_TRUE(load());
    const QString outOfOrder = "Numbered names out of order: slice_10.png sorts before slice_2.png";
    const QString missing = "Missing 1 of 120 numbered files: 57";
    QStringList shown;
    for (const QList<QVariant>& m : messages) shown << m.at(0).toString();
    const qsizetype loaded = shown.indexOf("119 image(s) loaded");
    ASSERT_GE(loaded, 0);
    EXPECT_EQ(shown.mid(loaded + 1, 2), (QStringList{outOfOrder, missing}));
    EXPECT_EQ(w.ui->statusbar->currentMessage(), missing);
    EXPECT_EQ(w.ui->label_missingFiles->text(), outOfOrder + "\n" + missing);
    EXPECT_TRUE(w.ui->checkBox_naturalOrder->isEnabled());
    EXPECT_FALSE(w.ui->checkBox_naturalOrder->isChecked());
    EXPECT_EQ(w.ui->listWidget_imageList->item(1)->text(), "slice_10.png");

    for (const bool natural : {false, true}) {
        w.ui->checkBox_naturalOrder->setChecked(natural);
        ASSERT_TRUE(load());
        EXPECT_EQ(w.ui->listWidget_imageList->item(1)->text(), natural ? "slice_2.png" : "slice_10.png");
        EXPECT_EQ(frameNumbers(*w.imageSequence).mid(0, 3),
                  natural ? QStringList({"1", "2", "3"}) : QStringList({"1", "10", "100"}));
        const QString text = imageSequenceLoadFunctionText(*w.filteredList, "*.png", false, natural);
        const QString python = test::runPython(
            text + "\nimport sys\nprint(','.join(str(int(v)) for v in load_image_sequence(sys.argv[1])[:, 0, 0, 0]))\n",
            {folder.path()});
        EXPECT_EQ(python, frameNumbers(*w.imageSequence).join(','));
    }
    EXPECT_EQ(w.session().entries.find(0)->naturalOrder, true);
}
