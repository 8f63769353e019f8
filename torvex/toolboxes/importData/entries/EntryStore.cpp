// The window's data entries: each load is an item of the entry list carrying
// a DataEntry; selecting an item puts the window back into that entry's state.
#include "toolboxes/importData/ImportData.h"

#include "toolboxes/importData/ImportDataForm.h"

#include "toolboxes/importData/sequence/PythonPath.h"

#include <QSignalBlocker>

namespace torvex {

namespace {

std::optional<DataEntry> entryOf(const QListWidgetItem* item)
{
    if (!item) return std::nullopt;
    const QVariant stored = item->data(Qt::UserRole);
    if (!stored.canConvert<DataEntry>()) return std::nullopt;
    return stored.value<DataEntry>();
}

} // namespace

QListWidgetItem* ImportData::_addDataEntry(const QString& default_name, const QString& mode,
                                           const std::optional<NdArray>& data,
                                           const std::optional<QStringList>& file_list)
{
    auto* item = new QListWidgetItem(_getUniqueVarName(default_name));
    item->setFlags(item->flags() | Qt::ItemIsEditable);
    ui->listWidget_data->addItem(item);
    ui->listWidget_data->setCurrentItem(item);

    DataEntry entry{.mode = mode, .data = data, .file_list = file_list, .checked_indexes = checkedIndexes,
                    .image_sequence = imageSequence};
    if (mode == "Volume Data") {
        entry.readedBinary = readedBinary;
        entry.file_path = _current_file_path;
        entry.params = _captureVolumeParams();
    }
    item->setData(Qt::UserRole, QVariant::fromValue(entry));
    return item;
}

void ImportData::_updateCurrentItemData()
{
    if (_pending_add_entry) return; // the data on screen has no entry yet
    QListWidgetItem* item = ui->listWidget_data->currentItem();
    std::optional<DataEntry> entry = entryOf(item);
    if (!entry) return;
    if (entry->mode == "Volume Data") {
        entry->data = transferedData;
        entry->readedBinary = readedBinary;
        entry->file_path = _current_file_path;
        entry->params = _captureVolumeParams();
    } else {
        entry->data = selectedimageSequence;
        entry->image_sequence = imageSequence;
        entry->file_list = filteredList;
        entry->checked_indexes = checkedIndexes;
    }
    item->setData(Qt::UserRole, QVariant::fromValue(*entry));
}

void ImportData::onDataItemSelected(QListWidgetItem* current, QListWidgetItem*)
{
    const std::optional<DataEntry> entry = entryOf(current);
    if (!entry) {
        ui->label_data_mode->setText("");
        return;
    }
    ui->label_data_mode->setText(entry->mode);
    QString path;
    if (entry->mode == "Volume Data") {
        transferedData = entry->data;
        readedBinary = entry->readedBinary;
        _current_file_path = entry->file_path;
        _restoreVolumeParams(entry->params.value_or(VolumeParams{}));
        {
            const QSignalBlocker block(ui->comboBox_outputType);
            ui->comboBox_outputType->setCurrentIndex(0);
        }
        ui->stackedWidget->setCurrentIndex(0);
        ui->stackedWidget_preview->setCurrentIndex(0);
        path = _current_file_path.value_or(QString());
    } else {
        filteredList = entry->file_list.value_or(QStringList());
        imageSequence = entry->image_sequence;
        selectedimageSequence = entry->data;
        if (entry->checked_indexes) checkedIndexes = *entry->checked_indexes;
        else if (selectedimageSequence) {
            checkedIndexes.clear();
            for (int64_t i = 0; i < selectedimageSequence->extent(0); ++i) checkedIndexes << static_cast<int>(i);
        } else checkedIndexes.clear();
        {
            const QSignalBlocker block(ui->listWidget_imageList);
            _populateImageListWidget(*filteredList, false, QSet<int>(checkedIndexes.begin(), checkedIndexes.end()));
        }
        {
            const QSignalBlocker blockStart(ui->spinBox_rg1);
            const QSignalBlocker blockEnd(ui->spinBox_rg2);
            ui->spinBox_rg2->setMaximum(static_cast<int>(filteredList->size()));
            ui->spinBox_rg2->setValue(static_cast<int>(filteredList->size()));
        }
        {
            const QSignalBlocker block(ui->comboBox_outputType);
            ui->comboBox_outputType->setCurrentIndex(1);
        }
        ui->stackedWidget->setCurrentIndex(1);
        ui->stackedWidget_preview->setCurrentIndex(1);
        path = filteredList->isEmpty() ? QString() : pythonDirname(filteredList->first());
    }
    ui->lineEdit_files_folder->setText(path);
    ui->statusbar->showMessage(path, 5000);
    _setFrameQuietly(1);
    _refreshPreview();
}

} // namespace torvex
