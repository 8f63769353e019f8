#include "StillImageDecoder.h"

#include "GifIndices.h"
#include "IndexedImage.h"
#include "PlainPng.h"
#include "StoredColour.h"
#include "TiffLowDepth.h"
#include "TiffPages.h"

#include <OpenImageIO/imageio.h>

#include <QFile>

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <vector>

namespace torvex {

namespace {

[[noreturn]] void fail(const std::string& text) { throw std::runtime_error(text); }

void applyDecoderLimits()
{
    static std::once_flag once;
    std::call_once(once, [] { OIIO::attribute("limits:imagesize_MB", kMaxDecodedImageMegabytes); });
}

// The array type that holds a stored type unchanged, if there is one.
std::optional<DType> arrayTypeOf(OIIO::TypeDesc::BASETYPE type)
{
    switch (type) {
    case OIIO::TypeDesc::UINT8: return DType::UInt8;
    case OIIO::TypeDesc::INT16: return DType::Int16;
    case OIIO::TypeDesc::UINT16: return DType::UInt16;
    case OIIO::TypeDesc::INT32: return DType::Int32;
    case OIIO::TypeDesc::UINT32: return DType::UInt32;
    case OIIO::TypeDesc::HALF: return DType::Float16;
    case OIIO::TypeDesc::FLOAT: return DType::Float32;
    case OIIO::TypeDesc::DOUBLE: return DType::Float64;
    default: return std::nullopt;
    }
}

void readInto(OIIO::ImageInput& input, OIIO::TypeDesc type, void* buffer)
{
    const int channels = input.spec().nchannels;
    // The page sought, 0 unless a later page of a file was asked for.
    if (!input.read_image(input.current_subimage(), 0, 0, channels, type, buffer) || input.has_error())
        fail(input.geterror());
}

// Types without an array type of their own are widened by value, not through
// the decoder's conversion, which would rescale them to the new type's range.
template <class From, class To>
NdArray readWidened(OIIO::ImageInput& input, OIIO::TypeDesc stored, const Shape& shape, DType to)
{
    std::vector<From> values(static_cast<size_t>(elementCount(shape)));
    readInto(input, stored, values.data());
    NdArray out = NdArray::empty(shape, to);
    std::copy(values.begin(), values.end(), reinterpret_cast<To*>(out.mutableData()));
    return out;
}

NdArray readPixels(OIIO::ImageInput& input, const PixelAllocator& allocate)
{
    const OIIO::ImageSpec& header = input.spec();
    if (header.width <= 0 || header.height <= 0 || header.nchannels <= 0 || header.depth != 1)
        fail("not a two-dimensional image");
    if (header.image_bytes(true) > uint64_t(kMaxDecodedImageMegabytes) << 20) fail("image is too large");
    Shape shape{header.height, header.width};
    if (header.nchannels > 1) shape.push_back(header.nchannels);

    // Channels of different types (as in some EXR files) are read as float.
    const OIIO::TypeDesc stored = header.channelformats.empty() ? header.format : OIIO::TypeFloat;
    const auto base = static_cast<OIIO::TypeDesc::BASETYPE>(stored.basetype);
    if (const auto dtype = arrayTypeOf(base)) {
        NdArray out = allocate(shape, *dtype);
        readInto(input, stored, out.mutableData());
        return out;
    }
    switch (base) {
    case OIIO::TypeDesc::INT8: return readWidened<int8_t, int16_t>(input, stored, shape, DType::Int16);
    case OIIO::TypeDesc::INT64: return readWidened<int64_t, double>(input, stored, shape, DType::Float64);
    case OIIO::TypeDesc::UINT64: return readWidened<uint64_t, double>(input, stored, shape, DType::Float64);
    default: fail("unsupported pixel type " + std::string(stored.c_str()));
    }
}

// The decoder widens 1-bit pixels to 0 and 255; a bilevel image holds 0 and 1.
NdArray narrowToBits(NdArray widened)
{
    std::byte* p = widened.mutableData();
    for (int64_t i = 0; i < widened.size(); ++i) p[i] = std::byte{p[i] != std::byte{0}};
    return widened;
}

DecodedImage decodeIndexed(const OIIO::ImageInput& input, const QString& path)
{
    IndexedImage indexed = readIndexedImage(path);
    const QRgb black = qRgb(0, 0, 0), white = qRgb(255, 255, 255);
    const QList<QRgb>& table = indexed.colourTable;
    // A 1-bit BMP always carries a table; with black and white it is a bilevel
    // image. Its reader may reorder that table, so each pixel's colour decides.
    if (input.format_name() == std::string_view("bmp") && input.spec().get_int_attribute("bmp:bitsperpixel") == 1
        && table.size() == 2 && table.contains(black) && table.contains(white)) {
        const std::byte whiteIndex{static_cast<unsigned char>(table.indexOf(white))};
        std::byte* p = indexed.indices.mutableData();
        for (int64_t i = 0; i < indexed.indices.size(); ++i) p[i] = std::byte{p[i] == whiteIndex};
        return {indexed.indices, true};
    }
    return {indexed.indices, false};
}

// Opens with the stored values kept: by default the decoder multiplies colour
// by alpha, and with `rawColour` false it also converts CMYK to RGB.
OIIO::ImageInput::unique_ptr openImage(const std::string& file, bool rawColour)
{
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    if (rawColour) config.attribute("oiio:RawColor", 1);
    auto input = OIIO::ImageInput::open(file, &config);
    if (!input) fail(OIIO::geterror());
    input->threads(1); // the loader itself decodes files in parallel
    return input;
}

void checkClaimedSize(const OIIO::ImageSpec& header, uintmax_t fileBytes)
{
    const double rowBytes = double(header.width) * double(header.nchannels) * double(header.format.size());
    checkPlausibleSize(rowBytes * double(header.height) * double(std::max(header.depth, 1)), double(fileBytes));
    // The TIFF reader sizes its strip buffer by the strip's stated rows, even
    // past the image's height.
    checkPlausibleSize(rowBytes * double(unsigned(header.get_int_attribute("tiff:RowsPerStrip", 0))), double(fileBytes));
}

DecodedImage decodeStoredImage(const QString& path, const PixelAllocator& allocate)
{
    const std::string file = QFile::encodeName(path).toStdString();
    // A pipe or device would block the reader or never end.
    std::error_code ec;
    if (!std::filesystem::is_regular_file(file, ec)) fail("not a regular file");
    if (QFile in(path); in.open(QIODevice::ReadOnly) && in.peek(8) == QByteArray("\x89PNG\r\n\x1a\n", 8))
        if (std::optional<NdArray> plain = decodePlainPng(in.readAll(), allocate)) return {*plain, false};

    auto input = openImage(file, false);
    checkClaimedSize(input->spec(), std::filesystem::file_size(file, ec));
    const std::string format = input->format_name();
    if (format == "gif") return {readGifIndices(path).indices, false};
    if (format == "tiff")
        if (auto lowDepth = readTiffLowDepth(path)) return *lowDepth;
    const StoredColour colour = storedColourOf(*input, path);
    if (colour == StoredColour::Palette) return decodeIndexed(*input, path);
    if (format == "tiff" && input->spec().get_int_attribute("tiff:PhotometricInterpretation") == 5) {
        // Raw colour only for CMYK: it would also leave YCbCr files unconverted.
        input = openImage(file, true);
    }
    if (colour == StoredColour::Bilevel) {
        const NdArray pixels = readPixels(*input, NdArray::empty);
        if (pixels.dtype() == DType::UInt8) return {narrowToBits(pixels), true};
        return {pixels, false};
    }
    return {readPixels(*input, allocate), false};
}

bool hasPages(const OIIO::ImageInput& input)
{
    const std::string_view format = input.format_name();
    return format == "tiff" || format == "gif";
}

DecodedImage decodeLaterPage(const QString& path, int page, const PixelAllocator& allocate, TiffPages* openPages)
{
    // A GIF's later frames are composed over those before them, which only
    // the general decoder does.
    QFile head(path);
    const bool gif = head.open(QIODevice::ReadOnly) && head.peek(4) == "GIF8";
    if (openPages && !gif)
        if (std::optional<NdArray> pixels = openPages->read(path, page, allocate)) return {*pixels, false};
    const std::string file = QFile::encodeName(path).toStdString();
    auto input = openImage(file, false);
    if (!hasPages(*input) || !input->seek_subimage(page, 0)) fail("no page " + std::to_string(page + 1));
    std::error_code ec;
    checkClaimedSize(input->spec(), std::filesystem::file_size(file, ec));
    return {readPixels(*input, allocate), false};
}

} // namespace

// A damaged header can claim an image no file of its length holds, and the
// reader would allocate for it before finding out. The best compression of
// still-image formats stays near 1000:1; past a floor that any ordinary image
// fits in, more than 4096 decoded bytes per stored byte is refused up front.
void checkPlausibleSize(double claimedBytes, double fileBytes)
{
    if (!(claimedBytes <= 64.0 * 1024 * 1024 + 4096.0 * fileBytes))
        fail("the header claims a larger image than the file can hold");
}

DecodedImage decodeStillImage(const QString& path, const PixelAllocator& allocate)
{
    return decodeStillImagePage(path, 0, allocate);
}

int stillImagePageCount(const QString& path)
{
    const std::string file = QFile::encodeName(path).toStdString();
    std::error_code ec;
    if (!std::filesystem::is_regular_file(file, ec)) return 1;
    auto input = OIIO::ImageInput::open(file);
    if (!input || !hasPages(*input)) return 1;
    int pages = 1;
    while (input->seek_subimage(pages, 0)) ++pages;
    return pages;
}

DecodedImage decodeStillImagePage(const QString& path, int page, const PixelAllocator& allocate,
                                  TiffPages* openPages)
{
    applyDecoderLimits();
    try {
        return page == 0 ? decodeStoredImage(path, allocate) : decodeLaterPage(path, page, allocate, openPages);
    } catch (const std::runtime_error&) {
        throw;
    } catch (const std::exception& e) {
        // OpenImageIO's readers let other errors out of damaged files too
        // (std::length_error from the GIF reader, for one): all mean the same.
        fail(std::string("unreadable image: ") + e.what());
    }
}

} // namespace torvex
