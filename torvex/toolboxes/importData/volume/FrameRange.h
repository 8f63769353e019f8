#pragma once

#include "NdArray.h"

#include <QString>

#include <cstdint>
#include <functional>

namespace torvex {

// Where the frames of a raw file lie and which of them the file holds whole.
// Sizes saturate at INT64_MAX instead of overflowing: a size that large can
// never fit in a file, so the completeness tests still answer correctly.
class FrameRange {
public:
    FrameRange(int64_t fileSize, int64_t offset, int64_t gap, int64_t frameBytes, int64_t frames);

    int64_t frameBytes() const noexcept { return frameBytes_; }
    int64_t frameStride() const noexcept; // frame bytes plus gap
    // Bytes from offset up to offset + frame bytes that the file really has.
    int64_t singleFrameBytes() const noexcept;
    // For a read of several frames: fails as a frame-by-frame read would,
    // "The image data is not complete" for a short frame, `perFrameCheck`'s own
    // failure when the frames cannot be shaped, and a stack of no frames.
    void checkFrames(const std::function<void()>& perFrameCheck) const;

private:
    int64_t fileSize_, offset_, gap_, frameBytes_, frames_;
    bool frameComplete(int64_t index) const noexcept;
};

int64_t saturatingAdd(int64_t a, int64_t b) noexcept;
int64_t saturatingMul(int64_t a, int64_t b) noexcept;

// 'C' or 'F' from the read order text; fails for anything else.
char readOrderCode(const QString& readOrder);
// Byte strides of rows and columns within a frame for pixels of `pixelBytes`.
std::pair<int64_t, int64_t> pixelStrides(char order, int64_t height, int64_t width, int64_t pixelBytes);
// Rejects negative sizes before any arithmetic is done with them.
void checkNonNegative(int64_t offset, int64_t gap, int64_t width, int64_t height);

} // namespace torvex
