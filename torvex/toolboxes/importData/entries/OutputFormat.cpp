#include "OutputFormat.h"

namespace torvex {

NdArray reformatForImport(const NdArray& volume, const QString& format, bool keepChannel, const Progress& progress)
{
    if (format == "HWCD") {
        NdArray out = volume;
        if (volume.ndim() == 4) out = volume.transpose({1, 2, 3, 0});
        else if (volume.ndim() == 5) out = volume.transpose({1, 2, 3, 4, 0});
        if (!keepChannel && out.extent(2) == 1) out = out.squeeze(2);
        return out;
    }
    if (format == "DHWC") {
        NdArray out = copyWithProgress(volume, progress);
        if (!keepChannel && out.extent(3) == 1) out = out.squeeze(3);
        return out;
    }
    return volume;
}

} // namespace torvex
