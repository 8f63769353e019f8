// The window's preview of the current stack, its frame controls and the pixel readout.
#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/ui/PreviewSurface.h"
#include "toolboxes/importData/volume/PixelReadout.h"

#include <QItemSelectionModel>
#include <QLabel>
#include <QSignalBlocker>

namespace torvex {

void ImportData::_showFrame(PreviewImageItem* item, const NdArray& frame)
{
    try {
        item->setImage(frame);
        // A cut page of a shrunk file shows as zeros: say why, and keep saying it.
        if (item == preview_ImgItem)
            if (const std::optional<QString> notice = _session.fileChangedNotice()) _showStatus(StatusTone::Warning, *notice, 0);
    } catch (const std::exception& e) {
        item->clear();
        _showError(e);
    }
}

void ImportData::_restartFrames(int count, const QString& countText)
{
    ui->spinBox_frame->setValue(1);
    ui->horizontalSlider_frame->setValue(1);
    ui->spinBox_frame->setMaximum(count);
    ui->horizontalSlider_frame->setMaximum(count);
    ui->label_totalFrame->setText("/ " + countText);
}

void ImportData::_setFrameQuietly(int frame)
{
    // Blocked, so that the frame handlers do not run for a correction.
    const QSignalBlocker blockSpin(ui->spinBox_frame);
    const QSignalBlocker blockSlider(ui->horizontalSlider_frame);
    ui->spinBox_frame->setValue(frame);
    ui->horizontalSlider_frame->setValue(frame);
}

void ImportData::_refreshPreview()
{
    const std::optional<Mode> mode = _mode();
    if (!mode) return;
    const bool volume = *mode == Mode::VolumeData;
    const std::optional<NdArray>& stack = volume ? transferedData : selectedimageSequence;
    PreviewImageItem* item = volume ? preview_ImgItem : preview_ImgItem2;
    if (!stack || stack->ndim() == 0 || stack->extent(0) == 0) {
        item->clear();
        return;
    }

    const int n = static_cast<int>(std::min<int64_t>(stack->extent(0), std::numeric_limits<int>::max()));
    _showFrameSlider(n > 1);
    ui->horizontalSlider_frame->setMaximum(n);
    ui->spinBox_frame->setMaximum(n);
    ui->label_totalFrame->setText("/ " + QString::number(n));
    const int frameIdx = std::max(1, std::min(ui->spinBox_frame->value(), n));
    if (frameIdx != ui->spinBox_frame->value()) _setFrameQuietly(frameIdx);
    _showFrame(item, stack->index(frameIdx - 1));

    if (volume) {
        if (_pending_add_entry) _addDataEntry("cdata", "Volume Data", transferedData);
        return;
    }
    if (_pending_add_entry) _addDataEntry("data_imgs", "Image Sequence", selectedimageSequence, filteredList);
    // Point the image list at the file behind the frame shown.
    const int listIdx = ui->spinBox_frame->value() - 1;
    if (!checkedIndexes.isEmpty() && listIdx < checkedIndexes.size() &&
        checkedIndexes[listIdx] < ui->listWidget_imageList->count()) {
        QListWidgetItem* row = ui->listWidget_imageList->item(checkedIndexes[listIdx]);
        ui->listWidget_imageList->selectionModel()->clearSelection();
        row->setSelected(true);
        ui->listWidget_imageList->scrollToItem(row);
        _showStatus(StatusTone::Info, filteredList.value_or(QStringList()).value(checkedIndexes[listIdx]), 5000);
    }
}

void ImportData::onFrameChanged()
{
    const std::optional<Mode> mode = _mode();
    if (mode == Mode::VolumeData) {
        if (const auto frame = _frameAt(transferedData)) _showFrame(preview_ImgItem, *frame);
        else preview_ImgItem->clear();
    } else if (mode == Mode::ImageSequence && !_framesSoFar.empty()) {
        const auto index = static_cast<size_t>(ui->spinBox_frame->value() - 1);
        if (index < _framesSoFar.size() && _framesSoFar[index]) _showFrame(preview_ImgItem2, *_framesSoFar[index]);
        else preview_ImgItem2->clear();
    } else if (mode == Mode::ImageSequence && filteredList) {
        _refreshPreview();
    }
}

std::optional<NdArray> ImportData::_frameAt(const std::optional<NdArray>& stack) const
{
    const int64_t index = ui->spinBox_frame->value() - 1;
    if (!stack || stack->ndim() == 0 || index < 0 || index >= stack->extent(0)) return std::nullopt;
    return stack->index(index);
}

void ImportData::_onVolumeMouseMoved(const QPointF& pos) { _onPreviewMouseMoved(pos, _preview_plot, _frameAt(transferedData)); }

void ImportData::_onImageSeqMouseMoved(const QPointF& pos)
{
    _onPreviewMouseMoved(pos, _preview_plot2, _frameAt(selectedimageSequence));
}

void ImportData::_onPreviewMouseMoved(const QPointF& pos, PreviewPlot* plot, const std::optional<NdArray>& frame)
{
    std::optional<QString> text;
    if (frame && plot->sceneBoundingRect().contains(pos)) text = pixelReadout(*frame, plot->mapSceneToView(pos));
    _pixel_info_label->setText(text.value_or(QString()));
}

} // namespace torvex
