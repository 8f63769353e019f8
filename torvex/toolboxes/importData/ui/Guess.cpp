// The Guess button: the raw-volume panel filled from what the open file's
// name, size and data suggest, then decoded once, as after a hand edit; the
// button beside it offers the other likely layouts.
#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/guess/LayoutGuesses.h"
#include "toolboxes/importData/ui/BusyCursor.h"

#include <QMenu>
#include <QSignalBlocker>

#include <array>

namespace torvex {

void ImportData::onGuessLayout()
{
    QToolButton* alternatives = ui->toolButton_guessAlternatives;
    if (!alternatives->menu()) alternatives->setMenu(new QMenu(alternatives));
    alternatives->menu()->clear();
    alternatives->setEnabled(false);
    if (_mode() != Mode::VolumeData || !readedBinary) {
        ui->statusbar->showMessage("Cannot guess: no raw file is open", 5000);
        return;
    }
    const LayoutGuesses guesses = [&] {
        const BusyCursor busy; // a tenth of a second or so on a large file, whose samples it reads
        return guessLayouts(_current_file_path.value_or(QString()), QByteArrayView(*readedBinary));
    }();
    if (guesses.best.empty()) {
        ui->statusbar->showMessage(guesses.status(), 5000);
        return;
    }
    for (const LayoutOption& option : guesses.best)
        connect(alternatives->menu()->addAction(option.label()), &QAction::triggered, this, [this, option] {
            _applyGuessedLayout(option);
            ui->statusbar->showMessage(option.summary(), 5000);
        });
    alternatives->setEnabled(true);
    _applyGuessedLayout(guesses.best.front());
    ui->statusbar->showMessage(guesses.status(), 5000);
}

void ImportData::_applyGuessedLayout(const LayoutOption& g)
{
    {
        // Quiet while writing, so that the file is decoded once, below, not per widget.
        const std::array<QSignalBlocker, 10> quiet{
            QSignalBlocker(ui->comboBox_imgType),     QSignalBlocker(ui->spinBox_offset),
            QSignalBlocker(ui->spinBox_gap),          QSignalBlocker(ui->spinBox_width),
            QSignalBlocker(ui->spinBox_height),       QSignalBlocker(ui->spinBox_totalFrame),
            QSignalBlocker(ui->checkBox_littleEndian), QSignalBlocker(ui->checkBox_bigEndian),
            QSignalBlocker(ui->comboBox_order),       QSignalBlocker(ui->comboBox_colorOrder)};
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
        if (!g.colorOrder.isEmpty()) ui->comboBox_colorOrder->setCurrentText(g.colorOrder);
    }
    onTotalFrameChanged();
    onParametersChanged();
}

} // namespace torvex
