#pragma once

#include "RawLayout.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace torvex {

// How the file's length compares with what the panel's parameters claim.
struct ByteBalance {
    double diff; // bytes left unread when positive, missing when negative

    // Claimed size: offset + (gap + width x height x bytesPerPixel) x frames,
    // counting a gap behind the last frame too.
    static ByteBalance of(int64_t fileBytes, double bytesPerPixel, int64_t offset, int64_t gap, int64_t width,
                          int64_t height, int64_t frames);
    // The same for a layout; none when its image type is unknown.
    static std::optional<ByteBalance> of(int64_t fileBytes, const RawLayout& layout);

    bool matched() const { return diff == 0; }
    // diff with an explicit sign, rounded half to even: "+1024", "-12", "+0".
    QString signedText() const;
    QString statusMessage() const;
    QString badgeText() const;
    QString badgeStyleSheet() const;
};

} // namespace torvex
