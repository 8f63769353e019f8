// The window's reaction to the raw-volume parameter panel: decode, transfer axes.
#include "toolboxes/importData/ImportData.h"

#include "AxisTransfer.h"
#include "ByteBalance.h"
#include "ImageTypes.h"
#include "RawDecoder.h"
#include "toolboxes/importData/PreviewSurface.h"
#include "toolboxes/importData/ImportDataForm.h"

#include <QLabel>

namespace torvex {

void ImportData::praseStackImages(const QString& imgType, int offset, int gap, int width, int height, int frame,
                                  bool littleEndian, const QString& readOrder, const QString& colorOrder)
{
    if (!findImageType(imgType)) return; // an unknown type leaves everything as it was
    try {
        prasedData = decodeRawVolume(readedBinary.value_or(QByteArray()), imgType,
                                     {.offset = offset, .gap = gap, .width = width, .height = height, .frame = frame,
                                      .littleEndian = littleEndian, .readOrder = readOrder,
                                      .colorOrder = colorOrder});
    } catch (const std::exception& e) {
        ui->statusbar->showMessage("Error: " + QString::fromStdString(e.what()), 5000);
        prasedData.reset();
    }
}

void ImportData::onParametersChanged()
{
    const QString outputType = ui->comboBox_outputType->currentText();
    if (outputType == "Image Sequence") {
        _bytes_badge->hide();
        ui->stackedWidget_preview->setCurrentIndex(1);
        return;
    }
    if (outputType != "Volume Data") return;
    ui->stackedWidget_preview->setCurrentIndex(0);
    if (!readedBinary) {
        _bytes_badge->hide();
        ui->statusbar->showMessage("No binary data loaded", 5000);
        return;
    }
    const int width = ui->spinBox_width->value(), height = ui->spinBox_height->value();
    if (width == 0 || height == 0) {
        _bytes_badge->hide();
        ui->statusbar->showMessage("Set width and height to preview the data", 5000);
        return;
    }
    if (const auto bytesPerPixel = bytesPerPixelOfName(ui->comboBox_imgType->currentText())) {
        const ByteBalance balance =
            ByteBalance::of(readedBinary->size(), *bytesPerPixel, ui->spinBox_offset->value(),
                            ui->spinBox_gap->value(), width, height, ui->spinBox_totalFrame->value());
        ui->statusbar->showMessage(balance.statusMessage(), 5000);
        _bytes_badge->setText(balance.badgeText());
        _bytes_badge->setStyleSheet(balance.badgeStyleSheet());
        _bytes_badge->show();
    }
    praseStackImages(ui->comboBox_imgType->currentText(), ui->spinBox_offset->value(), ui->spinBox_gap->value(),
                     width, height, ui->spinBox_totalFrame->value(), ui->checkBox_littleEndian->isChecked(),
                     ui->comboBox_order->currentText(), ui->comboBox_colorOrder->currentText());
    onImgTransferChanged();
}

void ImportData::onTotalFrameChanged()
{
    ui->spinBox_frame->setValue(1);
    ui->horizontalSlider_frame->setValue(1);
    // A count of 0 still leaves frame 1 selectable: frame numbers start at 1.
    const int frames = std::max(1, ui->spinBox_totalFrame->value());
    ui->spinBox_frame->setMaximum(frames);
    ui->horizontalSlider_frame->setMaximum(frames);
    ui->label_totalFrame->setText("/ " + ui->spinBox_totalFrame->text());
}

void ImportData::_imgTransfer(const QString& permute, bool hflip, bool vflip)
{
    try {
        transferedData = transferAxes(*prasedData, permute, hflip, vflip);
    } catch (const std::exception& e) {
        ui->statusbar->showMessage("Error: " + QString::fromStdString(e.what()), 5000);
        transferedData.reset();
    }
}

void ImportData::onImgTransferChanged()
{
    transferedData = prasedData;
    if (!prasedData) {
        preview_ImgItem->clear();
        return;
    }
    if (ui->comboBox_outputType->currentText() == "Volume Data")
        _imgTransfer(ui->comboBox_permute->currentText(), ui->checkBox_hflip->isChecked(),
                     ui->checkBox_vflip->isChecked());
    _updateCurrentItemData();
    _refreshPreview();
}

} // namespace torvex
