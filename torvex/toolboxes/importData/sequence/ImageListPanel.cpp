// The window's image list: filtered from the opened files, one check box per image.
#include "toolboxes/importData/ImportData.h"

#include "FileFilter.h"
#include "toolboxes/importData/sequence/PythonPath.h"
#include "toolboxes/importData/ImportDataForm.h"

namespace torvex {

void ImportData::onFilterChanged()
{
    try {
        QString pattern;
        const bool wildcard = ui->radioButton_filter->isChecked();
        if (wildcard) {
            if (ui->lineEdit_filter->text().isEmpty()) ui->lineEdit_filter->setText("*");
            pattern = wildcardPattern(ui->lineEdit_filter->text());
        } else {
            pattern = ui->lineEdit_filter->text();
        }
        if (!fileList) throw std::runtime_error("No files are open");
        filteredList = filterFiles(*fileList, pattern, wildcard);
        const int count = static_cast<int>(filteredList->size());
        ui->spinBox_rg2->setMaximum(count);
        ui->spinBox_rg2->setValue(count);
        _showFrameSlider(true);
        _populateImageListWidget(*filteredList, true);
        checkedIndexes.clear();
        for (int i = 0; i < count; ++i) checkedIndexes << i;
        _readImageSequence();
    } catch (const std::exception& e) {
        ui->statusbar->showMessage("Error: " + QString::fromStdString(e.what()), 5000);
    }
}

void ImportData::_populateImageListWidget(const QStringList& file_list, bool checked_all,
                                          const QSet<int>& checked_indexes)
{
    QListWidget* list = ui->listWidget_imageList;
    list->clear();
    for (int idx = 0; idx < file_list.size(); ++idx) {
        auto* item = new QListWidgetItem;
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(checked_all || checked_indexes.contains(idx) ? Qt::Checked : Qt::Unchecked);
        item->setText(displayName(pythonBasename(file_list[idx])));
        item->setToolTip(file_list[idx]);
        list->addItem(item);
    }
}

} // namespace torvex
