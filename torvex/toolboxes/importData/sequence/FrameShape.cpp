#include "FrameShape.h"

#include <algorithm>

namespace torvex {

int channelCountOf(const NdArray& image)
{
    return image.ndim() == 2 ? 1 : static_cast<int>(std::min<int64_t>(image.extent(2), 3));
}

namespace {

NdArray channelMean(const NdArray& image)
{
    const int64_t channels = image.extent(2);
    NdArray out = NdArray::empty({image.extent(0), image.extent(1)}, DType::UInt8);
    auto* dst = reinterpret_cast<uint8_t*>(out.mutableData());
    double sum = 0;
    int64_t k = 0;
    image.forEach([&](const std::byte* p) {
        sum += static_cast<uint8_t>(*p);
        if (++k == channels) {
            *dst++ = static_cast<uint8_t>(sum / static_cast<double>(channels));
            sum = 0;
            k = 0;
        }
    });
    return out;
}

NdArray grayToThree(const NdArray& image)
{
    NdArray out = NdArray::empty({image.extent(0), image.extent(1), 3}, image.dtype());
    std::byte* dst = out.mutableData();
    const int item = image.itemsize();
    image.forEach([&](const std::byte* p) {
        for (int k = 0; k < 3; ++k) dst = std::copy_n(p, item, dst);
    });
    return out;
}

} // namespace

NdArray unifyChannels(const NdArray& image, int targetChannels)
{
    if (targetChannels == 1) {
        if (image.ndim() == 2) return image;
        // One channel, the only count a gray stack meets: no mean, so any type passes.
        return image.extent(2) == 1 ? image.squeeze(2) : channelMean(image);
    }
    const NdArray colour = image.ndim() == 2 ? grayToThree(image) : image;
    return colour.extent(2) == 4 ? colour.slice(2, 0, 3) : colour;
}

NdArray padToCentre(const NdArray& image, int64_t height, int64_t width)
{
    const int64_t h = image.extent(0), w = image.extent(1);
    if (h >= height && w >= width) return image;
    const int64_t top = std::max<int64_t>(height - h, 0) / 2;
    const int64_t left = std::max<int64_t>(width - w, 0) / 2;
    std::vector<std::pair<int64_t, int64_t>> widths{
        {top, std::max<int64_t>(height - h, 0) - top},
        {left, std::max<int64_t>(width - w, 0) - left},
    };
    if (image.ndim() == 3) widths.emplace_back(0, 0);
    return image.pad(widths);
}

} // namespace torvex
