#include "VolumeParams.h"

namespace torvex {

VolumeParams VolumeParams::resetValues()
{
    return {.imgType = "8-bit", .offset = 0, .gap = 0, .width = 400, .height = 640, .totalFrame = 1,
            .littleEndian = false, .order = "F", .colorOrder = "AABBCC", .permute = "0,1,2", .hflip = false,
            .vflip = false, .bigEndian = false};
}

bool VolumeParams::isEmpty() const { return *this == VolumeParams{}; }

VolumeParams VolumeParams::withFallbacks() const
{
    return {.imgType = imgType.value_or("8-bit"), .offset = offset.value_or(0), .gap = gap.value_or(0),
            .width = width.value_or(0), .height = height.value_or(0), .totalFrame = totalFrame.value_or(1),
            .littleEndian = littleEndian.value_or(false), .order = order.value_or("F"),
            .colorOrder = colorOrder.value_or("AABBCC"), .permute = permute.value_or("0,1,2"),
            .hflip = hflip.value_or(false), .vflip = vflip.value_or(false), .bigEndian = bigEndian.value_or(false)};
}

RawLayout VolumeParams::layout() const
{
    const VolumeParams p = withFallbacks();
    return {.imgType = *p.imgType, .offset = *p.offset, .gap = *p.gap, .width = *p.width, .height = *p.height,
            .frame = *p.totalFrame, .littleEndian = *p.littleEndian, .bigEndian = *p.bigEndian,
            .readOrder = *p.order, .colorOrder = *p.colorOrder};
}

} // namespace torvex
