// The window's image list: filtered from the opened files, one check box per image.
#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/sequence/FileFilter.h"
#include "toolboxes/importData/sequence/FramePages.h"
#include "toolboxes/importData/sequence/PythonPath.h"
#include "toolboxes/importData/volume/FileNameText.h"

#include <QSignalBlocker>
#include <QStyle>

namespace torvex {

void ImportData::onFilterChanged()
{
    try {
        const bool wildcard = ui->radioButton_filter->isChecked();
        if (wildcard && ui->lineEdit_filter->text().isEmpty()) ui->lineEdit_filter->setText("*");
        const QString text = ui->lineEdit_filter->text();
        _session.applyFilter(wildcard ? wildcardPattern(text) : text, wildcard);
        const int count = static_cast<int>(filteredList->size());
        ui->spinBox_rg2->setMaximum(count);
        ui->spinBox_rg2->setValue(count);
        _showFrameSlider(true);
        _populateImageListWidget(*filteredList, true);
        _showSequenceNotes(false);
        _readImageSequence();
    } catch (const std::exception& e) {
        _showError(e);
    }
}

void ImportData::onNaturalOrderChanged()
{
    _session.setNaturalOrder(ui->checkBox_naturalOrder->isChecked());
    if (fileList) onFilterChanged();
}

void ImportData::onSequenceReadingChanged()
{
    _session.reading = {.keepDepth = ui->checkBox_keepDepth->isChecked(),
                        .allPages = ui->checkBox_allPages->isChecked()};
    if (fileList) onFilterChanged();
}

void ImportData::_markPlaceholderRows()
{
    QListWidget* list = ui->listWidget_imageList;
    // Icons and tool tips are item changes too: the checks are not touched.
    const QSignalBlocker block(list);
    // A mark of the text's height, so marked rows stay as high as the others.
    const int side = list->fontMetrics().height();
    list->setIconSize(QSize(side, side));
    for (auto it = _session.placeholderFrames.cbegin(); it != _session.placeholderFrames.cend(); ++it) {
        QListWidgetItem* item = list->item(it.key());
        if (!item) continue;
        item->setIcon(style()->standardIcon(QStyle::SP_MessageBoxWarning));
        item->setToolTip(item->toolTip() + "\nNot read as an image, shown as a placeholder frame: " + it.value());
    }
}

QStringList ImportData::_showSequenceNotes(bool loaded)
{
    const std::optional<QString> order = _session.naturalOrder ? std::nullopt : _session.outOfOrderNotice();
    ui->checkBox_naturalOrder->setEnabled(order || _session.naturalOrder);
    QStringList notes;
    for (const std::optional<QString>& note :
         {order, loaded ? _session.missingFilesNotice() : std::nullopt,
          loaded ? _session.loadedPlaceholderNotice() : std::nullopt, _session.unreachableFilesNotice()})
        if (note) notes << *note;
    ui->label_sequenceNotes->setText(notes.join('\n'));
    return notes;
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
        // Rows of a file's pages carry its page beside the name and in the tool tip.
        const FramePage page = _session.framePages.value(idx);
        item->setText(pageLabel(displayName(printablePath(pythonBasename(file_list[idx]))), page));
        const QString unreachable = unreachableNameReason(file_list[idx]);
        item->setToolTip(pageLabel(file_list[idx], page) + (unreachable.isEmpty() ? QString() : "\n" + unreachable));
        list->addItem(item);
    }
}

} // namespace torvex
