// The window's reaction to the raw-volume parameter panel: decode, transfer axes.
#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/volume/ByteBalance.h"
#include "toolboxes/importData/volume/ImageTypes.h"

#include "toolboxes/importData/ui/PreviewImageItem.h"
#include "toolboxes/importData/ui/ProgressRun.h"

#include <QLabel>
#include <QSpinBox>

namespace torvex {

void ImportData::praseStackImages()
{
    try {
        // Most layouts are views and decode at once; colour orders without one
        // channel step and bitmaps are copies, long for a large file.
        if (!runWithProgress(this, "Decoding the frames…",
                             [&](const Progress& progress) { _session.decode(progress); }))
            _showStatus(StatusTone::Info, "Decoding cancelled", 5000);
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
        _showStatus(StatusTone::Warning, "No binary data loaded", 5000);
        return;
    }
    const RawLayout layout = _session.volume.layout;
    if (layout.width == 0 || layout.height == 0) {
        _bytes_badge->hide();
        _showStatus(StatusTone::Warning, "Set width and height to preview the data", 5000);
        return;
    }
    if (const std::optional<ByteBalance> balance = ByteBalance::of(readedBinary->size(), layout)) {
        _showStatus(balance->matched() ? StatusTone::Success : StatusTone::Warning, balance->statusMessage(), 5000);
        _bytes_badge->setText(balance->badgeText());
        _bytes_badge->setStyleSheet(balance->badgeStyleSheet());
        _bytes_badge->show();
    }
    praseStackImages();
    onImgTransferChanged();
}

void ImportData::onTotalFrameChanged()
{
    // A count of 0 still leaves frame 1 selectable: frame numbers start at 1.
    const QSpinBox* count = _frameCountBox();
    _restartFrames(std::max(1, count->value()), count->text());
}

void ImportData::_imgTransfer()
{
    try {
        _session.transfer();
    } catch (const std::exception& e) {
        _showError(e);
    }
}

void ImportData::onImgTransferChanged()
{
    if (_mode() == Mode::VolumeData)
        _imgTransfer();
    else _session.keepDecoded();
    if (!prasedData) {
        preview_ImgItem->clear();
        return;
    }
    _updateCurrentItemData();
    _refreshPreview();
}

} // namespace torvex
