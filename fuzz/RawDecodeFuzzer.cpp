// Raw volumes: layout parameters and file bytes both come from the fuzzer.
// A decode must either throw std::runtime_error or give a (frame, height,
// width, channels) stack whose every element lies inside the file bytes;
// the axis transfer and the display of a frame must then work on it.
#include "toolboxes/importData/volume/AxisTransfer.h"
#include "toolboxes/importData/volume/DisplayImage.h"
#include "toolboxes/importData/volume/ImageTypes.h"
#include "toolboxes/importData/volume/RawDecoder.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <stdexcept>

#include "FuzzCheck.h"

using namespace torvex;

namespace {

// The spin boxes' range. Small values are drawn more often, so that decodes
// that succeed are found as well as those that fail.
int64_t spinBoxValue(FuzzedDataProvider& in)
{
    return in.ConsumeBool() ? in.ConsumeIntegralInRange<int64_t>(0, 2147483647)
                            : in.ConsumeIntegralInRange<int64_t>(0, 40);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider in(data, size);
    const auto& types = imageTypes();
    // One index past the thirteen types stands for a name the dispatch does not know.
    const size_t typeIndex = in.ConsumeIntegralInRange<size_t>(0, types.size());
    const QString typeName = typeIndex < types.size() ? types[typeIndex].name : QStringLiteral("12-bit Packed");
    RawLayout p;
    p.imgType = typeName;
    p.offset = spinBoxValue(in);
    p.gap = spinBoxValue(in);
    p.width = spinBoxValue(in);
    p.height = spinBoxValue(in);
    p.frame = spinBoxValue(in);
    p.byteOrder = in.PickValueInArray({ByteOrder::Native, ByteOrder::Little, ByteOrder::Big});
    p.readOrder = in.ConsumeBool() ? "C" : "F";
    p.colorOrder = in.ConsumeBool() ? "ABCABC" : "AABBCC";
    const QString permute = in.PickValueInArray({"0,1,2", "0,2,1", "1,0,2", "1,2,0", "2,0,1", "2,1,0"});
    const bool hflip = in.ConsumeBool(), vflip = in.ConsumeBool();
    const std::string rest = in.ConsumeRemainingBytesAsString();
    const QByteArray bytes(rest.data(), static_cast<qsizetype>(rest.size()));

    std::optional<NdArray> stack;
    try {
        stack = decodeRawVolume(bytes, p);
    } catch (const std::runtime_error&) {
        return 0;
    }
    FUZZ_CHECK(stack.has_value() == (typeIndex < types.size()));
    if (!stack) return 0;
    const ImageType& type = types[typeIndex];
    FUZZ_CHECK(stack->shape() == (Shape{p.frame, p.height, p.width, type.channels}));
    FUZZ_CHECK(stack->dtype() == type.dtype);

    // Reading every element is where a view reaching past the bytes shows.
    double sum = 0;
    stack->forEach([&](const std::byte* e) { sum += stack->valueAt(e); });
    const NdArray moved = transferAxes(*stack, permute, hflip, vflip);
    if (moved.size() > 0) displayImage(moved.index(0));
    return 0;
}
