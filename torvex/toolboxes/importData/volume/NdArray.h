#pragma once

#include "DType.h"
#include "Progress.h"

#include <QByteArray>
#include <QMetaType>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

namespace torvex {

using Shape = std::vector<int64_t>;

// An n-dimensional array: shared storage, a byte offset into it, a shape, byte
// strides (negative for flipped axes) and an element type. Views share the
// storage and keep it alive; the last holder frees it. Arrays that wrap bytes
// owned by someone else (a file buffer) are read-only, so no view can write
// through to the file's bytes.
//
// Every operation that fails throws std::runtime_error with a readable text.
class NdArray {
public:
    // An empty one-dimensional uint8 array.
    NdArray();

    // A new C-contiguous, writeable array filled with zeros.
    static NdArray zeros(const Shape& shape, DType dtype);
    // A new C-contiguous, writeable array whose elements are not yet set.
    static NdArray empty(const Shape& shape, DType dtype);
    // A one-dimensional read-only view of length bytes of `bytes` from offset,
    // without copying. Fails if length is no multiple of the element size.
    static NdArray wrap(const QByteArray& bytes, int64_t offset, int64_t length, DType dtype,
                        ByteOrder order = ByteOrder::Native);
    // A read-only strided view over `bytes`, checked against their extent.
    static NdArray strided(const QByteArray& bytes, int64_t offset, const Shape& shape,
                           const Shape& byteStrides, DType dtype, ByteOrder order = ByteOrder::Native);

    DType dtype() const noexcept { return dtype_; }
    ByteOrder byteOrder() const noexcept { return order_; }
    std::vector<int64_t> shape() const { return shape_; }
    int ndim() const noexcept { return static_cast<int>(shape_.size()); }
    int64_t extent(int axis) const;
    int64_t stride(int axis) const; // in bytes
    const Shape& byteStrides() const { return regular().strides_; }
    int64_t size() const noexcept; // element count
    int64_t nbytes() const noexcept { return size() * itemSize(dtype_); }
    int itemsize() const noexcept { return itemSize(dtype_); }
    bool is_contiguous() const noexcept; // C order, no gaps
    // Whether the first axis picks items of another array by index (see take).
    bool is_picked() const noexcept { return picks_ != nullptr; }
    bool writeable() const noexcept { return writeable_; }

    // Address of element (0, ..., 0).
    const std::byte* data() const;
    // Same, for filling a freshly made array; throws for read-only arrays.
    std::byte* mutableData();
    // Whether both arrays live in the same storage (views of one another).
    bool sharesStorageWith(const NdArray& other) const noexcept;

    // Views: no element is copied.
    NdArray transpose(const std::vector<int>& axes) const;
    NdArray flip(int axis) const;
    NdArray slice(int axis, int64_t start, int64_t stop, int64_t step = 1) const;
    NdArray index(int64_t i) const; // the sub-array at i of the first axis
    NdArray squeeze(int axis) const; // drops an axis of size 1
    // Reads the elements in `order` ('C': last axis fastest, 'F': first axis
    // fastest) into the new shape; a view where strides allow, else a copy.
    NdArray reshape(const Shape& shape, char order = 'C') const;

    // Copies: the result is new, C-contiguous and writeable.
    NdArray copy() const;
    // Copies `source`, of this array's shape, into this writeable array or view.
    void assignFrom(const NdArray& source);
    NdArray astype(DType dtype) const;
    // The items at `indices` of the first axis. No element is copied here: the
    // result picks them from this array's storage, and is gathered into a new
    // array only when something needs its elements laid out in one block.
    NdArray take(const std::vector<int64_t>& indices) const;
    // Zeros before and after each axis; `widths` has one (before, after) pair per axis.
    NdArray pad(const std::vector<std::pair<int64_t, int64_t>>& widths) const;

    // Element value as double (element given by its byte address in this array).
    double valueAt(const std::byte* element) const;
    // Text of one element as NumPy prints it: integers in decimal, floats in the
    // shortest form that reads back as the same value of this element type.
    std::string elementText(const std::byte* element) const;
    // Smallest and largest element, ignoring NaN; both NaN when no number is there.
    std::pair<double, double> minMax() const;

    // Visits every element in C order, calling fn(const std::byte* element).
    template <class Fn> void forEach(Fn&& fn) const;

private:
    std::shared_ptr<const void> owner_;
    const std::byte* base_ = nullptr;
    int64_t storageSize_ = 0;
    int64_t offset_ = 0;
    Shape shape_;
    Shape strides_;
    DType dtype_ = DType::UInt8;
    ByteOrder order_ = ByteOrder::Native;
    bool writeable_ = false;
    struct Picks;
    std::shared_ptr<Picks> picks_;

    // This array, or for a picked one its items gathered once into a new array.
    const NdArray& regular() const;
    static NdArray allocate(const Shape& shape, DType dtype, bool zeroed);
    static void assign(NdArray& dst, const NdArray& src);
    NdArray viewWith(int64_t offset, Shape shape, Shape strides) const;
    void checkAxis(int axis) const;
};

// Product of the extents, failing when it leaves 64 bits.
int64_t elementCount(const Shape& shape);
// "(1,2,3)", as NumPy writes a shape.
std::string shapeText(const Shape& shape);

// Writes a NumPy .npy file (version 1.0, C order) of any array, views included.
// A cancelled save (see Progress) leaves no file behind, nor a partial one.
void saveNpy(const NdArray& array, const QString& path, const Progress& progress = {});

template <class Fn> void NdArray::forEach(Fn&& fn) const
{
    if (size() == 0) return;
    if (picks_) {
        for (int64_t i = 0; i < shape_[0]; ++i) index(i).forEach(fn);
        return;
    }
    const int n = ndim();
    if (n == 0) {
        fn(data());
        return;
    }
    std::vector<int64_t> counter(n, 0);
    const std::byte* p = data();
    const int64_t innerExtent = shape_[n - 1];
    const int64_t innerStride = strides_[n - 1];
    for (;;) {
        const std::byte* q = p;
        for (int64_t i = 0; i < innerExtent; ++i, q += innerStride) fn(q);
        int axis = n - 2;
        for (; axis >= 0; --axis) {
            p += strides_[axis];
            if (++counter[axis] < shape_[axis]) break;
            p -= strides_[axis] * shape_[axis];
            counter[axis] = 0;
        }
        if (axis < 0) return;
    }
}

} // namespace torvex

Q_DECLARE_METATYPE(torvex::NdArray)
