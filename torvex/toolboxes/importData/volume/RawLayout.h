#pragma once

#include "DType.h"

#include <QString>

#include <cstdint>

namespace torvex {

// How the user says a headerless file is laid out: read once from the panel
// and used alike by the decoder, the byte balance, the snapshots and the
// generated load function. The defaults are what a stored record lacking a
// field restores.
struct RawLayout {
    QString imgType = "8-bit"; // one of the thirteen type names
    int64_t offset = 0;        // bytes before the first frame
    int64_t gap = 0;           // bytes between the end of one frame and the next
    int64_t width = 0;
    int64_t height = 0;
    int64_t frame = 1;         // number of frames
    // Of multi-byte gray values; interleaved colours read reversed only when Little.
    ByteOrder byteOrder = ByteOrder::Native;
    QString readOrder = "F";       // "F": the file runs down the columns; "C": along the rows
    QString colorOrder = "AABBCC"; // "ABCABC" interleaved, anything else planar

    bool operator==(const RawLayout&) const = default;
};

// How the decoded frame, row and column axes are turned for showing and import.
struct AxisTransfer {
    QString permute = "0,1,2"; // three axis numbers; these keep the axes as they are
    bool hflip = false;
    bool vflip = false;

    bool operator==(const AxisTransfer&) const = default;
};

} // namespace torvex
