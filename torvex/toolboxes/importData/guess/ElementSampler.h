#pragma once

#include "toolboxes/importData/volume/DType.h"

#include <QByteArrayView>

#include <cstdint>
#include <vector>

namespace torvex {

// One way to read a headerless file: element type, byte order, and the
// byte at which the first whole element starts.
struct ElementReading {
    DType dtype = DType::UInt8;
    ByteOrder order = ByteOrder::Little;
    int64_t phase = 0;

    int size() const { return itemSize(dtype); }

    // Data runs to the end of a file, and a header of any length goes before
    // it: the first element starts at the file size modulo the element size.
    // (Reading one byte off, a 16-bit image is still smooth: each value is a
    // neighbour's high byte with noise below it.)
    static ElementReading endingWithFile(DType dtype, ByteOrder order, int64_t fileBytes)
    {
        return {dtype, order, fileBytes % itemSize(dtype)};
    }
};

// The file's bytes seen as elements of one reading. It decodes only the
// elements asked for, so that a guess touches samples of a mapped file, not all of it.
class ElementSampler {
public:
    ElementSampler(QByteArrayView bytes, ElementReading reading);

    const ElementReading& reading() const { return _reading; }
    // Whole elements from the phase to the end of the file.
    int64_t count() const { return _count; }
    // Decodes elements [first, first + n) as doubles.
    void decode(int64_t first, int64_t n, double* out) const;

private:
    QByteArrayView _bytes;
    ElementReading _reading;
    int64_t _count;
};

// The middle of some values (the upper one of an even count); they must not be empty.
double median(std::vector<double> values);

// Where to start `n` samples of a file whose last possible start is
// `lastStart`: in eight groups, one in each eighth of the file, at a place
// within it that does not repeat with a frame count (and not at the file's
// very start, where a header would be). Members of a group are evenly spread
// for a small file and at most `maxStep` elements apart for a large one:
// few places, because a mapped file is read in pages and more around each,
// and scattered samples would read all of it.
std::vector<int64_t> sampleStarts(int64_t lastStart, int n, int64_t maxStep);

} // namespace torvex
