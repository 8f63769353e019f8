#pragma once

namespace torvex {

// How the files of an image sequence are read, beside the default 8-bit,
// first-page reading that both settings off give.
struct SequenceReading {
    // Each image keeps its stored values; the stack takes the narrowest type
    // that holds them all (see KeptDepth.h).
    bool keepDepth = false;
    // Every page of a multi-page file is a frame of its own.
    bool allPages = false;

    bool operator==(const SequenceReading&) const = default;
};

} // namespace torvex
