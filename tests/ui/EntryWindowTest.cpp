// Entries in the real window: one row per load, brought back into the widgets, renamed, imported.
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/model/AppContext.h"

#include "../support/ModalWatcher.h"
#include "../support/TempFiles.h"

#include <QMainWindow>
#include <QStatusBar>

#include <gtest/gtest.h>

using namespace torvex;

namespace {

class EntryWindow : public ::testing::Test {
protected:
    QTemporaryDir dir;
    QString first = test::writeFile(dir.filePath("first.raw"), QByteArray(400 * 640, '\x05'));
    QString second = test::writeFile(dir.filePath("second.raw"), QByteArray(2 * 8 * 6 * 2, '\x01'));
};

} // namespace

TEST_F(EntryWindow, EachLoadIsARowThatBringsItsPanelBack)
{
    ImportData w(nullptr, nullptr, {}, first);
    w.openFile(second);
    w.ui->comboBox_imgType->setCurrentText("16-bit Unsigned");
    w.ui->spinBox_width->setValue(8);
    w.ui->spinBox_height->setValue(6);
    w.ui->spinBox_totalFrame->setValue(2);
    w.ui->checkBox_hflip->setChecked(true);
    ASSERT_EQ(w.ui->listWidget_data->count(), 2);
    EXPECT_EQ(w.ui->listWidget_data->item(1)->text(), "cdata_1");
    EXPECT_EQ(w.ui->listWidget_data->item(1)->data(Qt::UserRole).value<DataEntry>().params->imgType,
              "16-bit Unsigned");
    EXPECT_EQ(w.ui->label_data_mode->text(), ""); // a new entry is current before it holds data

    w.ui->spinBox_frame->setValue(2);
    w.ui->listWidget_data->setCurrentRow(0);
    EXPECT_EQ(w.ui->label_data_mode->text(), "Volume Data");
    EXPECT_EQ(w.ui->spinBox_width->value(), 400);
    EXPECT_EQ(w.ui->comboBox_imgType->currentText(), "8-bit");
    EXPECT_FALSE(w.ui->checkBox_hflip->isChecked());
    EXPECT_EQ(w.ui->lineEdit_files_folder->text(), first);
    EXPECT_EQ(w.ui->statusbar->currentMessage(), first);

    w.ui->listWidget_data->setCurrentRow(1);
    EXPECT_TRUE(w.ui->checkBox_hflip->isChecked());
    EXPECT_EQ(w.ui->spinBox_frame->value(), 1);
    EXPECT_EQ(w.ui->label_totalFrame->text(), "/ 2");
}

TEST_F(EntryWindow, RenamesAreForcedToPythonNamesAndSelect)
{
    ImportData w(nullptr, nullptr, {}, first);
    w.openFile(second);
    w.ui->spinBox_width->setValue(8); // the start settings do not fit this small file
    w.ui->spinBox_height->setValue(24);
    ASSERT_EQ(w.ui->listWidget_data->count(), 2);
    QListWidgetItem* a = w.ui->listWidget_data->item(0);
    a->setText("  my data ");
    EXPECT_EQ(a->text(), "my_data");
    EXPECT_EQ(w.ui->listWidget_data->currentItem(), a);
    w.ui->listWidget_data->item(1)->setText("my_data");
    EXPECT_EQ(w.ui->listWidget_data->item(1)->text(), "my_data"); // duplicates are allowed
    EXPECT_EQ(w.session().entries.find(1)->name, "my_data");
}

TEST_F(EntryWindow, ImportTakesTheFormatControlsAndReportsOnTheHost)
{
    AppContext context;
    QMainWindow host;
    host.statusBar();
    ImportData w(&host, &context, {}, first);
    const auto& workspace = context.get_component("workspace_manager")->get_workspace_data();
    w.onImport();
    EXPECT_EQ(workspace.at("cdata").shape(), (Shape{1, 640, 400}));
    w.ui->comboBox_out_format->setCurrentText("HWCD");
    w.ui->checkBox_keepc->setChecked(true);
    w.onImport();
    EXPECT_EQ(workspace.at("cdata").shape(), (Shape{640, 400, 1, 1}));

    // Without a context the failure goes to the host's status bar only.
    ImportData orphan(&host, nullptr, {}, first);
    test::ModalWatcher watcher;
    orphan.onImport();
    EXPECT_TRUE(watcher.texts.isEmpty());
    EXPECT_EQ(host.statusBar()->currentMessage(), "The window has no application context");
    ImportData empty;
    empty.onImport();
    EXPECT_EQ(watcher.texts, QStringList{"Error|No data to import"});
}
