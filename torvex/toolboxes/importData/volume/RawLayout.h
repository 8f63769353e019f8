#pragma once

#include <QString>

#include <cstdint>

namespace torvex {

// How the user says a headerless file is laid out: read once from the panel
// and used alike by the decoder, the byte balance, the snapshots and the
// generated load function.
struct RawLayout {
    QString imgType;         // one of the thirteen type names
    int64_t offset = 0;      // bytes before the first frame
    int64_t gap = 0;         // bytes between the end of one frame and the next
    int64_t width = 0;
    int64_t height = 0;
    int64_t frame = 0;       // number of frames
    bool littleEndian = false;
    bool bigEndian = false;  // multi-byte gray values stored big-end first; colours read as not little-endian
    QString readOrder = "F"; // "F": the file runs down the columns; "C": along the rows
    QString colorOrder = "AABBCC"; // "ABCABC" interleaved, anything else planar
};

} // namespace torvex
