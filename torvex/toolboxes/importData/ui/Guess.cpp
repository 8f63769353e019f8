// The Guess button: the raw-volume panel filled from what the open file's
// name, size and data suggest, then decoded once, as after a hand edit; the
// button beside it offers the other likely layouts.
#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/guess/LayoutGuesses.h"
#include "toolboxes/importData/ui/BusyCursor.h"

#include <QMenu>

namespace torvex {

void ImportData::onGuessLayout()
{
    QToolButton* alternatives = ui->toolButton_guessAlternatives;
    if (!alternatives->menu()) alternatives->setMenu(new QMenu(alternatives));
    alternatives->menu()->clear();
    alternatives->setEnabled(false);
    if (_mode() != Mode::VolumeData || !readedBinary) {
        _showStatus(StatusTone::Warning, "Cannot guess: no raw file is open", 5000);
        return;
    }
    const LayoutGuesses guesses = [&] {
        const BusyCursor busy; // a tenth of a second or so on a large file, whose samples it reads
        return guessLayouts(_current_file_path.value_or(QString()), QByteArrayView(*readedBinary));
    }();
    if (guesses.best.empty()) {
        _showStatus(StatusTone::Warning, guesses.status(), 5000);
        return;
    }
    for (const LayoutOption& option : guesses.best)
        connect(alternatives->menu()->addAction(option.label()), &QAction::triggered, this, [this, option] {
            _applyGuessedLayout(option);
            _showStatus(StatusTone::Success, option.summary(), 5000);
        });
    alternatives->setEnabled(true);
    _applyGuessedLayout(guesses.best.front());
    _showStatus(StatusTone::Success, guesses.status(), 5000);
}

void ImportData::_applyGuessedLayout(const LayoutOption& g)
{
    VolumeParams guessed = _captureVolumeParams();
    guessed.layout = {.imgType = g.imgType,
                      .offset = g.offset,
                      .width = g.width,
                      .height = g.height,
                      .frame = g.frames,
                      .byteOrder = g.littleEndian ? ByteOrder::Little : ByteOrder::Big,
                      // The guess measures rows as they run along the file.
                      .readOrder = "C",
                      .colorOrder = g.colorOrder.isEmpty() ? guessed.layout.colorOrder : g.colorOrder};
    // Written quietly, so that the file is decoded once, below, not per widget.
    _restoreVolumeParams(guessed);
    onTotalFrameChanged();
    onParametersChanged();
}

} // namespace torvex
