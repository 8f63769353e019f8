#include "ByteBalance.h"

#include "ImageTypes.h"

#include <cstdio>

namespace torvex {

ByteBalance ByteBalance::of(int64_t fileBytes, double bytesPerPixel, int64_t offset, int64_t gap, int64_t width,
                            int64_t height, int64_t frames)
{
    const double claimed = static_cast<double>(offset) +
                           (static_cast<double>(gap) + static_cast<double>(width) * static_cast<double>(height) *
                                                           bytesPerPixel) *
                               static_cast<double>(frames);
    return {static_cast<double>(fileBytes) - claimed};
}

std::optional<ByteBalance> ByteBalance::of(int64_t fileBytes, const RawLayout& layout)
{
    const std::optional<ImageType> type = findImageType(layout.imgType);
    if (!type) return std::nullopt;
    return of(fileBytes, type->balanceBytesPerPixel(), layout.offset, layout.gap, layout.width, layout.height,
              layout.frame);
}

QString ByteBalance::signedText() const
{
    // printf rounds the exact binary value half to even, as Python's format does.
    char text[64];
    std::snprintf(text, sizeof text, "%+.0f", diff);
    return QString::fromLatin1(text);
}

QString ByteBalance::statusMessage() const { return "Remaining bytes (unread): " + signedText(); }

QString ByteBalance::badgeText() const
{
    return matched() ? QStringLiteral("\u2714\u00a0All bytes matched") : "\u26a0\u00a0" + signedText() + " B";
}

QString ByteBalance::badgeStyleSheet() const
{
    return QStringLiteral("background-color: %1; color: #ffffff;font-size: 9pt; font-weight: bold;"
                          "border-radius: 4px; padding: 2px 10px; margin: 2px 4px;")
        .arg(matched() ? "#00c853" : "#ff8f00");
}

} // namespace torvex
