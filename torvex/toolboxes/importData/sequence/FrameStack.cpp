#include "FrameStack.h"

#include <algorithm>
#include <stdexcept>

namespace torvex {

NdArray FrameStack::decodeTarget(int64_t index, const Shape& shape, DType dtype)
{
    if (dtype == DType::UInt8 || storedTypes_) {
        std::lock_guard lock(mutex_);
        if (!slab_) {
            Shape slabShape = shape;
            slabShape.insert(slabShape.begin(), frameCount_);
            // Pages of a slot are only taken up once it is written, so
            // slots of images that end up elsewhere cost address space only.
            try {
                slab_ = NdArray::empty(slabShape, dtype);
            } catch (const std::runtime_error&) {
                slab_ = NdArray(); // too large to reserve: decode each image on its own
            }
        }
        if (slab_->ndim() == static_cast<int>(shape.size()) + 1 && slab_->dtype() == dtype
            && slab_->index(0).shape() == shape)
            return slab_->index(index);
    }
    return NdArray::empty(shape, dtype);
}

NdArray FrameStack::slot(int64_t index, const Shape& frameShape, DType dtype)
{
    if (!stack_) {
        // No decoding runs any more, so the slab is read without the lock.
        const bool slabFits =
            slab_ && slab_->ndim() > 1 && slab_->dtype() == dtype && slab_->index(0).shape() == frameShape;
        if (slabFits) stack_ = *slab_;
        else {
            Shape shape = frameShape;
            shape.insert(shape.begin(), frameCount_);
            stack_ = NdArray::empty(shape, dtype);
        }
        slab_.reset();
    }
    return stack_->index(index);
}

void FrameStack::place(int64_t index, const NdArray& frame, const Shape& frameShape, DType dtype)
{
    if (frame.shape() != frameShape || frame.dtype() != dtype)
        throw std::runtime_error("all input arrays must have the same shape: " + shapeText(frameShape) + " and "
                                 + shapeText(frame.shape()));
    NdArray target = slot(index, frameShape, dtype);
    if (frame.data() == target.data()) return; // decoded or drawn in place
    std::byte* out = target.mutableData();
    if (frame.is_contiguous()) std::copy_n(frame.data(), frame.nbytes(), out);
    else frame.forEach([&, item = frame.itemsize()](const std::byte* p) { out = std::copy_n(p, item, out); });
}

NdArray FrameStack::take()
{
    if (!stack_) throw std::runtime_error("need at least one array to stack");
    return *stack_;
}

} // namespace torvex
