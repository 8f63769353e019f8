#include "LayoutGuess.h"

#include "ElementChoice.h"
#include "FrameHeight.h"
#include "GuessTuning.h"
#include "NameHints.h"
#include "RepeatLength.h"
#include "Steps.h"

#include "toolboxes/importData/volume/ImageTypes.h"

#include <QStringList>

#include <iterator>
#include <limits>

namespace torvex {

namespace {

// Frames fill a file but for a short header, which bounds the frame heights to try.
constexpr int64_t kMaxHeaderBytes = 4096;
// Values compared per row when looking for a header's rows.
constexpr int64_t kRowRun = 1024;


QString grayTypeName(DType dtype)
{
    for (const ImageType& type : imageTypes())
        if (type.layout == PixelLayout::Gray && type.dtype == dtype) return type.name;
    return {};
}

// Named sizes may be anything: a product past int64 counts as too many.
int64_t product(int64_t a, int64_t b)
{
    int64_t p;
    return __builtin_mul_overflow(a, b, &p) ? std::numeric_limits<int64_t>::max() : p;
}

// Element sizes with which the named sizes fit the file, leaving fewer bytes
// than a frame before the first frame. Numbers in a name may be a date or a
// run number: sizes that fit with none are no hint.
std::vector<DType> fittingTypes(const NameHints& hints, int64_t fileBytes)
{
    const std::vector<DType> candidates =
        hints.imgType ? std::vector{findImageType(*hints.imgType)->dtype} : kGuessedTypes;
    if (!hints.width && !hints.height && !hints.frames) return candidates;
    std::vector<DType> types;
    for (DType dtype : candidates) {
        const int64_t frame = product(product(hints.width.value_or(1), hints.height.value_or(1)), itemSize(dtype));
        const int64_t rest = fileBytes - product(frame, hints.frames.value_or(1));
        if (rest >= 0 && (!hints.frames || rest < frame)) types.push_back(dtype);
    }
    return types;
}

LayoutGuess nothing(const QString& reason) { return {std::nullopt, reason}; }

// Rows at the start of a single frame that belong to a header: up to the
// last of them, within `maxHeader` values, that stands out from the row after
// it (random bytes, or zeros before the data). Rows start at `first`.
int64_t headerRows(const ElementSampler& sampler, int64_t width, int64_t first, int64_t maxHeader)
{
    const Steps steps(sampler, width, std::min(kRowRun, width));
    int64_t rows = 0;
    for (int64_t row = 1; first + row * width <= maxHeader; ++row)
        if (steps.standsOut(first + row * width)) rows = row;
    return rows;
}

} // namespace

QString GuessedLayout::summary() const
{
    QStringList from;
    if (fromName) from << "the file name";
    if (fromSize) from << "the file size";
    if (fromData) from << "the data";
    QString evidence = from.join(", ");
    if (from.size() > 1) evidence.replace(evidence.lastIndexOf(", "), 2, " and ");
    const QString header = offset ? QString(" after %1 header bytes").arg(offset) : QString();
    return QString("Guessed %1, %2 x %3 x %4%5, %6 endian, from %7")
        .arg(imgType)
        .arg(width)
        .arg(height)
        .arg(frames)
        .arg(header, littleEndian ? "little" : "big", evidence);
}

LayoutGuess guessLayout(const QString& fileName, QByteArrayView bytes)
{
    const int64_t fileBytes = bytes.size();
    if (fileBytes == 0) return nothing("the file is empty");
    NameHints hints = readNameHints(fileName);
    // The element: named, or of the size that the named dimensions leave, or any.
    std::vector<DType> dtypes = fittingTypes(hints, fileBytes);
    if (dtypes.empty()) {
        hints.width = hints.height = hints.frames = std::nullopt;
        dtypes = fittingTypes(hints, fileBytes);
    }
    GuessedLayout g;
    g.fromName = hints.any();
    g.fromSize = !hints.imgType && hints.width && hints.height && hints.frames;
    const std::vector<ByteOrder> orders = hints.littleEndian
                                              ? std::vector{*hints.littleEndian ? ByteOrder::Little : ByteOrder::Big}
                                              : std::vector{ByteOrder::Little, ByteOrder::Big};
    ElementReading reading = ElementReading::endingWithFile(dtypes.front(), orders.front(), fileBytes);
    if (dtypes.size() > 1 || (orders.size() > 1 && reading.size() > 1)) {
        const ElementChoice choice = chooseElementReading(bytes, dtypes, orders);
        if (choice.reading) {
            reading = *choice.reading;
            g.fromData = true;
        } else if (!hints.imgType) {
            return nothing(choice.reason);
        }
    }
    g.imgType = grayTypeName(reading.dtype);
    g.littleEndian = reading.order == ByteOrder::Little;
    const ElementSampler sampler(bytes, reading);

    // Row length, rows per frame, then frames: what the name gives, else the data, else what is left.
    const int64_t count = sampler.count();
    std::vector<int64_t> widths;
    if (hints.width) {
        widths = {*hints.width};
    } else {
        widths = rowLengths(sampler, std::min(kGuessTuning.maxWidth, count / 3));
        if (widths.empty()) return nothing(QString("no row length up to %1 values repeats in its data").arg(kGuessTuning.maxWidth));
        g.fromData = true;
    }
    // Row lengths that fill the file exactly, when there are any: most files
    // have no header, and a frame search over fewer lengths reads less of the file.
    std::vector<int64_t> filling;
    std::ranges::copy_if(widths, std::back_inserter(filling), [&](int64_t w) { return count % w == 0; });
    if (!filling.empty()) widths = filling;
    g.width = widths.front(); // the likeliest
    if (hints.height) {
        g.height = *hints.height;
    } else if (hints.frames) {
        g.height = count / g.width / *hints.frames;
        g.fromSize = true;
    } else if (const std::optional<FrameShape> shape =
                   findFrames(sampler, widths, kGuessTuning.maxHeight, kMaxHeaderBytes / reading.size())) {
        g.width = shape->width;
        g.height = shape->height;
        g.fromData = true;
    } else {
        g.height = count / g.width - headerRows(sampler, g.width, count % g.width, kMaxHeaderBytes / reading.size());
        g.fromSize = true;
    }
    const int64_t frameBytes = product(product(g.width, g.height), reading.size());
    if (frameBytes == 0 || frameBytes > fileBytes) return nothing("one frame needs more bytes than the file has");
    if (hints.frames) {
        g.frames = *hints.frames;
        if (product(g.frames, frameBytes) > fileBytes)
            return nothing("the named dimensions need more bytes than the file has");
    } else {
        g.frames = (fileBytes - reading.phase) / frameBytes;
        g.fromSize = true;
    }
    g.offset = fileBytes - g.frames * frameBytes;
    if (g.offset > std::numeric_limits<int>::max()) return nothing("the bytes before the first frame are too many");
    g.fromSize = g.fromSize || g.offset > 0;
    return {g, {}};
}

} // namespace torvex
