// The Guess button: the raw-volume panel filled from what the open file's
// name, size and data suggest, then decoded once, as after a hand edit.
#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/ui/BusyCursor.h"
#include "toolboxes/importData/volume/LayoutGuess.h"

#include <QSignalBlocker>

#include <array>

namespace torvex {

void ImportData::onGuessLayout()
{
    if (_mode() != Mode::VolumeData || !readedBinary) {
        ui->statusbar->showMessage("Cannot guess: no raw file is open", 5000);
        return;
    }
    const LayoutGuess guess = [&] {
        const BusyCursor busy; // a tenth of a second or so on a large file, whose samples it reads
        return guessLayout(_current_file_path.value_or(QString()), QByteArrayView(*readedBinary));
    }();
    if (!guess.layout) {
        ui->statusbar->showMessage("Cannot guess: " + guess.reason, 5000);
        return;
    }
    const GuessedLayout& g = *guess.layout;
    {
        // Quiet while writing, so that the file is decoded once, below, not per widget.
        const std::array<QSignalBlocker, 9> quiet{
            QSignalBlocker(ui->comboBox_imgType),     QSignalBlocker(ui->spinBox_offset),
            QSignalBlocker(ui->spinBox_gap),          QSignalBlocker(ui->spinBox_width),
            QSignalBlocker(ui->spinBox_height),       QSignalBlocker(ui->spinBox_totalFrame),
            QSignalBlocker(ui->checkBox_littleEndian), QSignalBlocker(ui->checkBox_bigEndian),
            QSignalBlocker(ui->comboBox_order)};
        ui->comboBox_imgType->setCurrentText(g.imgType);
        ui->spinBox_offset->setValue(static_cast<int>(g.offset));
        ui->spinBox_gap->setValue(0);
        ui->spinBox_width->setValue(static_cast<int>(g.width));
        ui->spinBox_height->setValue(static_cast<int>(g.height));
        ui->spinBox_totalFrame->setValue(static_cast<int>(g.frames));
        ui->checkBox_littleEndian->setChecked(g.littleEndian);
        ui->checkBox_bigEndian->setChecked(!g.littleEndian);
        // The guess measures rows as they run along the file.
        ui->comboBox_order->setCurrentText("C");
    }
    onTotalFrameChanged();
    onParametersChanged();
    ui->statusbar->showMessage(g.summary(), 5000);
}

} // namespace torvex
