// The window's choice of frames from a loaded image stack.
#include "toolboxes/importData/ImportData.h"

#include "toolboxes/importData/PreviewSurface.h"
#include "toolboxes/importData/ImportDataForm.h"

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
    selectedimageSequence = imageSequence;
    checkedIndexes.clear();
    for (int64_t i = 0; i < imageSequence->extent(0); ++i) checkedIndexes << static_cast<int>(i);
    _updateCurrentItemData();
    _refreshPreview();
}

void ImportData::onSelectionChanged()
{
    if (!imageSequence) return;
    checkedIndexes.clear();
    for (int i = 0; i < ui->listWidget_imageList->count(); ++i)
        if (ui->listWidget_imageList->item(i)->checkState() == Qt::Checked) checkedIndexes << i;
    const int selectedNumber = static_cast<int>(checkedIndexes.size());
    if (selectedNumber == 0) return;
    ui->spinBox_frame->setValue(1);
    ui->horizontalSlider_frame->setValue(1);
    ui->spinBox_frame->setMaximum(selectedNumber);
    ui->horizontalSlider_frame->setMaximum(selectedNumber);
    ui->label_totalFrame->setText("/ " + QString::number(selectedNumber));
    if (_checkBatch) return; // the batch's owner sets the selection once, at its end
    selectedimageSequence = imageSequence->take(std::vector<int64_t>(checkedIndexes.begin(), checkedIndexes.end()));
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
        ui->spinBox_frame->setValue(1);
        ui->horizontalSlider_frame->setValue(1);
        const int length = endIndex - startIndex + 1;
        ui->spinBox_frame->setMaximum(length);
        ui->horizontalSlider_frame->setMaximum(length);
        ui->label_totalFrame->setText("/ " + QString::number(length));
        _setAllChecks([&](int i) { return i >= startIndex - 1 && i < endIndex; });
        if (!imageSequence) throw std::runtime_error("No image sequence is loaded");
        selectedimageSequence = imageSequence->slice(0, startIndex - 1, endIndex);
        checkedIndexes.clear();
        for (int i = startIndex - 1; i < endIndex; ++i) checkedIndexes << i;
        _updateCurrentItemData();
        _refreshPreview();
    } catch (const std::exception& e) {
        ui->statusbar->showMessage("Error: " + QString::fromStdString(e.what()), 5000);
    }
}

void ImportData::onImageListRowChanged(int row)
{
    if (row < 0 || checkedIndexes.isEmpty()) return;
    if (filteredList && row < filteredList->size()) ui->statusbar->showMessage((*filteredList)[row], 5000);
    const qsizetype position = checkedIndexes.indexOf(row);
    if (position < 0) return;
    const int frame1Based = static_cast<int>(position) + 1;
    _setFrameQuietly(frame1Based);
    if (selectedimageSequence && position < selectedimageSequence->extent(0))
        _showFrame(preview_ImgItem2, selectedimageSequence->index(position));
}

} // namespace torvex
