// The window's entry list: one row per entry of the session. Selecting a row
// puts the window back into that entry's state.
#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/sequence/PythonPath.h"

#include <QSignalBlocker>

namespace torvex {

void ImportData::_showEntryRow(int row)
{
    const EntryStore::Entry* entry = _session.entries.find(row);
    QListWidgetItem* item = ui->listWidget_data->item(row);
    if (!entry || !item) return;
    // Blocked: the row only mirrors the session, nothing was renamed.
    const QSignalBlocker block(ui->listWidget_data);
    item->setText(entry->name);
    item->setData(Qt::UserRole, QVariant::fromValue(entry->record));
}

QListWidgetItem* ImportData::_addDataEntry(const QString& default_name, const QString& mode,
                                           const std::optional<NdArray>& data,
                                           const std::optional<QStringList>& file_list)
{
    const QString name = _getUniqueVarName(default_name);
    auto* item = new QListWidgetItem(name);
    item->setFlags(item->flags() | Qt::ItemIsEditable);
    ui->listWidget_data->addItem(item);
    // Current before its entry exists: the selection handler finds no entry
    // and leaves the window as it is.
    ui->listWidget_data->setCurrentItem(item);
    const Mode entryMode = modeOfText(mode).value_or(Mode::ImageSequence);
    _showEntryRow(_session.addEntry(name, entryMode, data, file_list));
    return item;
}

void ImportData::_updateCurrentItemData()
{
    _session.updateCurrentEntry();
    _showEntryRow(_session.entries.current());
}

void ImportData::onDataItemSelected(QListWidgetItem* current, QListWidgetItem*)
{
    const EntryStore::Entry* entry = _session.selectEntry(ui->listWidget_data->row(current));
    if (!current || !entry) {
        ui->label_data_mode->setText("");
        return;
    }
    const DataEntry& record = entry->record;
    ui->label_data_mode->setText(record.mode);
    const Mode mode = modeOfText(record.mode).value_or(Mode::ImageSequence);
    const int page = mode == Mode::VolumeData ? 0 : 1;
    QString path;
    if (mode == Mode::VolumeData) {
        _restoreVolumeParams(record.params);
        path = _current_file_path.value_or(QString());
    } else {
        {
            const QSignalBlocker block(ui->listWidget_imageList);
            _populateImageListWidget(*filteredList, false, QSet<int>(checkedIndexes.begin(), checkedIndexes.end()));
        }
        _markPlaceholderRows();
        const QSignalBlocker blockStart(ui->spinBox_rg1);
        const QSignalBlocker blockEnd(ui->spinBox_rg2);
        const QSignalBlocker blockOrder(ui->checkBox_naturalOrder);
        const QSignalBlocker blockDepth(ui->checkBox_keepDepth);
        const QSignalBlocker blockPages(ui->checkBox_allPages);
        ui->spinBox_rg2->setMaximum(static_cast<int>(filteredList->size()));
        ui->spinBox_rg2->setValue(static_cast<int>(filteredList->size()));
        ui->checkBox_naturalOrder->setChecked(_session.naturalOrder);
        ui->checkBox_keepDepth->setChecked(_session.reading.keepDepth);
        ui->checkBox_allPages->setChecked(_session.reading.allPages);
        _showSequenceNotes(true);
        path = filteredList->isEmpty() ? QString() : pythonDirname(filteredList->first());
    }
    {
        const QSignalBlocker block(ui->comboBox_outputType);
        ui->comboBox_outputType->setCurrentIndex(page);
    }
    ui->stackedWidget->setCurrentIndex(page);
    ui->stackedWidget_preview->setCurrentIndex(page);
    ui->lineEdit_files_folder->setText(path);
    _showStatus(StatusTone::Info, path, 5000);
    _setFrameQuietly(1);
    _refreshPreview();
}

} // namespace torvex
