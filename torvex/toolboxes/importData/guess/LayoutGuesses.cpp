#include "LayoutGuesses.h"

#include "GuessTuning.h"
#include "Likeness.h"
#include "PixelReading.h"
#include "HeaderEnds.h"

#include "toolboxes/importData/volume/ImageTypes.h"
#include "toolboxes/importData/volume/LayoutGuess.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace torvex {

namespace {

QString typeName(const PixelReading& pixel)
{
    if (pixel.channels == 3) return pixel.redFirst ? "24-bit RGB" : "24-bit BGR";
    for (const ImageType& type : imageTypes())
        if (type.layout == PixelLayout::Gray && type.dtype == pixel.element.dtype) return type.name;
    return {};
}

std::vector<int64_t> divisors(int64_t n, int64_t least, int64_t most)
{
    std::vector<int64_t> found;
    for (int64_t d = 1; d * d <= n; ++d)
        if (n % d == 0)
            for (const int64_t f : {d, n / d})
                if (f >= least && f <= most) found.push_back(f);
    std::ranges::sort(found);
    found.erase(std::ranges::unique(found).begin(), found.end());
    return found;
}

// Tips a tie to the likelier of two layouts, too small to outweigh evidence.
constexpr double kTieBreak = 0.01;

// Pictures are seldom much longer than wide or the other way.
double aspectCost(int64_t width, int64_t height)
{
    const double ratio = std::fabs(std::log2(static_cast<double>(width) / static_cast<double>(height)));
    return kGuessTuning.aspectCost * std::max(0.0, ratio - std::log2(kGuessTuning.aspectRatio));
}



// The layouts that fill the file exactly after `offset` bytes: the row
// lengths whose rows are most alike, each as one frame or as frames that are
// alike one to the next.
std::vector<LayoutOption> layoutsAfter(QByteArrayView bytes, PixelReading pixel, int64_t offset, double headerCost)
{
    pixel.element.phase = offset;
    const ElementSampler sampler(bytes, pixel.element);
    const int64_t c = pixel.channels, pixels = sampler.count() / c;
    if (pixels * pixel.bytes() != bytes.size() - offset || pixels == 0) return {};
    const GuessTuning& t = kGuessTuning;
    const std::vector<int64_t> widths = divisors(pixels, t.minWidth, std::min(t.maxWidth, pixels / t.minHeight));
    if (widths.empty()) return {};
    const Likeness rows(sampler, (widths.back() + t.aside) * c, t.places);
    std::vector<std::pair<double, int64_t>> rowDips;
    for (const int64_t w : widths) rowDips.emplace_back(rows.dip(w * c, t.aside * c), w);
    std::ranges::sort(rowDips);
    rowDips.resize(std::min<size_t>(rowDips.size(), 3));
    std::erase_if(rowDips, [&](const auto& dip) { return dip.first > t.rowsAlike; });

    LayoutOption base{typeName(pixel), offset};
    base.littleEndian = pixel.channels == 1 && pixel.element.order == ByteOrder::Little;
    base.colorOrder = pixel.channels == 3 ? "ABCABC" : "";
    base.evidence = "the file size and the data";
    std::vector<LayoutOption> scored;
    for (const auto& [rowDip, width] : rowDips) {
        const double rowCost = std::log(std::max(rowDip, 1e-3)) + headerCost;
        const int64_t allRows = pixels / width;
        LayoutOption one = base;
        one.width = width, one.height = allRows, one.frames = 1;
        one.cost = rowCost + aspectCost(width, allRows);
        scored.push_back(one);
        const Likeness frames(sampler, pixels * c / 2 + t.aside * width * c, t.framePlaces);
        // Frames show as alike from one to the next, or as seams where rows are not.
        std::vector<std::pair<int64_t, double>> frameCosts;
        for (const int64_t height : divisors(allRows, t.minHeight, allRows / 2)) {
            const double seam = frames.seam(width * height * c, width * c, t.framePlaces);
            const double frameDip = std::min(frames.dip(width * height * c, t.aside * width * c),
                                             seam > t.seamRatio ? 1 / seam : 1.0);
            if (frameDip < t.framesAlike) frameCosts.emplace_back(height, std::log(std::max(frameDip, 1e-3)));
        }
        if (frameCosts.empty()) continue;
        // Two frames taken as one show the same seams: the frame is the
        // smallest height whose evidence comes near the best.
        const double best = std::ranges::min(frameCosts, {}, &std::pair<int64_t, double>::second).second;
        for (auto& [height, cost] : frameCosts) {
            if (cost < best + t.sameFrames) cost = best - kTieBreak * std::log2(static_cast<double>(allRows / height));
            LayoutOption stack = one;
            stack.height = height, stack.frames = allRows / height;
            stack.cost = rowCost + cost + aspectCost(width, height);
            scored.push_back(stack);
        }
    }
    return scored;
}

LayoutOption named(const GuessedLayout& g)
{
    LayoutOption o{g.imgType, g.offset, g.width, g.height, g.frames, g.littleEndian};
    const QString summary = g.summary();
    o.evidence = summary.mid(summary.lastIndexOf(", from ") + 7);
    return o;
}

} // namespace

QString LayoutOption::label() const
{
    QString text = QString("%1, %2 x %3 x %4").arg(imgType).arg(width).arg(height).arg(frames);
    if (offset) text += QString(", %1 header bytes").arg(offset);
    const bool multiByte = colorOrder.isEmpty() && !imgType.startsWith("8-bit");
    if (multiByte && littleEndian != (QSysInfo::ByteOrder == QSysInfo::LittleEndian)) text += littleEndian ? ", little endian" : ", big endian";
    return text;
}

QString LayoutOption::summary() const
{
    GuessedLayout g{imgType, offset, width, height, frames, littleEndian};
    return g.summary().section(", from ", 0, 0) + ", from " + evidence;
}

QString LayoutGuesses::status() const
{
    if (best.empty()) return "Cannot guess: " + reason;
    QString text = best.front().summary();
    if (best.size() > 1 && best[1].cost - best.front().cost < kGuessTuning.closeCost)
        text += "; also likely: " + best[1].label();
    return text;
}

LayoutGuesses guessLayouts(const QString& fileName, QByteArrayView bytes)
{
    // Names first; the earlier guess also finds headers of bytes that are no text.
    const LayoutGuess earlier = guessLayout(fileName, bytes);
    if (earlier.layout && earlier.layout->fromName) return {{named(*earlier.layout)}, {}};
    const PixelChoice choice = choosePixelReading(bytes);
    if (!choice.reading) return {{}, earlier.reason.isEmpty() ? choice.reason : earlier.reason};

    std::vector<std::pair<int64_t, double>> offsets{{0, 0.0}};
    for (const int64_t end : headerEnds(bytes)) offsets.emplace_back(end, 0.0);
    if (earlier.layout && earlier.layout->offset > 0)
        offsets.emplace_back(earlier.layout->offset, kGuessTuning.headerCost);
    std::vector<LayoutOption> scored;
    for (const auto& [offset, cost] : offsets) std::ranges::move(layoutsAfter(bytes, *choice.reading, offset, cost), std::back_inserter(scored));
    std::ranges::sort(scored, {}, [](const LayoutOption& s) { return s.cost; });
    if (scored.empty()) return {{}, "no row length makes neighbouring rows alike"};
    LayoutGuesses guesses;
    for (const LayoutOption& o : scored) {
        const bool seen = std::ranges::any_of(guesses.best, [&](const LayoutOption& b) {
            return b.width == o.width && b.height == o.height && b.frames == o.frames && b.offset == o.offset;
        });
        if (!seen && guesses.best.size() < 3) guesses.best.push_back(o);
    }
    return guesses;
}

} // namespace torvex
