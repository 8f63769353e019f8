#include "TiffLowDepth.h"

#include "TiffFile.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace torvex {

std::optional<DecodedImage> readTiffLowDepth(const QString& path)
{
    const TiffFile file(path);
    TIFF* const tiff = file.get();

    uint16_t bits = 0, photometric = 0, samples = 0;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
    if (!TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric)) return std::nullopt;
    const bool palette = photometric == PHOTOMETRIC_PALETTE && (bits == 1 || bits == 2 || bits == 4 || bits == 8);
    const bool bilevel = (photometric == PHOTOMETRIC_MINISWHITE || photometric == PHOTOMETRIC_MINISBLACK) && bits == 1;
    if (!(palette || bilevel) || samples != 1) return std::nullopt;

    uint32_t width = 0, height = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
    if (width == 0 || height == 0) throw std::runtime_error("TIFF: empty image");
    if (int64_t(width) * height > int64_t(kMaxDecodedImageMegabytes) << 20)
        throw std::runtime_error("TIFF: image is too large");

    NdArray pixels = NdArray::empty({height, width}, DType::UInt8);
    auto* out = reinterpret_cast<uint8_t*>(pixels.mutableData());
    const uint32_t mask = (1u << bits) - 1;
    // White is 1 in a bilevel image; WhiteIsZero files store it as 0.
    const uint8_t flip = bilevel && photometric == PHOTOMETRIC_MINISWHITE ? 1 : 0;
    // `count` values of one stored row, from its first byte on, to (y, x0) on.
    const auto unpack = [&](const uint8_t* in, uint32_t y, uint32_t x0, uint32_t count) {
        uint8_t* to = out + int64_t(y) * width + x0;
        for (uint32_t x = 0; x < count; ++x) {
            const uint64_t bit = uint64_t(x) * bits;
            to[x] = static_cast<uint8_t>(((in[bit / 8] >> (8 - bits - bit % 8)) & mask) ^ flip);
        }
    };

    if (TIFFIsTiled(tiff)) {
        uint32_t tileWidth = 0, tileHeight = 0;
        TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &tileWidth);
        TIFFGetField(tiff, TIFFTAG_TILELENGTH, &tileHeight);
        const tmsize_t tileBytes = TIFFTileSize(tiff), rowBytes = TIFFTileRowSize(tiff);
        if (tileWidth == 0 || tileHeight == 0 || tileBytes <= 0 || rowBytes <= 0) file.fail("bad tiles");
        std::vector<uint8_t> tile(static_cast<size_t>(tileBytes));
        for (uint32_t ty = 0; ty < height; ty += tileHeight)
            for (uint32_t tx = 0; tx < width; tx += tileWidth) {
                if (TIFFReadTile(tiff, tile.data(), tx, ty, 0, 0) < 0) file.fail("tile unreadable");
                for (uint32_t r = 0; r < tileHeight && ty + r < height; ++r)
                    unpack(tile.data() + r * rowBytes, ty + r, tx, std::min(tileWidth, width - tx));
            }
    } else {
        const tmsize_t rowBytes = TIFFScanlineSize(tiff);
        if (rowBytes <= 0) file.fail("bad rows");
        std::vector<uint8_t> row(static_cast<size_t>(rowBytes));
        for (uint32_t y = 0; y < height; ++y) {
            if (TIFFReadScanline(tiff, row.data(), y) < 0) file.fail("row unreadable");
            unpack(row.data(), y, 0, width);
        }
    }
    return DecodedImage{pixels, bilevel};
}

} // namespace torvex
