#include "LayoutGuesses.h"

#include "GuessTuning.h"
#include "HeaderEnds.h"
#include "LayoutGuess.h"
#include "Likeness.h"
#include "NameHints.h"
#include "PixelReading.h"

#include "toolboxes/importData/volume/ImageTypes.h"

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
    found.erase(std::unique(found.begin(), found.end()), found.end()); // clang 14 lacks ranges::unique on libstdc++ 12
    return found;
}

// Sizes (of rows or frames) with the log of the evidence for them: the lower, the likelier.
using Evidence = std::vector<std::pair<int64_t, double>>;

double logOf(double likeness) { return std::log(std::max(likeness, 1e-3)); }

// Two rows (or frames) taken as one are as alike as one is with the next:
// the smallest size with evidence near the best's that divides the best
// (a size that does not, explains nothing of it) takes the best's, and the
// larger ones, which it explains, fall behind it by more than a close second.
void preferSmallest(Evidence& sizes, double near)
{
    if (sizes.empty()) return;
    const auto [bestSize, best] = std::ranges::min(sizes, {}, &std::pair<int64_t, double>::second);
    auto smallest = sizes.end();
    for (auto it = sizes.begin(); it != sizes.end(); ++it)
        if (it->second < best * near && bestSize % it->first == 0 &&
            (smallest == sizes.end() || it->first < smallest->first))
            smallest = it;
    for (auto& [size, cost] : sizes)
        if (cost < best * near) cost = std::max(cost, best + kGuessTuning.closeCost);
    smallest->second = best;
}

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
    Evidence rowCosts;
    for (const int64_t w : widths)
        if (const double dip = rows.dip(w * c, t.aside * c); dip < t.rowsAlike) rowCosts.emplace_back(w, logOf(dip));
    preferSmallest(rowCosts, t.sameRows);
    std::ranges::sort(rowCosts, {}, &std::pair<int64_t, double>::second);
    rowCosts.resize(std::min<size_t>(rowCosts.size(), 3));
    const int64_t shortest = rowCosts.empty() ? 0 : std::ranges::min(rowCosts, {}, &std::pair<int64_t, double>::first).first;

    LayoutOption base{typeName(pixel), offset};
    base.littleEndian = pixel.channels == 1 && pixel.element.order == ByteOrder::Little;
    base.colorOrder = pixel.channels == 3 ? "ABCABC" : "";
    base.evidence = "the file size and the data";
    std::vector<LayoutOption> scored;
    for (const auto& [width, rowEvidence] : rowCosts) {
        const double rowCost = rowEvidence + headerCost;
        const int64_t allRows = pixels / width;
        LayoutOption one = base;
        one.width = width, one.height = allRows, one.frames = 1;
        one.cost = rowCost + aspectCost(width, allRows);
        scored.push_back(one);
        // Frames of the likeliest row length, and of the shortest likely one
        // (a whole frame taken for a row is most alike): each height tried reads a few dozen pages.
        if (width != rowCosts.front().first && width != shortest) continue;
        const Likeness frames(sampler, pixels * c / 2 + t.aside * width * c, t.framePlaces);
        // Frames show as alike from one to the next, or as seams where rows are not.
        Evidence frameCosts;
        // Frames far longer than wide or the other way are not worth the reads.
        const auto longest = static_cast<int64_t>(t.framesAspect);
        for (const int64_t height :
             divisors(allRows, std::max(t.minHeight, width / longest), std::min({allRows / 2, width * longest, t.maxHeight}))) {
            // Seams first: four rows at a place, where the likeness reads three places.
            const double seam = frames.seam(width * height * c, width * c, t.framePlaces);
            const double frameDip = seam > t.seamRatio ? 1 / seam : frames.dip(width * height * c, t.aside * width * c);
            if (frameDip < t.framesAlike) frameCosts.emplace_back(height, logOf(frameDip));
        }
        preferSmallest(frameCosts, t.sameFrames);
        for (const auto& [height, cost] : frameCosts) {
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
    if (bytes.isEmpty()) return {{}, "the file is empty"};
    // The earlier guess reads names, and looks for seams of rows and frames:
    // it is asked when the data alone does not tell clearly, as it reads more of the file.
    std::optional<LayoutGuess> earlier;
    if (readNameHints(fileName).any()) {
        earlier = guessLayout(fileName, bytes);
        if (earlier->layout && earlier->layout->fromName) return {{named(*earlier->layout)}, {}};
    }
    const PixelChoice choice = choosePixelReading(bytes);
    if (!choice.reading) return {{}, choice.reason};

    std::vector<LayoutOption> scored;
    const auto addLayoutsAfter = [&](int64_t offset, double cost) {
        std::ranges::move(layoutsAfter(bytes, *choice.reading, offset, cost), std::back_inserter(scored));
        std::ranges::sort(scored, {}, [](const LayoutOption& s) { return s.cost; });
    };
    addLayoutsAfter(0, 0);
    for (const int64_t end : headerEnds(bytes)) addLayoutsAfter(end, 0);
    std::optional<LayoutOption> seams;
    if (scored.empty() || scored.front().cost > kGuessTuning.clearEvidence) {
        if (!earlier) earlier = guessLayout(fileName, bytes);
        if (earlier->layout) {
            // It finds headers of bytes that are neither text nor zeros.
            if (earlier->layout->offset > 0) addLayoutsAfter(earlier->layout->offset, kGuessTuning.headerCost);
            seams = named(*earlier->layout);
            seams->cost = INFINITY;
        }
    }
    // Noise can hide rows from the measure above; the seams still show through it.
    if (seams && (scored.empty() || scored.front().cost > kGuessTuning.weakEvidence)) {
        scored.insert(scored.begin(), *seams);
        scored.front().cost = scored.size() > 1 ? scored[1].cost : 0;
    }
    if (scored.empty()) return {{}, "no row length makes neighbouring rows alike"};
    LayoutGuesses guesses;
    const auto offered = [&](const LayoutOption& o) {
        return std::ranges::any_of(guesses.best, [&](const LayoutOption& b) {
            return b.width == o.width && b.height == o.height && b.frames == o.frames && b.offset == o.offset;
        });
    };
    for (const LayoutOption& o : scored)
        if (!offered(o) && guesses.best.size() < 3) guesses.best.push_back(o);
    // Where asked, the seams' layout is among those offered: a second opinion.
    if (seams && !offered(*seams)) {
        guesses.best.resize(std::min<size_t>(guesses.best.size(), 2));
        guesses.best.push_back(*seams);
    }
    return guesses;
}

} // namespace torvex
