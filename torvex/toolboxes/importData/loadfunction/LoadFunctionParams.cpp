#include "toolboxes/importData/loadfunction/LoadFunctionParams.h"

namespace torvex {

LoadFunctionParams LoadFunctionParams::from(const VolumeParams& panel, const QString& data_format,
                                            bool keep_c_on_gray)
{
    const VolumeParams p = panel.withFallbacks();
    return {.imgType = *p.imgType,
            .offset = *p.offset,
            .gap = *p.gap,
            .width = *p.width,
            .height = *p.height,
            .frame = *p.totalFrame,
            .littleEndian = *p.littleEndian,
            .readOrder = *p.order,
            .colorOrder = *p.colorOrder,
            .permute = *p.permute,
            .hflip = *p.hflip,
            .vflip = *p.vflip,
            .data_format = data_format,
            .keep_c_on_gray = keep_c_on_gray,
            .bigEndian = *p.bigEndian};
}

} // namespace torvex
