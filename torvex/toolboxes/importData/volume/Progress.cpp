#include "toolboxes/importData/volume/Progress.h"

#include "toolboxes/importData/volume/NdArray.h"

#include <algorithm>

namespace torvex {

int64_t framesPerChunk(const NdArray& array)
{
    constexpr int64_t chunkBytes = int64_t(64) << 20;
    if (array.ndim() == 0 || array.extent(0) == 0) return 1;
    const int64_t frameBytes = std::max<int64_t>(1, array.nbytes() / array.extent(0));
    return std::max<int64_t>(1, chunkBytes / frameBytes);
}

void reportProgress(const Progress& progress, int64_t done, int64_t total)
{
    if (progress && !progress(done, total)) throw Cancelled();
}

NdArray copyWithProgress(const NdArray& source, const Progress& progress)
{
    if (!progress || source.ndim() == 0) return source.copy();
    NdArray out = NdArray::empty(source.shape(), source.dtype());
    const int64_t frames = source.extent(0), chunk = framesPerChunk(source);
    reportProgress(progress, 0, frames);
    for (int64_t first = 0; first < frames; first += chunk) {
        const int64_t last = std::min(frames, first + chunk);
        NdArray part = out.slice(0, first, last);
        part.assignFrom(source.slice(0, first, last));
        reportProgress(progress, last, frames);
    }
    return out;
}

} // namespace torvex
