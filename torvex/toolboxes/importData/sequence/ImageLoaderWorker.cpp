#include "toolboxes/importData/sequence/ImageLoaderWorker.h"
#include "toolboxes/importData/sequence/ThreadHandOff.h"

#include "FrameShape.h"
#include "FrameStack.h"
#include "KeptDepth.h"
#include "Normalise8Bit.h"
#include "OrderedParallelDecoder.h"
#include "PlaceholderFrame.h"
#include "PythonPath.h"
#include "StillImageDecoder.h"
#include "TiffPages.h"

#include <QCoreApplication>

#include <algorithm>
#include <variant>
#include <vector>

namespace torvex {

namespace {

// One entry per path: its uint8 image, or the path itself when it did not decode.
using RawEntry = std::variant<NdArray, QString>;

// Only an image of another channel count than 1, 3 or 4 misses its frame's shape.
std::string channelMismatch(const QString& path, const NdArray& frame)
{
    const int64_t channels = frame.ndim() == 3 ? frame.extent(2) : 1;
    return QString("%1 has %2 channels%3, but the frames of this sequence have 3")
        .arg(pythonBasename(path))
        .arg(channels)
        .arg(channels == 2 ? " (gray and alpha)" : "")
        .toStdString();
}

} // namespace

_ImageLoaderWorker::_ImageLoaderWorker(int load_id, const QStringList& filtered_list, SequenceReading reading,
                                       const QList<FramePage>& pages)
    : QObject(nullptr), _load_id(load_id), _filtered_list(filtered_list), _reading(reading), _pages(pages)
{
    qRegisterMetaType<NdArray>();
}

void _ImageLoaderWorker::cancel() { _cancelled = true; }

void _ImageLoaderWorker::run()
{
    // However the run ends, hand the worker back to the GUI thread, so that its
    // deletion when the thread ends happens there and never races with the
    // window's cancel().
    struct ReturnToGuiThread {
        QObject* worker;
        ~ReturnToGuiThread()
        {
            if (QCoreApplication* app = QCoreApplication::instance()) worker->moveToThread(app->thread());
        }
    } returnToGuiThread{this};
    try {
        // First pass: decode every file, in list order. Decoding writes into
        // the stack's own slots where it can, so equal images need no copy.
        const int total = static_cast<int>(_filtered_list.size());
        const bool keepDepth = _reading.keepDepth;
        FrameStack stack(total, keepDepth);
        // Any failure sends the file to the placeholder path; its reason is
        // kept for `placeholders`. Each index is written by the one thread
        // that decodes it, and read only once the decoder has handed it over.
        std::vector<QString> failures(total);
        TiffPages openPages;
        const auto decode = [this, &stack, &failures, &openPages, keepDepth](int index,
                                                                 const QString& path) noexcept -> std::optional<NdArray> {
            try {
                const auto intoSlot = [&](const Shape& shape, DType dtype) {
                    return stack.decodeTarget(index, shape, dtype);
                };
                const DecodedImage image = decodeStillImagePage(path, _pages.value(index).page, intoSlot, &openPages);
                return keepDepth ? keepStoredValues(image) : normaliseToUInt8(image);
            } catch (const std::exception& e) {
                failures[index] = QString::fromUtf8(e.what());
            } catch (...) {
                failures[index] = QStringLiteral("unknown failure");
            }
            return std::nullopt;
        };
        QMap<int, QString> placeholderReasons;
        std::vector<RawEntry> raw;
        raw.reserve(total);
        std::vector<int> channel_counts;
        int64_t maxH = 0, maxW = 0;
        std::optional<DType> stackType; // of the decoded images; placeholders follow it
        {
            OrderedParallelDecoder decoder(_filtered_list, decode, _cancelled);
            for (int idx = 0; idx < total; ++idx) {
                if (_cancelled) return;
                if (std::optional<NdArray> image = decoder.take(idx)) {
                    maxH = std::max(maxH, image->extent(0));
                    maxW = std::max(maxW, image->extent(1));
                    channel_counts.push_back(channelCountOf(*image));
                    stackType = stackType ? widenedType(*stackType, image->dtype()) : image->dtype();
                    markSending();
                    emit frameDecoded(_load_id, idx, *image);
                    raw.emplace_back(std::move(*image));
                } else {
                    raw.emplace_back(_filtered_list[idx]);
                    placeholderReasons.insert(idx, failures[idx]);
                }
                emit progress(idx + 1, total);
            }
        }

        // Between the passes.
        if (_cancelled) return;
        const bool allGray = !channel_counts.empty()
                             && std::all_of(channel_counts.begin(), channel_counts.end(), [](int c) { return c == 1; });
        const int target_channels = allGray ? 1 : 3;
        // Only when nothing decoded: placeholders then get a canvas of their own.
        if (maxH == 0) maxH = 256;
        if (maxW == 0) maxW = 256;
        const Shape frameShape = target_channels == 1 ? Shape{maxH, maxW} : Shape{maxH, maxW, 3};
        const DType frameType = stackType.value_or(DType::UInt8);

        // Second pass: one frame per entry, placed in the stack at once; each
        // raw image is released as its frame is placed, and placeholders are
        // drawn in their slots, so no frame costs more than its place.
        for (int idx = 0; idx < total; ++idx) {
            if (_cancelled) return;
            RawEntry& entry = raw[idx];
            // Placeholders are drawn in 8 bits: in their slot when the stack is
            // uint8, else converted by value into the stack's type.
            const auto inSlot = [&](const Shape& shape) {
                return frameType == DType::UInt8 ? stack.slot(idx, frameShape) : NdArray::empty(shape, DType::UInt8);
            };
            NdArray frame = std::holds_alternative<QString>(entry)
                                ? renderPlaceholderFrame(std::get<QString>(entry), maxW, maxH, target_channels, inSlot)
                                : std::move(std::get<NdArray>(entry));
            entry = QString();
            frame = padToCentre(unifyChannels(frame, target_channels), maxH, maxW);
            if (frame.shape() != frameShape) throw std::runtime_error(channelMismatch(_filtered_list[idx], frame));
            if (frame.dtype() != frameType) frame = frame.astype(frameType);
            stack.place(idx, frame, frameShape, frameType);
        }

        if (_cancelled) return;
        NdArray result = stack.take();
        markSending();
        if (!placeholderReasons.isEmpty()) emit placeholders(_load_id, placeholderReasons);
        emit finished(_load_id, result);
    } catch (const std::exception& e) {
        if (!_cancelled) emit error(_load_id, QString::fromUtf8(e.what()));
    } catch (...) {
        if (!_cancelled) emit error(_load_id, QStringLiteral("unknown failure"));
    }
}

} // namespace torvex
