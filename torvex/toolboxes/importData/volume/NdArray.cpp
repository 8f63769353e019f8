#include "NdArray.h"

#include "toolboxes/importData/volume/RawFile.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <numeric>
#include <sys/mman.h>

namespace torvex {

namespace {

[[noreturn]] void fail(const std::string& text) { throw std::runtime_error(text); }

int64_t checkedMul(int64_t a, int64_t b)
{
    int64_t out;
    if (__builtin_mul_overflow(a, b, &out)) fail("array size overflows 64 bits");
    return out;
}

Shape contiguousStrides(const Shape& shape, int64_t itemsize)
{
    Shape strides(shape.size());
    int64_t step = itemsize;
    for (size_t i = shape.size(); i-- > 0;) {
        strides[i] = step;
        step = checkedMul(step, std::max<int64_t>(shape[i], 1));
    }
    return strides;
}

template <class V> V reversed(V v)
{
    std::reverse(v.begin(), v.end());
    return v;
}

// Converts with NumPy's casting results for in-range values; out-of-range and
// NaN inputs of a float -> integer cast saturate (and give 0) instead of being
// undefined behaviour.
template <class To, class From> To convertValue(From from)
{
    if constexpr (std::is_same_v<To, Float16>) {
        return Float16(static_cast<float>(from));
    } else if constexpr (std::is_same_v<From, Float16>) {
        return convertValue<To>(static_cast<float>(from));
    } else if constexpr (std::is_integral_v<To> && std::is_floating_point_v<From>) {
        if (std::isnan(from)) return To{0};
        if (from <= static_cast<From>(std::numeric_limits<To>::min())) return std::numeric_limits<To>::min();
        if (from >= static_cast<From>(std::numeric_limits<To>::max())) return std::numeric_limits<To>::max();
        return static_cast<To>(from);
    } else {
        return static_cast<To>(from);
    }
}

// Python's repr of a float, given its shortest round-trip digits and exponent.
std::string pythonFloatText(bool negative, std::string digits, int exponent)
{
    std::string out = negative ? "-" : "";
    if (exponent >= -4 && exponent < 16) {
        const int pointPos = exponent + 1;
        if (pointPos <= 0) out += "0." + std::string(-pointPos, '0') + digits;
        else if (pointPos >= static_cast<int>(digits.size()))
            out += digits + std::string(pointPos - digits.size(), '0') + ".0";
        else out += digits.substr(0, pointPos) + "." + digits.substr(pointPos);
        return out;
    }
    out += digits.substr(0, 1);
    if (digits.size() > 1) out += "." + digits.substr(1);
    char exp[8];
    std::snprintf(exp, sizeof exp, "e%c%02d", exponent < 0 ? '-' : '+', std::abs(exponent));
    return out + exp;
}

// Splits "d.dddde±x" (std::to_chars scientific output) into digits and exponent.
std::string floatTextFromScientific(const std::string& sci)
{
    const bool negative = sci.front() == '-';
    const std::string body = negative ? sci.substr(1) : sci;
    const auto e = body.find('e');
    std::string digits;
    for (char c : body.substr(0, e))
        if (c != '.') digits += c;
    while (digits.size() > 1 && digits.back() == '0') digits.pop_back();
    return pythonFloatText(negative, digits, std::stoi(body.substr(e + 1)));
}

template <class T> std::string shortestFloatText(T value)
{
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    char buf[64];
    auto r = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::scientific);
    return floatTextFromScientific(std::string(buf, r.ptr));
}

std::string shortestHalfText(Float16 value)
{
    const float f = value;
    if (std::isnan(f) || std::isinf(f)) return shortestFloatText(f);
    // The fewest significant digits that read back as the same half.
    for (int precision = 0; precision < 8; ++precision) {
        char buf[64];
        auto r = std::to_chars(buf, buf + sizeof buf, f, std::chars_format::scientific, precision);
        const std::string text(buf, r.ptr);
        if (Float16(std::strtof(text.c_str(), nullptr)).bits() == value.bits())
            return floatTextFromScientific(text);
    }
    return shortestFloatText(f);
}

} // namespace

int64_t elementCount(const Shape& shape)
{
    int64_t n = 1;
    for (int64_t e : shape) {
        if (e < 0) fail("negative dimensions are not allowed");
        n = checkedMul(n, e);
    }
    return n;
}

std::string shapeText(const Shape& shape)
{
    std::string out = "(";
    for (size_t i = 0; i < shape.size(); ++i) {
        if (i) out += ",";
        out += std::to_string(shape[i]);
    }
    if (shape.size() == 1) out += ",";
    return out + ")";
}

// Where each picked item starts in the storage, and the gathered copy made on demand.
struct NdArray::Picks {
    std::vector<int64_t> offsets;
    std::once_flag gatherOnce;
    std::optional<NdArray> gathered;
};

NdArray::NdArray() : shape_{0}, strides_{1} {}

const NdArray& NdArray::regular() const
{
    if (!picks_) return *this;
    std::call_once(picks_->gatherOnce, [this] { picks_->gathered = copy(); });
    return *picks_->gathered;
}

const std::byte* NdArray::data() const { return picks_ ? regular().data() : base_ + offset_; }

// Large arrays get their own anonymous mapping: zero-filled by the kernel at no
// cost, in huge pages where the system allows (far fewer page faults when a
// stack of frames is filled), and returned to the system when freed.
static std::shared_ptr<void> allocateStorage(int64_t bytes, bool zeroed)
{
    constexpr int64_t kMappedFrom = int64_t(4) << 20;
    if (bytes >= kMappedFrom) {
        void* memory = ::mmap(nullptr, static_cast<size_t>(bytes), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS,
                              -1, 0);
        if (memory == MAP_FAILED) fail("cannot allocate " + std::to_string(bytes) + " bytes");
        ::madvise(memory, static_cast<size_t>(bytes), MADV_HUGEPAGE);
        return std::shared_ptr<void>(memory, [bytes](void* p) { ::munmap(p, static_cast<size_t>(bytes)); });
    }
    const size_t n = std::max<size_t>(static_cast<size_t>(bytes), 1);
    void* memory = zeroed ? std::calloc(n, 1) : std::malloc(n);
    if (!memory) fail("cannot allocate " + std::to_string(bytes) + " bytes");
    return std::shared_ptr<void>(memory, std::free);
}

NdArray NdArray::allocate(const Shape& shape, DType dtype, bool zeroed)
{
    const int64_t bytes = checkedMul(elementCount(shape), itemSize(dtype));
    NdArray a;
    a.owner_ = allocateStorage(bytes, zeroed);
    a.base_ = static_cast<const std::byte*>(a.owner_.get());
    a.storageSize_ = bytes;
    a.shape_ = shape;
    a.strides_ = contiguousStrides(shape, itemSize(dtype));
    a.dtype_ = dtype;
    a.writeable_ = true;
    return a;
}

NdArray NdArray::zeros(const Shape& shape, DType dtype) { return allocate(shape, dtype, true); }
NdArray NdArray::empty(const Shape& shape, DType dtype) { return allocate(shape, dtype, false); }

NdArray NdArray::strided(const QByteArray& bytes, int64_t offset, const Shape& shape, const Shape& byteStrides,
                         DType dtype, ByteOrder order)
{
    NdArray whole;
    whole.base_ = reinterpret_cast<const std::byte*>(bytes.constData());
    // Bytes of a mapped file are held by their map, not by the QByteArray
    // that merely points at them.
    whole.owner_ = MappedFile::ownerOf(bytes.constData());
    if (!whole.owner_) {
        auto holder = std::make_shared<const QByteArray>(bytes);
        whole.base_ = reinterpret_cast<const std::byte*>(holder->constData());
        whole.owner_ = std::move(holder);
    }
    whole.storageSize_ = bytes.size();
    whole.dtype_ = dtype;
    whole.order_ = order;
    whole.writeable_ = false;
    return whole.viewWith(offset, shape, byteStrides);
}

NdArray NdArray::wrap(const QByteArray& bytes, int64_t offset, int64_t length, DType dtype, ByteOrder order)
{
    if (length % itemSize(dtype) != 0) fail("buffer size must be a multiple of element size");
    return strided(bytes, offset, {length / itemSize(dtype)}, {itemSize(dtype)}, dtype, order);
}

// A view on the same storage; fails unless every element it reaches lies inside.
NdArray NdArray::viewWith(int64_t offset, Shape shape, Shape strides) const
{
    const int64_t count = elementCount(shape);
    if (count > 0) {
        int64_t low = offset, high = offset;
        for (size_t i = 0; i < shape.size(); ++i) {
            const int64_t reach = checkedMul(shape[i] - 1, strides[i]);
            (reach < 0 ? low : high) += reach;
        }
        if (low < 0 || high + itemSize(dtype_) > storageSize_) fail("view reaches outside its storage");
    }
    NdArray v = *this;
    v.picks_.reset();
    v.offset_ = offset;
    v.shape_ = std::move(shape);
    v.strides_ = std::move(strides);
    return v;
}

void NdArray::checkAxis(int axis) const
{
    if (axis < 0 || axis >= ndim())
        fail("axis " + std::to_string(axis) + " is out of bounds for array of dimension " + std::to_string(ndim()));
}

int64_t NdArray::extent(int axis) const
{
    checkAxis(axis);
    return shape_[axis];
}

int64_t NdArray::stride(int axis) const
{
    checkAxis(axis);
    return regular().strides_[axis];
}

int64_t NdArray::size() const noexcept
{
    int64_t n = 1;
    for (int64_t e : shape_) n *= e; // cannot overflow: checked when the shape was made
    return n;
}

bool NdArray::is_contiguous() const noexcept
{
    if (picks_) return false;
    int64_t step = itemsize();
    for (size_t i = shape_.size(); i-- > 0;) {
        if (shape_[i] != 1 && strides_[i] != step) return size() == 0;
        step *= shape_[i];
    }
    return true;
}

std::byte* NdArray::mutableData()
{
    if (!writeable_) fail("array is read-only");
    return const_cast<std::byte*>(data());
}

bool NdArray::sharesStorageWith(const NdArray& other) const noexcept
{
    return owner_ && owner_ == other.owner_;
}

NdArray NdArray::transpose(const std::vector<int>& axes) const
{
    if (picks_) return regular().transpose(axes);
    if (static_cast<int>(axes.size()) != ndim()) fail("axes don't match array");
    std::vector<bool> seen(ndim(), false);
    Shape shape, strides;
    for (int a : axes) {
        if (a < 0) a += ndim(); // NumPy counts negative axes from the end
        checkAxis(a);
        if (seen[a]) fail("repeated axis in transpose");
        seen[a] = true;
        shape.push_back(shape_[a]);
        strides.push_back(strides_[a]);
    }
    return viewWith(offset_, shape, strides);
}

NdArray NdArray::flip(int axis) const
{
    if (picks_) return regular().flip(axis);
    checkAxis(axis);
    Shape strides = strides_;
    const int64_t offset = offset_ + (shape_[axis] > 0 ? (shape_[axis] - 1) * strides_[axis] : 0);
    strides[axis] = -strides_[axis];
    return viewWith(offset, shape_, strides);
}

NdArray NdArray::slice(int axis, int64_t start, int64_t stop, int64_t step) const
{
    if (picks_) return regular().slice(axis, start, stop, step);
    checkAxis(axis);
    if (step <= 0) fail("slice step must be positive");
    const int64_t n = shape_[axis];
    // Python's clamping of slice bounds.
    auto clampBound = [n](int64_t v) { return std::clamp<int64_t>(v < 0 ? v + n : v, 0, n); };
    start = clampBound(start);
    stop = clampBound(stop);
    Shape shape = shape_, strides = strides_;
    shape[axis] = stop > start ? (stop - start + step - 1) / step : 0;
    strides[axis] = strides_[axis] * step;
    return viewWith(offset_ + start * strides_[axis], shape, strides);
}

NdArray NdArray::index(int64_t i) const
{
    checkAxis(0);
    if (i < 0 || i >= shape_[0])
        fail("index " + std::to_string(i) + " is out of bounds for axis 0 with size " + std::to_string(shape_[0]));
    return viewWith(picks_ ? picks_->offsets[i] : offset_ + i * strides_[0], Shape(shape_.begin() + 1, shape_.end()),
                    Shape(strides_.begin() + 1, strides_.end()));
}

NdArray NdArray::squeeze(int axis) const
{
    if (picks_) return regular().squeeze(axis);
    checkAxis(axis);
    if (shape_[axis] != 1) fail("cannot select an axis to squeeze out which has size not equal to one");
    Shape shape = shape_, strides = strides_;
    shape.erase(shape.begin() + axis);
    strides.erase(strides.begin() + axis);
    return viewWith(offset_, shape, strides);
}

NdArray NdArray::reshape(const Shape& shape, char order) const
{
    if (picks_) return regular().reshape(shape, order);
    if (order == 'F') {
        // Reading in F order is reading the reversed axes in C order.
        std::vector<int> reverseAxes(ndim());
        std::iota(reverseAxes.rbegin(), reverseAxes.rend(), 0);
        NdArray c = transpose(reverseAxes).reshape(reversed(shape), 'C');
        std::vector<int> back(shape.size());
        std::iota(back.rbegin(), back.rend(), 0);
        return c.transpose(back);
    }
    if (order != 'C') fail(std::string("order must be 'C' or 'F' (got '") + order + "')");
    if (elementCount(shape) != size())
        fail("cannot reshape array of size " + std::to_string(size()) + " into shape " + shapeText(shape));
    if (ndim() == 1) {
        // Any one-dimensional run of elements reshapes as a view.
        Shape strides = contiguousStrides(shape, 1);
        for (int64_t& s : strides) s *= strides_[0];
        return viewWith(offset_, shape, strides);
    }
    if (is_contiguous()) return viewWith(offset_, shape, contiguousStrides(shape, itemsize()));
    return copy().reshape(shape, 'C');
}

namespace {

// Calls fn(rowA, rowB) for each innermost row of two arrays of one shape, in C order.
template <class Fn>
void forEachRowPair(const Shape& shape, const std::byte* a, const Shape& stridesA, const std::byte* b,
                    const Shape& stridesB, Fn&& fn)
{
    const int n = static_cast<int>(shape.size());
    if (n == 0) {
        fn(a, b);
        return;
    }
    for (int64_t e : shape)
        if (e == 0) return;
    std::vector<int64_t> counter(n, 0);
    for (;;) {
        fn(a, b);
        int axis = n - 2;
        for (; axis >= 0; --axis) {
            a += stridesA[axis];
            b += stridesB[axis];
            if (++counter[axis] < shape[axis]) break;
            a -= stridesA[axis] * shape[axis];
            b -= stridesB[axis] * shape[axis];
            counter[axis] = 0;
        }
        if (axis < 0) return;
    }
}

} // namespace

// Copies src's elements into the writeable view dst of the same shape,
// converting the element type and byte order on the way.
void NdArray::assign(NdArray& dst, const NdArray& src)
{
    if (dst.shape_ != src.shape_) fail("shapes differ in assignment");
    if (src.picks_) {
        for (int64_t i = 0; i < src.shape_[0]; ++i) {
            NdArray slot = dst.index(i);
            assign(slot, src.index(i));
        }
        return;
    }
    std::byte* out = dst.mutableData();
    const int n = src.ndim();
    const int64_t inner = n ? src.shape_.back() : 1;
    const int64_t strideIn = n ? src.strides_.back() : 0;
    const int64_t strideOut = n ? dst.strides_.back() : 0;
    const ByteOrder order = src.order_;
    const bool plainBytes = src.dtype_ == dst.dtype_ && !needsSwap(order) && !needsSwap(dst.order_);
    const int64_t item = src.itemsize();
    if (plainBytes && src.is_contiguous() && dst.is_contiguous()) {
        std::copy_n(src.data(), src.nbytes(), out);
        return;
    }
    visitDType(dst.dtype_, [&](auto to) {
        using To = decltype(to);
        visitDType(src.dtype_, [&](auto from) {
            using From = decltype(from);
            forEachRowPair(src.shape_, src.data(), src.strides_, out, dst.strides_,
                           [&](const std::byte* s, const std::byte* d) {
                               auto* t = const_cast<std::byte*>(d);
                               // Same type: bytes, not values, so that a copy keeps every NaN's bits as NumPy's does.
                               if (plainBytes) {
                                   if (strideIn == item && strideOut == item) std::copy_n(s, inner * item, t);
                                   else
                                       for (int64_t i = 0; i < inner; ++i, s += strideIn, t += strideOut)
                                           std::copy_n(s, item, t);
                                   return;
                               }
                               for (int64_t i = 0; i < inner; ++i, s += strideIn, t += strideOut) {
                                   const To v = convertValue<To>(loadElement<From>(s, order));
                                   std::memcpy(t, &v, sizeof(To));
                               }
                           });
        });
    });
}

NdArray NdArray::copy() const { return astype(dtype_); }

void NdArray::assignFrom(const NdArray& source) { assign(*this, source); }

NdArray NdArray::astype(DType dtype) const
{
    NdArray out = empty(shape_, dtype);
    if (dtype == dtype_ && !needsSwap(order_) && is_contiguous()) std::copy_n(data(), nbytes(), out.mutableData());
    else assign(out, *this);
    return out;
}

NdArray NdArray::take(const std::vector<int64_t>& indices) const
{
    checkAxis(0);
    auto picks = std::make_shared<Picks>();
    picks->offsets.reserve(indices.size());
    for (int64_t i : indices) {
        if (i < 0 || i >= shape_[0])
            fail("index " + std::to_string(i) + " is out of bounds for axis 0 with size " + std::to_string(shape_[0]));
        picks->offsets.push_back(picks_ ? picks_->offsets[i] : offset_ + i * strides_[0]);
    }
    NdArray out = *this;
    out.shape_[0] = static_cast<int64_t>(indices.size());
    out.picks_ = std::move(picks);
    out.writeable_ = false; // it reads another array's storage
    return out;
}

NdArray NdArray::pad(const std::vector<std::pair<int64_t, int64_t>>& widths) const
{
    if (static_cast<int>(widths.size()) != ndim()) fail("pad widths don't match array");
    Shape shape = shape_;
    for (int i = 0; i < ndim(); ++i) {
        if (widths[i].first < 0 || widths[i].second < 0) fail("index can't contain negative values");
        shape[i] = shape_[i] + widths[i].first + widths[i].second;
    }
    NdArray out = zeros(shape, dtype_);
    int64_t interiorOffset = 0;
    for (int i = 0; i < ndim(); ++i) interiorOffset += widths[i].first * out.strides_[i];
    NdArray interior = out.viewWith(interiorOffset, shape_, out.strides_);
    assign(interior, *this);
    return out;
}

double NdArray::valueAt(const std::byte* element) const
{
    return visitDType(dtype_, [&](auto tag) {
        return static_cast<double>(loadElement<decltype(tag)>(element, order_));
    });
}

std::string NdArray::elementText(const std::byte* element) const
{
    return visitDType(dtype_, [&](auto tag) -> std::string {
        using T = decltype(tag);
        const T value = loadElement<T>(element, order_);
        if constexpr (std::is_same_v<T, Float16>) return shortestHalfText(value);
        else if constexpr (std::is_floating_point_v<T>) return shortestFloatText(value);
        else return std::to_string(value);
    });
}

std::pair<double, double> NdArray::minMax() const
{
    double lo = std::numeric_limits<double>::quiet_NaN(), hi = lo;
    visitDType(dtype_, [&](auto tag) {
        using T = decltype(tag);
        forEach([&](const std::byte* p) {
            const double v = static_cast<double>(loadElement<T>(p, order_));
            if (std::isnan(v)) return;
            if (!(v >= lo)) lo = v;
            if (!(v <= hi)) hi = v;
        });
    });
    return {lo, hi};
}

} // namespace torvex
