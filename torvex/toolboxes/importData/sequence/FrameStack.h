#pragma once

#include "toolboxes/importData/volume/NdArray.h"

#include <mutex>
#include <optional>

namespace torvex {

// The stack of a sequence, filled frame by frame. Decoding can write each
// uint8 image straight into its slot, so a sequence of equal uint8 images
// becomes its stack with no copy at all; any other sequence is copied into a
// stack of the final frame shape once, frame by frame.
class FrameStack {
public:
    explicit FrameStack(int64_t frameCount) : frameCount_(frameCount) {}

    // Memory for decoding frame `index`: its slot when the image is uint8 and
    // of the shape that the first such request fixed, else a fresh array.
    // Safe to call from several threads.
    NdArray decodeTarget(int64_t index, const Shape& shape, DType dtype);

    // The stack's own slot for frame `index`, the stack's frames having
    // `frameShape`: what is drawn there needs no copy.
    NdArray slot(int64_t index, const Shape& frameShape);
    // Puts frame `index` into the stack, whose frames have `frameShape`;
    // nothing is copied when the frame was decoded or drawn into its slot.
    // Throws std::runtime_error when the frame has another shape.
    void place(int64_t index, const NdArray& frame, const Shape& frameShape);

    // The stack; throws std::runtime_error for a sequence without frames.
    NdArray take();

private:
    const int64_t frameCount_;
    std::mutex mutex_;
    std::optional<NdArray> slab_; // slots for decoding, made on first request
    std::optional<NdArray> stack_;
};

} // namespace torvex
