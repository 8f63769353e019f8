// The window's reaction to the raw-volume parameter panel: decode, transfer axes.
#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/volume/ByteBalance.h"
#include "toolboxes/importData/volume/ImageTypes.h"

#include "toolboxes/importData/ui/PreviewImageItem.h"
#include "toolboxes/importData/ui/ProgressRun.h"

#include <QLabel>

namespace torvex {

void ImportData::praseStackImages(const QString& imgType, int offset, int gap, int width, int height, int frame,
                                  bool littleEndian, const QString& readOrder, const QString& colorOrder,
                                  bool bigEndian)
{
    const RawLayout layout{.imgType = imgType, .offset = offset, .gap = gap, .width = width, .height = height,
                           .frame = frame, .littleEndian = littleEndian, .bigEndian = bigEndian,
                           .readOrder = readOrder, .colorOrder = colorOrder};
    try {
        // Most layouts are views and decode at once; colour orders without one
        // channel step and bitmaps are copies, long for a large file.
        if (!runWithProgress(this, "Decoding the frames…",
                             [&](const Progress& progress) { _session.decode(layout, progress); }))
            ui->statusbar->showMessage("Decoding cancelled", 5000);
    } catch (const std::exception& e) {
        _showError(e);
    }
}

void ImportData::onParametersChanged()
{
    const std::optional<Mode> mode = _mode();
    if (mode == Mode::ImageSequence) {
        _bytes_badge->hide();
        ui->stackedWidget_preview->setCurrentIndex(1);
        return;
    }
    if (mode != Mode::VolumeData) return;
    ui->stackedWidget_preview->setCurrentIndex(0);
    if (!readedBinary) {
        _bytes_badge->hide();
        ui->statusbar->showMessage("No binary data loaded", 5000);
        return;
    }
    const RawLayout layout = _captureVolumeParams().layout();
    if (layout.width == 0 || layout.height == 0) {
        _bytes_badge->hide();
        ui->statusbar->showMessage("Set width and height to preview the data", 5000);
        return;
    }
    if (const std::optional<ByteBalance> balance = ByteBalance::of(readedBinary->size(), layout)) {
        ui->statusbar->showMessage(balance->statusMessage(), 5000);
        _bytes_badge->setText(balance->badgeText());
        _bytes_badge->setStyleSheet(balance->badgeStyleSheet());
        _bytes_badge->show();
    }
    praseStackImages(layout.imgType, layout.offset, layout.gap, layout.width, layout.height, layout.frame,
                     layout.littleEndian, layout.readOrder, layout.colorOrder, layout.bigEndian);
    onImgTransferChanged();
}

void ImportData::onTotalFrameChanged()
{
    // A count of 0 still leaves frame 1 selectable: frame numbers start at 1.
    _restartFrames(std::max(1, ui->spinBox_totalFrame->value()), ui->spinBox_totalFrame->text());
}

void ImportData::_imgTransfer(const QString& permute, bool hflip, bool vflip)
{
    try {
        _session.transfer(permute, hflip, vflip);
    } catch (const std::exception& e) {
        _showError(e);
    }
}

void ImportData::onImgTransferChanged()
{
    if (_mode() == Mode::VolumeData)
        _imgTransfer(ui->comboBox_permute->currentText(), ui->checkBox_hflip->isChecked(),
                     ui->checkBox_vflip->isChecked());
    else _session.keepDecoded();
    if (!prasedData) {
        preview_ImgItem->clear();
        return;
    }
    _updateCurrentItemData();
    _refreshPreview();
}

} // namespace torvex
