#include "toolboxes/importData/loadfunction/LoadFunctionParams.h"

namespace torvex {

LoadFunctionParams LoadFunctionParams::from(const VolumeParams& panel, const QString& data_format,
                                            bool keep_c_on_gray)
{
    const RawLayout& l = panel.layout;
    const AxisTransfer& t = panel.transfer;
    return {.imgType = l.imgType,
            .offset = static_cast<int>(l.offset),
            .gap = static_cast<int>(l.gap),
            .width = static_cast<int>(l.width),
            .height = static_cast<int>(l.height),
            .frame = static_cast<int>(l.frame),
            .littleEndian = l.byteOrder == ByteOrder::Little,
            .readOrder = l.readOrder,
            .colorOrder = l.colorOrder,
            .permute = t.permute,
            .hflip = t.hflip,
            .vflip = t.vflip,
            .data_format = data_format,
            .keep_c_on_gray = keep_c_on_gray,
            .bigEndian = l.byteOrder == ByteOrder::Big};
}

ByteOrder LoadFunctionParams::byteOrder() const
{
    return bigEndian ? ByteOrder::Big : littleEndian ? ByteOrder::Little : ByteOrder::Native;
}

} // namespace torvex
