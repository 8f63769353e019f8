// Entries in the real window: one per load, brought back whole, renamed, imported.
#include "host/AppContext.h"
#include "toolboxes/importData/ImportData.h"

#include "../support/ModalWatcher.h"
#include "../support/TempFiles.h"

#include <QMainWindow>
#include <QStatusBar>

#include <gtest/gtest.h>

using namespace torvex;

namespace {

DataEntry entryAt(ImportData& w, int row) { return w.ui->listWidget_data->item(row)->data(Qt::UserRole).value<DataEntry>(); }

class EntryWindow : public ::testing::Test {
protected:
    QTemporaryDir dir;
    QString first = test::writeFile(dir.filePath("first.raw"), QByteArray(400 * 640, '\x05'));
    QString second = test::writeFile(dir.filePath("second.raw"), QByteArray(2 * 8 * 6 * 2, '\x01'));
};

} // namespace

TEST_F(EntryWindow, EachLoadIsAnEntryThatComesBackWhole)
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
    EXPECT_EQ(entryAt(w, 1).params->imgType, "16-bit Unsigned");
    EXPECT_EQ(w.ui->label_data_mode->text(), ""); // a new entry is current before it holds data

    const QByteArray firstBytes = *entryAt(w, 0).readedBinary;
    w.ui->listWidget_data->setCurrentRow(0);
    EXPECT_EQ(w.ui->label_data_mode->text(), "Volume Data");
    EXPECT_EQ(w.readedBinary->constData(), firstBytes.constData()); // shared, not copied
    EXPECT_TRUE(w.transferedData->sharesStorageWith(*entryAt(w, 0).data));
    EXPECT_EQ(w._current_file_path, first);
    EXPECT_EQ(w.ui->spinBox_width->value(), 400);
    EXPECT_EQ(w.ui->comboBox_imgType->currentText(), "8-bit");
    EXPECT_FALSE(w.ui->checkBox_hflip->isChecked());
    EXPECT_EQ(w.ui->lineEdit_files_folder->text(), first);

    w.ui->listWidget_data->setCurrentRow(1);
    EXPECT_EQ(w.transferedData->shape(), (Shape{2, 6, 8, 1}));
    EXPECT_TRUE(w.ui->checkBox_hflip->isChecked());
    EXPECT_EQ(w.ui->spinBox_frame->value(), 1);
}

TEST_F(EntryWindow, RenamesAreForcedToPythonNames)
{
    ImportData w(nullptr, nullptr, {}, first);
    w.openFile(second);
    w.ui->spinBox_width->setValue(8); // the start settings do not fit this small file
    w.ui->spinBox_height->setValue(24);
    ASSERT_EQ(w.ui->listWidget_data->count(), 2);
    QListWidgetItem* a = w.ui->listWidget_data->item(0);
    QListWidgetItem* b = w.ui->listWidget_data->item(1);
    a->setText("  my data ");
    EXPECT_EQ(a->text(), "my_data");
    EXPECT_EQ(w.ui->listWidget_data->currentItem(), a); // renaming selects
    b->setText("my_data");
    EXPECT_EQ(b->text(), "my_data"); // duplicates are allowed
    EXPECT_TRUE(entryAt(w, 0).data.has_value());
}

TEST_F(EntryWindow, ImportHandsTheEntryToTheWorkspace)
{
    AppContext context;
    QMainWindow host;
    host.statusBar();
    ImportData w(&host, &context, {}, first);
    WorkspaceManager* manager = context.get_component("workspace_manager");
    int changes = 0;
    QObject::connect(manager, &WorkspaceManager::workspaceChanged, [&] { ++changes; });

    w.onImport();
    const NdArray dhwc = manager->get_workspace_data().at("cdata");
    EXPECT_EQ(dhwc.shape(), (Shape{1, 640, 400}));
    EXPECT_FALSE(dhwc.sharesStorageWith(*w.transferedData)); // the one copy
    EXPECT_EQ(changes, 1);

    w.ui->comboBox_out_format->setCurrentText("HWCD");
    w.ui->checkBox_keepc->setChecked(true);
    w.onImport();
    const NdArray hwcd = manager->get_workspace_data().at("cdata");
    EXPECT_EQ(hwcd.shape(), (Shape{640, 400, 1, 1}));
    EXPECT_TRUE(hwcd.sharesStorageWith(*w.transferedData));

    // Without a context the failure goes to the host's status bar only.
    ImportData orphan(&host, nullptr, {}, first);
    test::ModalWatcher watcher;
    orphan.onImport();
    EXPECT_TRUE(watcher.texts.isEmpty());
    EXPECT_FALSE(host.statusBar()->currentMessage().isEmpty());
    ImportData empty;
    empty.onImport();
    EXPECT_EQ(watcher.texts, QStringList{"Error|No data to import"});
}
