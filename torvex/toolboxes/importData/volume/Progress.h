#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>

namespace torvex {

class NdArray;

// Told how many frames of a long pass over a volume are done, between chunks
// of frames; returning false stops the pass, which then throws Cancelled.
using Progress = std::function<bool(int64_t done, int64_t total)>;

struct Cancelled : std::runtime_error {
    Cancelled() : std::runtime_error("Cancelled") {}
};

// Frames per chunk of a pass over `array`'s first axis: about 64 MiB, at least
// one frame, so a check between chunks costs nothing measurable.
int64_t framesPerChunk(const NdArray& array);
// Calls `progress` (if any) and throws Cancelled when it says stop.
void reportProgress(const Progress& progress, int64_t done, int64_t total);
// A new C-contiguous copy of `source`, made chunk by chunk of frames.
NdArray copyWithProgress(const NdArray& source, const Progress& progress);

} // namespace torvex
