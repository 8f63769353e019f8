#pragma once

#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/ui/ImportDataForm.h"
#include "toolboxes/importData/loadfunction/LoadFunctionParams.h"

namespace torvex::test {

// Puts the settings of p on the window's raw-volume panel and output options,
// widget by widget as a user would, so that each change takes its usual course
// (decode, preview, entry update).
inline void setVolumePanel(ImportData& w, const LoadFunctionParams& p)
{
    w.ui->comboBox_imgType->setCurrentText(p.imgType);
    w.ui->spinBox_offset->setValue(p.offset);
    w.ui->spinBox_gap->setValue(p.gap);
    w.ui->spinBox_width->setValue(p.width);
    w.ui->spinBox_height->setValue(p.height);
    w.ui->spinBox_totalFrame->setValue(p.frame);
    w.ui->checkBox_littleEndian->setChecked(p.littleEndian);
    w.ui->comboBox_order->setCurrentText(p.readOrder);
    w.ui->comboBox_colorOrder->setCurrentText(p.colorOrder);
    w.ui->comboBox_permute->setCurrentText(p.permute);
    w.ui->checkBox_hflip->setChecked(p.hflip);
    w.ui->checkBox_vflip->setChecked(p.vflip);
    w.ui->comboBox_out_format->setCurrentText(p.data_format);
    w.ui->checkBox_keepc->setChecked(p.keep_c_on_gray);
}

} // namespace torvex::test
