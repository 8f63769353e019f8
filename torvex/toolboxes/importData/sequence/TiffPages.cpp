#include "TiffPages.h"

#include "TiffFile.h"

#include <QFileInfo>

#include <algorithm>
#include <string>

namespace torvex {

namespace {

// The array type of a plain page's samples; none for any other page.
std::optional<DType> plainType(TIFF* tiff)
{
    uint16_t bits = 0, format = 0, samples = 0, photometric = 0, planar = 0, extra = 0, compression = 0;
    uint16_t* extraTypes = nullptr;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &format);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &planar);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &extra, &extraTypes);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &compression);
    if (!TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric)) return std::nullopt;
    const bool gray = photometric == PHOTOMETRIC_MINISBLACK && samples == 1;
    const bool rgb = photometric == PHOTOMETRIC_RGB && samples == 3 && planar == PLANARCONFIG_CONTIG;
    // JPEG data may be colour-converted by the general decoder.
    const bool jpeg = compression == COMPRESSION_JPEG || compression == COMPRESSION_OJPEG;
    if (!(gray || rgb) || extra != 0 || jpeg || TIFFIsTiled(tiff)) return std::nullopt;
    switch (format * 100 + bits) {
    case SAMPLEFORMAT_UINT * 100 + 8: return DType::UInt8;
    case SAMPLEFORMAT_UINT * 100 + 16: return DType::UInt16;
    case SAMPLEFORMAT_UINT * 100 + 32: return DType::UInt32;
    case SAMPLEFORMAT_INT * 100 + 16: return DType::Int16;
    case SAMPLEFORMAT_INT * 100 + 32: return DType::Int32;
    case SAMPLEFORMAT_IEEEFP * 100 + 32: return DType::Float32;
    default: return std::nullopt;
    }
}

} // namespace

TiffPages::TiffPages() = default;
TiffPages::~TiffPages() = default;

TiffPages::OpenFile& TiffPages::ownFile()
{
    std::lock_guard lock(mutex_);
    return files_[std::this_thread::get_id()];
}

std::optional<NdArray> TiffPages::read(const QString& path, int page, const PixelAllocator& allocate)
{
    OpenFile& open = ownFile();
    if (!open.file || open.path != path) {
        open.file.reset(); // a failed open leaves none
        open.file = std::make_unique<TiffFile>(path);
        open.path = path;
    }
    const TiffFile& file = *open.file;
    TIFF* const tiff = file.get();
    // The next page follows its directory; any other is found from the
    // directories' offsets, without reading those in between.
    if (TIFFCurrentDirectory(tiff) + 1 == tdir_t(page) ? !TIFFReadDirectory(tiff)
        : TIFFCurrentDirectory(tiff) != tdir_t(page) && !TIFFSetDirectory(tiff, tdir_t(page)))
        file.fail(("no page " + std::to_string(page + 1)).c_str());

    const std::optional<DType> dtype = plainType(tiff);
    if (!dtype) return std::nullopt;
    uint32_t width = 0, height = 0, rowsPerStrip = 0;
    uint16_t samples = 1;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &rowsPerStrip);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
    if (width == 0 || height == 0) file.fail("empty image");
    const Shape shape = samples == 1 ? Shape{height, width} : Shape{height, width, samples};
    const double rowBytes = double(width) * samples * itemSize(*dtype);
    if (rowBytes * height > double(uint64_t(kMaxDecodedImageMegabytes) << 20)) file.fail("image is too large");
    // As for the general decoder: a header may not claim more than the file can hold.
    const double fileBytes = double(QFileInfo(path).size());
    checkPlausibleSize(rowBytes * height, fileBytes);
    checkPlausibleSize(rowBytes * std::min(rowsPerStrip, height), fileBytes);

    NdArray pixels = allocate(shape, *dtype);
    auto* out = reinterpret_cast<uint8_t*>(pixels.mutableData());
    const tmsize_t total = tmsize_t(rowBytes) * height;
    tmsize_t done = 0;
    for (tstrile_t strip = 0; done < total; ++strip) {
        const tmsize_t read = TIFFReadEncodedStrip(tiff, strip, out + done, total - done);
        if (read <= 0) file.fail("strip unreadable");
        done += read;
    }
    return pixels;
}

} // namespace torvex
