#pragma once

#include "toolboxes/importData/volume/NdArray.h"

#include <mutex>
#include <optional>

namespace torvex {

// The stack of a sequence, filled frame by frame. Decoding can write each
// image that is kept as it is stored straight into its slot, so a sequence of
// equal images becomes its stack with no copy at all; any other sequence is
// copied into a stack of the final frame shape once, frame by frame.
class FrameStack {
public:
    // `storedTypes`: decoded images of any type are kept as they are, not
    // only uint8 ones.
    explicit FrameStack(int64_t frameCount, bool storedTypes = false)
        : frameCount_(frameCount), storedTypes_(storedTypes) {}

    // Memory for decoding frame `index`: its slot when the image is kept as
    // it is and of the shape and type that the first such request fixed, else
    // a fresh array. Safe to call from several threads.
    NdArray decodeTarget(int64_t index, const Shape& shape, DType dtype);

    // The stack's own slot for frame `index`, the stack's frames having
    // `frameShape` and `dtype`: what is drawn there needs no copy.
    NdArray slot(int64_t index, const Shape& frameShape, DType dtype = DType::UInt8);
    // Puts frame `index` into the stack, whose frames have `frameShape` and
    // `dtype`; nothing is copied when the frame was decoded or drawn into its
    // slot. Throws std::runtime_error when the frame has another shape or type.
    void place(int64_t index, const NdArray& frame, const Shape& frameShape, DType dtype = DType::UInt8);

    // The stack; throws std::runtime_error for a sequence without frames.
    NdArray take();

private:
    const int64_t frameCount_;
    const bool storedTypes_;
    std::mutex mutex_;
    std::optional<NdArray> slab_; // slots for decoding, made on first request
    std::optional<NdArray> stack_;
};

} // namespace torvex
