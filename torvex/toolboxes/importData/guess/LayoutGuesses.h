#pragma once

#include <QByteArrayView>
#include <QString>

#include <cstdint>
#include <vector>

namespace torvex {

// One layout a headerless file may have, as its rows run in the file (read order "C").
struct LayoutOption {
    QString imgType; // a name of the panel's type list
    int64_t offset = 0;
    int64_t width = 0;
    int64_t height = 0;
    int64_t frames = 0;
    bool littleEndian = true;
    QString colorOrder; // "ABCABC" for interleaved colour, else empty
    double cost = 0;    // lower is likelier: the log of how alike its rows and frames are, and penalties
    QString evidence;   // "the file size and the data"

    // "16-bit Unsigned, 512 x 512 x 3", then ", 128 header bytes" and ", big endian" where they apply.
    QString label() const;
    // "Guessed 16-bit Unsigned, 512 x 384 x 60, little endian, from the file size and the data"
    QString summary() const;
};

struct LayoutGuesses {
    std::vector<LayoutOption> best; // at most three, likeliest first
    QString reason;                 // why there is none, to follow "Cannot guess: "

    // The best one's summary, and "; also likely: " the second when it comes close.
    QString status() const;
};

// Guesses from, in this order of trust, the file's name, its size and its
// bytes (`bytes` is the whole file; only samples of it are read).
LayoutGuesses guessLayouts(const QString& fileName, QByteArrayView bytes);

} // namespace torvex
