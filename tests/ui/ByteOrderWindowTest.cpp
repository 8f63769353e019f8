// The byte-order boxes of the window: one excludes the other, and entries keep them.
#include "toolboxes/importData/ImportData.h"

#include "../support/TempFiles.h"

#include <gtest/gtest.h>

using namespace torvex;

TEST(ByteOrderWindow, BigAndLittleEndianExcludeEachOtherAndComeBackWithTheirEntry)
{
    QTemporaryDir dir;
    // One frame of 2 x 2 16-bit values 1, 2, 3, 4 stored big-end first.
    const QString big = test::writeFile(dir.filePath("big.raw"), QByteArray("\0\1\0\2\0\3\0\4", 8));
    ImportData w(nullptr, nullptr, {}, big);
    w.ui->comboBox_imgType->setCurrentText("16-bit Unsigned");
    w.ui->spinBox_width->setValue(2);
    w.ui->spinBox_height->setValue(2);
    w.ui->checkBox_littleEndian->setChecked(true);
    w.ui->checkBox_bigEndian->setChecked(true);
    EXPECT_FALSE(w.ui->checkBox_littleEndian->isChecked());
    EXPECT_EQ(w.prasedData->minMax(), (std::pair<double, double>{1, 4}));
    EXPECT_EQ(w.ui->listWidget_data->item(0)->data(Qt::UserRole).value<DataEntry>().params->bigEndian, true);

    w.openFile(test::writeFile(dir.filePath("start.raw"), QByteArray(400 * 640, 0))); // starts unchecked
    EXPECT_FALSE(w.ui->checkBox_bigEndian->isChecked());
    w.ui->listWidget_data->setCurrentRow(0);
    EXPECT_TRUE(w.ui->checkBox_bigEndian->isChecked());
    EXPECT_FALSE(w.ui->checkBox_littleEndian->isChecked());
    // A snapshot from before the box existed reads as unchecked.
    VolumeParams older = VolumeParams::resetValues();
    older.bigEndian.reset();
    w._restoreVolumeParams(older);
    EXPECT_FALSE(w.ui->checkBox_bigEndian->isChecked());
}
