// The Guess button: the raw-volume panel filled from what the open file's
// name, size and data suggest, then decoded once, as after a hand edit.
#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/ui/BusyCursor.h"
#include "toolboxes/importData/volume/LayoutGuess.h"

namespace torvex {

void ImportData::onGuessLayout()
{
    if (_mode() != Mode::VolumeData || !readedBinary) {
        _showStatus(StatusTone::Warning, "Cannot guess: no raw file is open", 5000);
        return;
    }
    const LayoutGuess guess = [&] {
        const BusyCursor busy; // a tenth of a second or so on a large file, whose samples it reads
        return guessLayout(_current_file_path.value_or(QString()), QByteArrayView(*readedBinary));
    }();
    if (!guess.layout) {
        _showStatus(StatusTone::Warning, "Cannot guess: " + guess.reason, 5000);
        return;
    }
    const GuessedLayout& g = *guess.layout;
    VolumeParams guessed = _captureVolumeParams();
    guessed.layout = {.imgType = g.imgType,
                      .offset = g.offset,
                      .width = g.width,
                      .height = g.height,
                      .frame = g.frames,
                      .byteOrder = g.littleEndian ? ByteOrder::Little : ByteOrder::Big,
                      // The guess measures rows as they run along the file.
                      .readOrder = "C",
                      .colorOrder = guessed.layout.colorOrder};
    // Written quietly, so that the file is decoded once, below, not per widget.
    _restoreVolumeParams(guessed);
    onTotalFrameChanged();
    onParametersChanged();
    _showStatus(StatusTone::Success, g.summary(), 5000);
}

} // namespace torvex
