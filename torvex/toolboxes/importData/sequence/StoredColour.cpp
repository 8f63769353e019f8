#include "StoredColour.h"

#include <QFile>

namespace torvex {

namespace {

// PNG keeps bit depth and colour type at fixed places of its first chunk.
StoredColour pngStoredColour(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return StoredColour::Direct;
    const QByteArray head = file.read(26);
    if (head.size() < 26 || head.mid(12, 4) != "IHDR") return StoredColour::Direct;
    const int bitDepth = static_cast<unsigned char>(head[24]);
    const int colourType = static_cast<unsigned char>(head[25]);
    if (colourType == 3) return StoredColour::Palette;
    if (colourType == 0 && bitDepth == 1) return StoredColour::Bilevel;
    return StoredColour::Direct;
}

// PBM (P1 plain, P4 raw) is the 1-bit member of the PNM family.
StoredColour pnmStoredColour(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return StoredColour::Direct;
    const QByteArray magic = file.read(2);
    return magic == "P1" || magic == "P4" ? StoredColour::Bilevel : StoredColour::Direct;
}

} // namespace

StoredColour storedColourOf(const OIIO::ImageInput& input, const QString& path)
{
    const OIIO::ImageSpec& header = input.spec();
    const std::string format = input.format_name();
    if (format == "png") return pngStoredColour(path);
    if (format == "pnm") return pnmStoredColour(path);
    if (format == "bmp") {
        const int bits = header.get_int_attribute("bmp:bitsperpixel");
        return bits > 0 && bits <= 8 ? StoredColour::Palette : StoredColour::Direct;
    }
    if (header.nchannels == 1 && header.get_int_attribute("oiio:BitsPerSample") == 1) return StoredColour::Bilevel;
    return StoredColour::Direct;
}

} // namespace torvex
