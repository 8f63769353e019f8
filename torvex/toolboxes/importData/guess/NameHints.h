#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace torvex {

// What a raw file's name says about its layout, as people name such files:
// "scan_512x384x60_u16_be.raw", "ct_w512_h256_d40_float.bin", "map.f32".
// Sizes are as the file's rows run: width is the length of one row.
struct NameHints {
    std::optional<int64_t> width;
    std::optional<int64_t> height;
    std::optional<int64_t> frames;
    std::optional<QString> imgType; // one of the panel's gray type names
    std::optional<bool> littleEndian;

    bool any() const { return width || height || frames || imgType || littleEndian; }
};

NameHints readNameHints(const QString& fileName);

} // namespace torvex
