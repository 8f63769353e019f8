#include "FrameRange.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace torvex {

namespace {
constexpr int64_t kMax = std::numeric_limits<int64_t>::max();
}

int64_t saturatingAdd(int64_t a, int64_t b) noexcept
{
    int64_t out;
    return __builtin_add_overflow(a, b, &out) ? kMax : out;
}

int64_t saturatingMul(int64_t a, int64_t b) noexcept
{
    int64_t out;
    return __builtin_mul_overflow(a, b, &out) ? kMax : out;
}

FrameRange::FrameRange(int64_t fileSize, int64_t offset, int64_t gap, int64_t frameBytes, int64_t frames)
    : fileSize_(fileSize), offset_(offset), gap_(gap), frameBytes_(frameBytes), frames_(frames)
{
}

int64_t FrameRange::frameStride() const noexcept { return saturatingAdd(frameBytes_, gap_); }

int64_t FrameRange::singleFrameBytes() const noexcept
{
    return std::clamp<int64_t>(fileSize_ - std::min(offset_, fileSize_), 0, frameBytes_);
}

bool FrameRange::frameComplete(int64_t index) const noexcept
{
    if (frameBytes_ == 0) return true;
    const int64_t start = saturatingAdd(offset_, saturatingMul(index, frameStride()));
    return saturatingAdd(start, frameBytes_) <= fileSize_;
}

void FrameRange::checkFrames(const std::function<void()>& perFrameCheck) const
{
    if (frames_ <= 0) throw std::runtime_error("need at least one array to stack");
    // Frames are read in order and later ones start further in, so the first
    // and the last frame decide what a frame-by-frame read meets first.
    if (!frameComplete(0)) throw std::runtime_error("The image data is not complete");
    perFrameCheck();
    if (!frameComplete(frames_ - 1)) throw std::runtime_error("The image data is not complete");
}

char readOrderCode(const QString& readOrder)
{
    if (readOrder == "C") return 'C';
    if (readOrder == "F") return 'F';
    throw std::runtime_error("order must be one of 'C' or 'F' (got '" + readOrder.toStdString() + "')");
}

std::pair<int64_t, int64_t> pixelStrides(char order, int64_t height, int64_t width, int64_t pixelBytes)
{
    if (order == 'C') return {saturatingMul(width, pixelBytes), pixelBytes};
    return {pixelBytes, saturatingMul(height, pixelBytes)};
}

void checkNonNegative(int64_t offset, int64_t gap, int64_t width, int64_t height)
{
    if (offset < 0 || gap < 0 || width < 0 || height < 0)
        throw std::runtime_error("offset, gap, width and height must not be negative");
}

} // namespace torvex
