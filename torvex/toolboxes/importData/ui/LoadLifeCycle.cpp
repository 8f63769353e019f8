// The window's side of a background image load: start, lock, take over.
#include "toolboxes/importData/ui/ImportData.h"
#include "toolboxes/importData/ui/PreviewImageItem.h"

#include <utility>

namespace torvex {

void ImportData::_readImageSequence()
{
    _statusNotes.clear();
    _session.startLoad();
    _setLoadingState(true);
    _showStatus(StatusTone::Info, "Loading " + QString::number(filteredList.value_or(QStringList()).size()) +
                                   " image(s)\u2026",
                               0);
}

void ImportData::_setLoadingState(bool loading)
{
    const bool enabled = !loading;
    for (QWidget* w : std::initializer_list<QWidget*>{
             ui->pushButton_allSelection, ui->spinBox_rg1, ui->spinBox_rg2, ui->pushButton_import,
             ui->pushButton_generate_function, ui->lineEdit_filter, ui->radioButton_filter, ui->radioButton_regex,
             ui->listWidget_data})
        w->setEnabled(enabled);
    ui->listWidget_imageList->blockSignals(loading);
    _framesSoFar.clear();
}

void ImportData::_onLoadProgress(int done, int total)
{
    _showStatus(StatusTone::Info, "Loading image " + QString::number(done) + "/" + QString::number(total) + "\u2026", 0);
}

void ImportData::_onFrameDecoded(int load_id, int index, const NdArray& frame)
{
    if (load_id != _load_id || imageSequence) return;
    if (index >= static_cast<int>(_framesSoFar.size())) _framesSoFar.resize(index + 1);
    _framesSoFar[index] = frame;
    const int count = static_cast<int>(_framesSoFar.size());
    ui->spinBox_frame->setMaximum(count);
    ui->horizontalSlider_frame->setMaximum(count);
    ui->label_totalFrame->setText("/ " + QString::number(count));
    _showFrameSlider(count > 1);
    if (index == ui->spinBox_frame->value() - 1) _showFrame(preview_ImgItem2, frame);
}

void ImportData::_onLoadFinished(int load_id, const NdArray& image_sequence)
{
    if (!_session.acceptLoad(load_id, image_sequence)) return;
    _setLoadingState(false);
    _markPlaceholderRows();
    _showStatus(StatusTone::Success, QString::number(image_sequence.extent(0)) + " image(s) loaded", 5000);
    // The load's own messages come first; what the names tell waits beside the list.
    _statusNotes = _showSequenceNotes(true);
    _showEntryRow(_session.entries.current());
    _refreshPreview();
    // Kept values are compared across frames: one display range for the
    // stack, set once its first frame is shown (a new shape resets levels).
    if (_session.reading.keepDepth) {
        const auto [lo, hi] = image_sequence.minMax();
        preview_ImgItem2->setLevels(ValueRange{lo, hi});
    }
}

void ImportData::_onLoadError(int load_id, const QString& msg)
{
    if (load_id != _load_id) return;
    _setLoadingState(false);
    _showStatus(StatusTone::Error, "Error loading images: " + msg, 5000);
}

void ImportData::_showStatusNotesIfSilent(const QString& message)
{
    if (!message.isEmpty() || _statusNotes.isEmpty() || _mode() != Mode::ImageSequence || !imageSequence) return;
    _showStatus(StatusTone::Warning, std::exchange(_statusNotes, {}).join("; "), 5000);
}

} // namespace torvex
