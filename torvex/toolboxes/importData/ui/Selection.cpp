// The window's choice of frames from a loaded image stack.
#include "toolboxes/importData/ui/ImportData.h"

namespace torvex {

void ImportData::_setAllChecks(const std::function<bool(int)>& checked)
{
    // Not blocked: each item that changes runs onSelectionChanged, which keeps
    // the frame controls in step but leaves the gathering of frames, which the
    // caller replaces at its end, undone.
    const bool outer = _checkBatch;
    _checkBatch = true;
    for (int i = 0; i < ui->listWidget_imageList->count(); ++i)
        ui->listWidget_imageList->item(i)->setCheckState(checked(i) ? Qt::Checked : Qt::Unchecked);
    _checkBatch = outer;
}

void ImportData::onSelectAll()
{
    if (!imageSequence) return;
    _setAllChecks([](int) { return true; });
    _session.checkAll();
    _updateCurrentItemData();
    _refreshPreview();
}

void ImportData::onSelectionChanged()
{
    QList<int> rows;
    for (int i = 0; i < ui->listWidget_imageList->count(); ++i)
        if (ui->listWidget_imageList->item(i)->checkState() == Qt::Checked) rows << i;
    if (!_session.setChecks(rows) || rows.isEmpty()) return;
    _restartFrames(static_cast<int>(rows.size()), QString::number(rows.size()));
    if (_checkBatch) return; // the batch's owner sets the selection once, at its end
    _session.takeChecked();
    _updateCurrentItemData();
    _refreshPreview();
}

void ImportData::onSelectedRangeChanged(const QString& pos)
{
    try {
        int startIndex = ui->spinBox_rg1->value();
        int endIndex = ui->spinBox_rg2->value();
        if (pos == "S" && startIndex > endIndex) {
            startIndex = endIndex;
            ui->spinBox_rg1->setValue(startIndex);
        }
        if (pos == "E" && endIndex < startIndex) {
            endIndex = startIndex;
            ui->spinBox_rg2->setValue(endIndex);
        }
        const int length = endIndex - startIndex + 1;
        _restartFrames(length, QString::number(length));
        _setAllChecks([&](int i) { return i >= startIndex - 1 && i < endIndex; });
        _session.checkRange(startIndex, endIndex);
        _updateCurrentItemData();
        _refreshPreview();
    } catch (const std::exception& e) {
        _showError(e);
    }
}

void ImportData::onImageListRowChanged(int row)
{
    if (row < 0 || checkedIndexes.isEmpty()) return;
    if (filteredList && row < filteredList->size()) _showStatus(StatusTone::Info, (*filteredList)[row], 5000);
    const qsizetype position = checkedIndexes.indexOf(row);
    if (position < 0) return;
    _setFrameQuietly(static_cast<int>(position) + 1);
    if (selectedimageSequence && position < selectedimageSequence->extent(0))
        _showFrame(preview_ImgItem2, selectedimageSequence->index(position));
}

} // namespace torvex
