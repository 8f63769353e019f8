#pragma once

#include "toolboxes/importData/volume/RawLayout.h"

namespace torvex {

// The raw-volume panel's settings as one value: how a raw file is read and how
// its axes are turned. A stored record lacking a field holds its default.
struct VolumeParams {
    RawLayout layout;
    AxisTransfer transfer;

    // The panel's start values, for a newly opened file (400 by 640, where a
    // record lacking width and height restores 0).
    static VolumeParams resetValues() { return {.layout = {.width = 400, .height = 640}}; }

    bool operator==(const VolumeParams&) const = default;
};

} // namespace torvex
