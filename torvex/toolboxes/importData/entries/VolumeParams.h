#pragma once

#include "toolboxes/importData/volume/RawLayout.h"

#include <QString>

#include <optional>

namespace torvex {

// The twelve panel settings that say how a raw file is read and shown. A field
// may be missing; restoring such a record writes the field's fallback value.
struct VolumeParams {
    std::optional<QString> imgType;
    std::optional<int> offset;
    std::optional<int> gap;
    std::optional<int> width;
    std::optional<int> height;
    std::optional<int> totalFrame;
    std::optional<bool> littleEndian;
    std::optional<QString> order;
    std::optional<QString> colorOrder;
    std::optional<QString> permute;
    std::optional<bool> hflip;
    std::optional<bool> vflip;
    std::optional<bool> bigEndian; // beside the panel's twelve; missing in older snapshots

    // The panel's start values, for a newly opened file.
    static VolumeParams resetValues();
    // Whether no field is present at all.
    bool isEmpty() const;
    // Every field present, missing ones taken from the fallbacks of a restore
    // (which differ from the start values at width and height: 0, not 400 by 640).
    VolumeParams withFallbacks() const;

    // How these settings read a raw file (missing fields from the fallbacks).
    RawLayout layout() const;

    bool operator==(const VolumeParams&) const = default;
};

} // namespace torvex
