#pragma once

#include "toolboxes/importData/volume/NdArray.h"

namespace torvex {

// Bringing the images of a sequence to one channel count and one size.

// 1 for a two-dimensional image, else the smaller of its channels and 3.
int channelCountOf(const NdArray& image);

// To `targetChannels` (1 or 3). For 1, a three-dimensional uint8 image is
// averaged over its channels (truncated); one channel of any type is dropped
// as an axis. For 3, a gray image is repeated into
// three channels and a four-channel one keeps its first three (alpha is
// dropped, not composited). Any other channel count is kept as it is.
NdArray unifyChannels(const NdArray& image, int targetChannels);

// Centres the image on a height x width canvas of zeros. The odd row goes to
// the bottom and the odd column to the right. An image already that size (or
// larger) is returned as it is, without a copy.
NdArray padToCentre(const NdArray& image, int64_t height, int64_t width);

} // namespace torvex
