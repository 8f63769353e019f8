#include "DisplayImage.h"

#include <QThread>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentMap>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <type_traits>
#include <vector>

// The hot loops are written with GCC/Clang vector extensions rather than left
// to the autovectoriser, which the optimisation level of the build
// (RelWithDebInfo, -O2) mostly keeps off; target_clones adds an AVX2 build of
// each that is picked at run time. Clang cannot clone templates; its builds
// here are the checking builds, where speed does not matter.
#if defined(__clang__)
#define TORVEX_HOT_LOOP
#else
#define TORVEX_HOT_LOOP __attribute__((target_clones("avx2", "default")))
#endif
// The vectors never cross this file, so the note that their passing differs
// between the two builds does not concern us.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace torvex {

namespace {

// ---------------------------------------------------------------- lanes

// Values are handled sixteen at a time: sixteen bytes of output, one AVX2
// register of 16-bit input.
constexpr int lanes = 16;

template <class E> struct VectorOf {
    typedef E type __attribute__((vector_size(sizeof(E) * lanes)));
};
template <class E> using Vector = typename VectorOf<E>::type;
using Bytes = Vector<uint8_t>;

template <class V, class E> [[gnu::always_inline]] inline V splat(E value)
{
    return V{} + value; // a scalar operand is broadcast to every lane
}

// The arithmetic type an element is read as.
template <class T> using Number = std::conditional_t<std::is_same_v<T, Float16>, float, T>;

template <class T> [[gnu::always_inline]] inline T byteSwapped(T value)
{
    using Bits = std::conditional_t<sizeof(T) == 2, uint16_t, std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>>;
    const auto bits = std::bit_cast<Bits>(value);
    if constexpr (sizeof(T) == 2) return std::bit_cast<T>(static_cast<Bits>(__builtin_bswap16(bits)));
    else if constexpr (sizeof(T) == 4) return std::bit_cast<T>(static_cast<Bits>(__builtin_bswap32(bits)));
    else return std::bit_cast<T>(static_cast<Bits>(__builtin_bswap64(bits)));
}

// Up to `lanes` elements from p on, `stride` bytes apart. Lanes past `count`
// repeat the first element: a real value, it changes no min or max and has a
// level of its own.
template <class T>
[[gnu::always_inline]] inline Vector<Number<T>> loadLanes(const std::byte* p, int64_t stride, int count,
                                                          ByteOrder order)
{
    Vector<Number<T>> v;
    if constexpr (std::is_same_v<T, Number<T>>) {
        if (count == lanes && stride == sizeof(T)) {
            std::memcpy(&v, p, sizeof v);
            // Foreign byte order swapped in the register, lane by lane: a big-endian
            // frame shows within 1.5 times a native one (bench_display_image).
            if constexpr (sizeof(T) > 1)
                if (needsSwap(order))
                    for (int k = 0; k < lanes; ++k) v[k] = byteSwapped(v[k]);
            return v;
        }
    }
    for (int k = 0; k < lanes; ++k) v[k] = loadElement<T>(p + (k < count ? k : 0) * stride, order);
    return v;
}

[[gnu::always_inline]] inline void storeLanes(Bytes values, uint8_t* out, int64_t stride, int count)
{
    if (count == lanes && stride == 1) {
        std::memcpy(out, &values, sizeof values);
        return;
    }
    for (int k = 0; k < count; ++k) out[k * stride] = values[k];
}

// Rows of a 16 x 16 byte tile become its columns. Interleaving row i with row
// i + 8 rotates the 8 bits of each byte's (row, column) index left by one; four
// rounds swap row and column.
[[gnu::always_inline]] inline void transpose(std::array<Bytes, lanes>& tile)
{
    for (int round = 0; round < 4; ++round) {
        std::array<Bytes, lanes> next;
        for (int i = 0; i < lanes / 2; ++i) {
            next[2 * i] = __builtin_shufflevector(tile[i], tile[i + 8], 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6,
                                                  22, 7, 23);
            next[2 * i + 1] = __builtin_shufflevector(tile[i], tile[i + 8], 8, 24, 9, 25, 10, 26, 11, 27, 12, 28,
                                                      13, 29, 14, 30, 15, 31);
        }
        tile = next;
    }
}

// ---------------------------------------------------------------- geometry

struct Axis {
    int64_t extent;
    int64_t stride; // bytes
};

// A frame as rows x columns x channels from the address of element (0, 0, 0).
struct Frame {
    const std::byte* origin;
    Axis rows, columns, channels;
    ByteOrder order;
};

Frame frameOf(const NdArray& array)
{
    const int64_t channels = array.ndim() == 3 ? array.extent(2) : 1;
    if ((array.ndim() != 2 && array.ndim() != 3) || (channels != 1 && channels != 3 && channels != 4))
        throw std::runtime_error("cannot display an array of shape " + shapeText(array.shape()) +
                                 ": a frame has the shape (H, W) or (H, W, C) with C of 1, 3 or 4");
    return {array.data(),
            {array.extent(0), array.stride(0)},
            {array.extent(1), array.stride(1)},
            {channels, array.ndim() == 3 ? array.stride(2) : array.itemsize()},
            array.byteOrder()};
}

// A frame's elements in address order: axes outermost first, with positive and
// falling strides, neighbours that form one run merged. Reading in this order
// streams memory whatever the view's layout (flipped, column-major).
struct MemoryWalk {
    const std::byte* start;
    std::vector<Axis> axes; // never empty; the last is the run
};

MemoryWalk memoryWalk(const Frame& frame, int itemsize)
{
    const std::byte* start = frame.origin;
    std::vector<Axis> axes;
    for (Axis axis : {frame.rows, frame.columns, frame.channels}) {
        if (axis.extent == 1) continue;
        if (axis.stride < 0) {
            start += axis.stride * (axis.extent - 1);
            axis.stride = -axis.stride;
        }
        axes.push_back(axis);
    }
    std::sort(axes.begin(), axes.end(), [](Axis a, Axis b) { return a.stride > b.stride; });
    MemoryWalk walk{start, {}};
    for (Axis axis : axes) {
        Axis* outer = walk.axes.empty() ? nullptr : &walk.axes.back();
        if (outer && outer->stride == axis.stride * axis.extent) *outer = {outer->extent * axis.extent, axis.stride};
        else walk.axes.push_back(axis);
    }
    if (walk.axes.empty()) walk.axes.push_back({1, itemsize});
    return walk;
}

// [begin, end) of `part` of `parts` about equal pieces of count, cut at
// multiples of `grain`.
std::pair<int64_t, int64_t> pieceOf(int64_t count, int64_t grain, int64_t part, int64_t parts)
{
    const int64_t grains = (count + grain - 1) / grain;
    return {std::min(count, grains * part / parts * grain), std::min(count, grains * (part + 1) / parts * grain)};
}

// Part of a walk: a piece of its outermost axis.
MemoryWalk pieceOf(MemoryWalk walk, int64_t part, int64_t parts)
{
    Axis& outer = walk.axes.front();
    const auto [begin, end] = pieceOf(outer.extent, 1, part, parts);
    walk.start += begin * outer.stride;
    outer.extent = end - begin;
    return walk;
}

// Calls fn(first, count, stride) for each run of the walk.
template <class Fn> void forEachRun(const MemoryWalk& walk, Fn&& fn)
{
    const size_t n = walk.axes.size();
    const Axis run = walk.axes[n - 1];
    const Axis outer = n >= 2 ? walk.axes[n - 2] : Axis{1, 0};
    const Axis outermost = n == 3 ? walk.axes[0] : Axis{1, 0};
    for (int64_t i = 0; i < outermost.extent; ++i)
        for (int64_t j = 0; j < outer.extent; ++j)
            fn(walk.start + i * outermost.stride + j * outer.stride, run.extent, run.stride);
}

// ---------------------------------------------------------------- cores

// A frame is cut into this many chunks of work, or into one below
// parallelMinimum elements, where handing work over costs more than it saves.
constexpr int64_t chunksPerFrame = 64;
constexpr int64_t parallelMinimum = int64_t{1} << 18;

int64_t chunksFor(int64_t elements) { return elements < parallelMinimum ? 1 : chunksPerFrame; }

// Helpers of their own, so that chunks never queue behind other work. One per
// core: the calling thread only waits, as QtConcurrent's blocking calls run
// their work on the pool.
struct HelperPool : QThreadPool {
    HelperPool() { setMaxThreadCount(QThread::idealThreadCount()); }
};

QThreadPool* helpers()
{
    static HelperPool pool;
    return &pool;
}

// Runs work(chunk) for chunks 0..count-1 on the calling thread and the
// helpers. Chunks are claimed as threads come free, so a helper that the
// system starts late (the cores are shared) holds nothing up.
template <class Work> void runInChunks(int64_t count, Work&& work)
{
    if (count == 1) {
        work(0);
        return;
    }
    std::vector<int64_t> chunks(static_cast<size_t>(count));
    std::iota(chunks.begin(), chunks.end(), 0);
    QtConcurrent::blockingMap(helpers(), chunks, [&work](int64_t chunk) { work(chunk); });
}

// ---------------------------------------------------------------- range

template <class T> struct Range {
    using N = Number<T>;
    static constexpr bool hasInfinity = std::numeric_limits<N>::has_infinity;
    // Empty: lo above and hi below every number.
    N lo = hasInfinity ? std::numeric_limits<N>::infinity() : std::numeric_limits<N>::max();
    N hi = hasInfinity ? -std::numeric_limits<N>::infinity() : std::numeric_limits<N>::lowest();

    // NaN compares false and so never gets in.
    void merge(N otherLo, N otherHi)
    {
        if (otherLo < lo) lo = otherLo;
        if (otherHi > hi) hi = otherHi;
    }
};

template <class T>
TORVEX_HOT_LOOP void widenByRun(Range<T>& range, const std::byte* first, int64_t count, int64_t stride,
                                ByteOrder order)
{
    using V = Vector<Number<T>>;
    V lo = splat<V>(range.lo), hi = splat<V>(range.hi);
    for (int64_t i = 0; i < count; i += lanes) {
        const V v = loadLanes<T>(first + i * stride, stride, static_cast<int>(std::min<int64_t>(lanes, count - i)),
                                 order);
        lo = v < lo ? v : lo;
        hi = v > hi ? v : hi;
    }
    for (int k = 0; k < lanes; ++k) range.merge(lo[k], hi[k]);
}

template <class T> Range<T> rangeOf(const Frame& frame, int64_t elements)
{
    const MemoryWalk walk = memoryWalk(frame, sizeof(T));
    const int64_t chunks = chunksFor(elements);
    std::vector<Range<T>> partial(chunks);
    runInChunks(chunks, [&](int64_t chunk) {
        forEachRun(pieceOf(walk, chunk, chunks), [&](const std::byte* first, int64_t count, int64_t stride) {
            widenByRun(partial[chunk], first, count, stride, frame.order);
        });
    });
    Range<T> range;
    for (const Range<T>& r : partial) range.merge(r.lo, r.hi);
    return range;
}

// ---------------------------------------------------------------- levels

// Levels 0..255 as bytes. Narrowing in two halvings compiles to packs; one
// step straight to bytes compiles to scalar code.
[[gnu::always_inline]] inline Bytes narrowed(Vector<int32_t> levels)
{
    return __builtin_convertvector(__builtin_convertvector(levels, Vector<uint16_t>), Bytes);
}

// floor((v - lo) * 255 / span) clipped to 0..255, NaN to 0, in double.
struct DoubleLevels {
    double lo, span;

    template <class V> Bytes operator()(V values) const
    {
        using D = Vector<double>;
        D t = (__builtin_convertvector(values, D) - lo) * 255.0 / span;
        t = t >= 0 ? t : splat<D>(0.0); // NaN fails the test too
        t = t <= 255 ? t : splat<D>(255.0);
        // Truncation is floor for t >= 0.
        return narrowed(__builtin_convertvector(t, Vector<int32_t>));
    }
};

// The same levels for integers of at most 16 bits, in single precision: the
// numerator (v - lo) * 255 stays below 2^24, so a float reciprocal of the span
// gets the quotient within one, and the integer remainder makes it exact.
// lo and lo + span lie within the element type's values. Levels other than
// the frame's own range clamp the elements to them first; the frame's own
// skip that, so that automatic levels cost what they did.
template <bool Clamp> struct SmallIntegerLevels {
    int32_t lo, span;
    float inverse;

    template <class V> Bytes operator()(V values) const
    {
        using I = Vector<int32_t>;
        if constexpr (Clamp) {
            // While the lanes are narrow: one register's worth.
            using E = std::remove_cvref_t<decltype(values[0])>;
            const auto low = static_cast<E>(lo), high = static_cast<E>(lo + span);
            values = values < low ? splat<V>(low) : values;
            values = values > high ? splat<V>(high) : values;
        }
        const I numerator = (__builtin_convertvector(values, I) - lo) * 255;
        I quotient = __builtin_convertvector(__builtin_convertvector(numerator, Vector<float>) * inverse, I);
        const I remainder = numerator - quotient * span;
        // Sign shifts rather than comparisons, which compile to scalar code
        // for vectors wider than the machine's.
        quotient += remainder >> 31;             // -1 when the remainder is negative
        quotient -= (span - 1 - remainder) >> 31; // +1 when it is span or more
        return narrowed(quotient);
    }
};

// Levels travel by value: a copy cannot change under the stores of bytes, which
// may alias anything, so its fields stay in registers.
template <class T, class Levels>
[[gnu::always_inline]] inline void levelRun(const std::byte* first, int64_t count, int64_t stride, uint8_t* out,
                                            int64_t outStride, ByteOrder order, Levels levels)
{
    for (int64_t i = 0; i < count; i += lanes) {
        const int n = static_cast<int>(std::min<int64_t>(lanes, count - i));
        storeLanes(levels(loadLanes<T>(first + i * stride, stride, n, order)), out + i * outStride, outStride, n);
    }
}

// Rows y0..y1 of the image, each read along the row.
template <class T, class Levels>
TORVEX_HOT_LOOP void levelRows(const Frame& frame, int64_t y0, int64_t y1, uint8_t* bits, int64_t bytesPerLine,
                               Levels levels)
{
    const int64_t channels = frame.channels.extent;
    // The values of a row are one run when its channels follow one another;
    // otherwise each channel is a run of its own.
    const bool oneRun = channels == 1 || frame.columns.stride == channels * frame.channels.stride;
    for (int64_t y = y0; y < y1; ++y) {
        const std::byte* row = frame.origin + y * frame.rows.stride;
        uint8_t* out = bits + y * bytesPerLine;
        if (oneRun) {
            const int64_t stride = channels == 1 ? frame.columns.stride : frame.channels.stride;
            levelRun<T>(row, frame.columns.extent * channels, stride, out, 1, frame.order, levels);
            continue;
        }
        for (int64_t c = 0; c < channels; ++c)
            levelRun<T>(row + c * frame.channels.stride, frame.columns.extent, frame.columns.stride, out + c,
                        channels, frame.order, levels);
    }
}

// Tiles are visited in blocks of 256 rows by 64 columns, so that the pages a
// block reads and writes all stay in the TLB, and down strips of 16 columns
// within a block. Each column is fetched ahead by this many rows: the hardware
// does not follow sixteen interleaved streams on its own.
constexpr int64_t blockRows = 256, blockColumns = 64, fetchAheadRows = 32;

// The tile of up to 16 x 16 pixels at (y, x) of a one-channel image: read
// down its columns, turned in registers, stored along its rows.
template <class T, class Levels>
[[gnu::always_inline]] inline void levelTile(const Frame& frame, int64_t y, int64_t x, int height, int width,
                                             uint8_t* bits, int64_t bytesPerLine, Levels levels)
{
    std::array<Bytes, lanes> tile;
    for (int i = 0; i < lanes; ++i) {
        if (i >= width) {
            tile[i] = Bytes{};
            continue;
        }
        const std::byte* top = frame.origin + y * frame.rows.stride + (x + i) * frame.columns.stride;
        __builtin_prefetch(top + fetchAheadRows * frame.rows.stride);
        tile[i] = levels(loadLanes<T>(top, frame.rows.stride, height, frame.order));
    }
    transpose(tile);
    for (int j = 0; j < height; ++j) storeLanes(tile[j], bits + (y + j) * bytesPerLine + x, 1, width);
}

// Rows y0..y1 of a one-channel image whose columns lie closer in memory than
// its rows, in tiles.
template <class T, class Levels>
TORVEX_HOT_LOOP void levelColumnTiles(const Frame& frame, int64_t y0, int64_t y1, uint8_t* bits,
                                      int64_t bytesPerLine, Levels levels)
{
    const int64_t width = frame.columns.extent;
    for (int64_t blockY = y0; blockY < y1; blockY += blockRows) {
        const int64_t blockEndY = std::min(blockY + blockRows, y1);
        for (int64_t blockX = 0; blockX < width; blockX += blockColumns) {
            const int64_t blockEndX = std::min(blockX + blockColumns, width);
            for (int64_t x = blockX; x < blockEndX; x += lanes)
                for (int64_t y = blockY; y < blockEndY; y += lanes)
                    levelTile<T>(frame, y, x, static_cast<int>(std::min<int64_t>(lanes, blockEndY - y)),
                                 static_cast<int>(std::min<int64_t>(lanes, blockEndX - x)), bits, bytesPerLine,
                                 levels);
        }
    }
}

template <class T, class Levels>
void levelFrame(const Frame& frame, int64_t elements, QImage& image, const Levels& levels)
{
    const bool columnMajor =
        frame.channels.extent == 1 && std::abs(frame.rows.stride) < std::abs(frame.columns.stride);
    uint8_t* bits = image.bits();
    const int64_t bytesPerLine = image.bytesPerLine();
    const int64_t chunks = chunksFor(elements);
    runInChunks(chunks, [&](int64_t chunk) {
        const auto [y0, y1] = pieceOf(frame.rows.extent, columnMajor ? blockRows : 1, chunk, chunks);
        if (columnMajor) levelColumnTiles<T>(frame, y0, y1, bits, bytesPerLine, levels);
        else levelRows<T>(frame, y0, y1, bits, bytesPerLine, levels);
    });
}

QImage::Format formatFor(int64_t channels)
{
    switch (channels) {
    case 3: return QImage::Format_RGB888;
    case 4: return QImage::Format_RGBA8888;
    default: return QImage::Format_Grayscale8;
    }
}

// Whether the small-integer levels hold for lo..hi: whole numbers within T's values.
template <class T> bool fitsSmallIntegerLevels(ValueRange levels)
{
    if constexpr (std::is_integral_v<T> && sizeof(T) <= 2)
        return levels.lo == std::floor(levels.lo) && levels.hi == std::floor(levels.hi) &&
               levels.lo >= std::numeric_limits<T>::lowest() && levels.hi <= std::numeric_limits<T>::max();
    return false;
}

} // namespace

DisplayFrame displayFrame(const NdArray& array, std::optional<ValueRange> levels)
{
    const Frame frame = frameOf(array);
    const int64_t elements = array.size();
    constexpr int64_t largest = std::numeric_limits<int>::max();
    DisplayFrame shown;
    QImage& image = shown.image;
    if (frame.columns.extent <= largest && frame.rows.extent <= largest)
        image = QImage(static_cast<int>(frame.columns.extent), static_cast<int>(frame.rows.extent),
                       formatFor(frame.channels.extent));
    if (elements == 0) return shown;
    if (image.isNull())
        throw std::runtime_error("cannot make an image of shape " + shapeText(array.shape()) + " for display");
    visitDType(array.dtype(), [&](auto tag) {
        using T = decltype(tag);
        const Range<T> range = rangeOf<T>(frame, elements);
        if (range.lo <= range.hi)
            shown.values = ValueRange{static_cast<double>(range.lo), static_cast<double>(range.hi)};
        const ValueRange by = levels.value_or(shown.values.value_or(ValueRange{0, 0}));
        if (!(by.lo < by.hi)) {
            image.fill(0);
            return;
        }
        if (fitsSmallIntegerLevels<T>(by)) {
            const auto lo = static_cast<int32_t>(by.lo), span = static_cast<int32_t>(by.hi) - lo;
            const float inverse = 1.0f / static_cast<float>(span);
            if (levels) levelFrame<T>(frame, elements, image, SmallIntegerLevels<true>{lo, span, inverse});
            else levelFrame<T>(frame, elements, image, SmallIntegerLevels<false>{lo, span, inverse});
        } else {
            levelFrame<T>(frame, elements, image, DoubleLevels{by.lo, by.hi - by.lo});
        }
    });
    return shown;
}

QImage displayImage(const NdArray& array) { return displayFrame(array).image; }

} // namespace torvex
