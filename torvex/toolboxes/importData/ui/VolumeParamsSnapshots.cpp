// The window's twelve raw-volume panel widgets as one VolumeParams value.
#include "toolboxes/importData/ui/ImportData.h"

namespace torvex {

VolumeParams ImportData::_captureVolumeParams()
{
    return {.imgType = ui->comboBox_imgType->currentText(),
            .offset = ui->spinBox_offset->value(),
            .gap = ui->spinBox_gap->value(),
            .width = ui->spinBox_width->value(),
            .height = ui->spinBox_height->value(),
            .totalFrame = ui->spinBox_totalFrame->value(),
            .littleEndian = ui->checkBox_littleEndian->isChecked(),
            .order = ui->comboBox_order->currentText(),
            .colorOrder = ui->comboBox_colorOrder->currentText(),
            .permute = ui->comboBox_permute->currentText(),
            .hflip = ui->checkBox_hflip->isChecked(),
            .vflip = ui->checkBox_vflip->isChecked(),
            .bigEndian = ui->checkBox_bigEndian->isChecked()};
}

void ImportData::_resetVolumeParams() { _restoreVolumeParams(VolumeParams::resetValues()); }

void ImportData::_restoreVolumeParams(const VolumeParams& params)
{
    if (params.isEmpty()) return;
    const QList<QWidget*> widgets = {ui->comboBox_imgType, ui->spinBox_offset,     ui->spinBox_gap,
                                     ui->spinBox_width,    ui->spinBox_height,     ui->spinBox_totalFrame,
                                     ui->checkBox_littleEndian, ui->comboBox_order, ui->comboBox_colorOrder,
                                     ui->comboBox_permute, ui->checkBox_hflip,     ui->checkBox_vflip,
                                     ui->checkBox_bigEndian};
    // Writing with signals blocked neither decodes nor redraws: the caller refreshes.
    for (QWidget* w : widgets) w->blockSignals(true);
    const VolumeParams p = params.withFallbacks();
    ui->comboBox_imgType->setCurrentText(*p.imgType);
    ui->spinBox_offset->setValue(*p.offset);
    ui->spinBox_gap->setValue(*p.gap);
    ui->spinBox_width->setValue(*p.width);
    ui->spinBox_height->setValue(*p.height);
    ui->spinBox_totalFrame->setValue(*p.totalFrame);
    ui->checkBox_littleEndian->setChecked(*p.littleEndian);
    ui->comboBox_order->setCurrentText(*p.order);
    ui->comboBox_colorOrder->setCurrentText(*p.colorOrder);
    ui->comboBox_permute->setCurrentText(*p.permute);
    ui->checkBox_hflip->setChecked(*p.hflip);
    ui->checkBox_vflip->setChecked(*p.vflip);
    ui->checkBox_bigEndian->setChecked(*p.bigEndian);
    for (QWidget* w : widgets) w->blockSignals(false);
}

} // namespace torvex
