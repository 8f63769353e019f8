#include "TiffLowDepth.h"

#include <QFile>

#include <tiffio.h>

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace torvex {

namespace {

// The first error of one file. The handlers belong to that file alone, so
// they neither print nor touch the handlers of the general decoder, which
// reads TIFF through the same library.
struct Errors {
    std::string first;
};

int keepError(TIFF*, void* user, const char* module, const char* format, va_list args)
{
    auto* errors = static_cast<Errors*>(user);
    if (errors->first.empty()) {
        char text[512];
        std::vsnprintf(text, sizeof text, format, args);
        errors->first = module ? std::string(module) + ": " + text : text;
    }
    return 1; // handled: the library's global handler stays quiet
}

int ignoreWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};

[[noreturn]] void fail(const Errors& errors, const char* fallback)
{
    throw std::runtime_error("TIFF: " + (errors.first.empty() ? std::string(fallback) : errors.first));
}

} // namespace

std::optional<DecodedImage> readTiffLowDepth(const QString& path)
{
    Errors errors;
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                  &TIFFOpenOptionsFree);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keepError, &errors);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), ignoreWarning, nullptr);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), tmsize_t(kMaxDecodedImageMegabytes) << 20);
    // "m": no memory mapping, so a file that shrinks under us is a read error, not a crash.
    const std::unique_ptr<TIFF, CloseTiff> tiff(TIFFOpenExt(QFile::encodeName(path).constData(), "rm", options.get()));
    if (!tiff) fail(errors, "cannot open file");

    uint16_t bits = 0, photometric = 0, samples = 0;
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, &samples);
    if (!TIFFGetField(tiff.get(), TIFFTAG_PHOTOMETRIC, &photometric)) return std::nullopt;
    const bool palette = photometric == PHOTOMETRIC_PALETTE && (bits == 1 || bits == 2 || bits == 4 || bits == 8);
    const bool bilevel = (photometric == PHOTOMETRIC_MINISWHITE || photometric == PHOTOMETRIC_MINISBLACK) && bits == 1;
    if (!(palette || bilevel) || samples != 1) return std::nullopt;

    uint32_t width = 0, height = 0;
    TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height);
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

    if (TIFFIsTiled(tiff.get())) {
        uint32_t tileWidth = 0, tileHeight = 0;
        TIFFGetField(tiff.get(), TIFFTAG_TILEWIDTH, &tileWidth);
        TIFFGetField(tiff.get(), TIFFTAG_TILELENGTH, &tileHeight);
        const tmsize_t tileBytes = TIFFTileSize(tiff.get()), rowBytes = TIFFTileRowSize(tiff.get());
        if (tileWidth == 0 || tileHeight == 0 || tileBytes <= 0 || rowBytes <= 0) fail(errors, "bad tiles");
        std::vector<uint8_t> tile(static_cast<size_t>(tileBytes));
        for (uint32_t ty = 0; ty < height; ty += tileHeight)
            for (uint32_t tx = 0; tx < width; tx += tileWidth) {
                if (TIFFReadTile(tiff.get(), tile.data(), tx, ty, 0, 0) < 0) fail(errors, "tile unreadable");
                for (uint32_t r = 0; r < tileHeight && ty + r < height; ++r)
                    unpack(tile.data() + r * rowBytes, ty + r, tx, std::min(tileWidth, width - tx));
            }
    } else {
        const tmsize_t rowBytes = TIFFScanlineSize(tiff.get());
        if (rowBytes <= 0) fail(errors, "bad rows");
        std::vector<uint8_t> row(static_cast<size_t>(rowBytes));
        for (uint32_t y = 0; y < height; ++y) {
            if (TIFFReadScanline(tiff.get(), row.data(), y) < 0) fail(errors, "row unreadable");
            unpack(row.data(), y, 0, width);
        }
    }
    return DecodedImage{pixels, bilevel};
}

} // namespace torvex
