#pragma once

#include <QByteArrayView>
#include <QString>

#include <cstdint>
#include <optional>

namespace torvex {

// A layout for a headerless file, as its rows run in the file (read order "C").
struct GuessedLayout {
    QString imgType; // a gray type name of the panel
    int64_t offset = 0;
    int64_t width = 0;
    int64_t height = 0;
    int64_t frames = 0;
    bool littleEndian = true;
    // What decided it.
    bool fromName = false;
    bool fromSize = false;
    bool fromData = false;

    // "Guessed 16-bit Unsigned, 512 x 384 x 60, little endian, from the file size and the data"
    QString summary() const;
};

struct LayoutGuess {
    std::optional<GuessedLayout> layout;
    QString reason; // why there is none, to follow "cannot guess: "
};

// Guesses a layout from, in this order of trust, the file's name, its size
// and its bytes (`bytes` is the whole file; only samples of it are read).
LayoutGuess guessLayout(const QString& fileName, QByteArrayView bytes);

} // namespace torvex
