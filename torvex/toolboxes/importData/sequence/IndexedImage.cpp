#include "IndexedImage.h"

#include "StillImageDecoder.h"

#include <QFile>
#include <QImage>
#include <QImageReader>

#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <vector>

namespace torvex {

namespace {

// libpng reports errors by longjmp back to the frame that called setjmp. The
// functions that do so hold nothing with a destructor, which a jump would
// skip; the caller throws once they return false.
struct PngReader {
    png_structp png = nullptr;
    png_infop info = nullptr;
    char error[200] = "unreadable PNG file";

    ~PngReader() { png_destroy_read_struct(&png, &info, nullptr); }
};

void onPngError(png_structp png, png_const_charp message)
{
    auto* reader = static_cast<PngReader*>(png_get_error_ptr(png));
    std::snprintf(reader->error, sizeof reader->error, "%s", message);
    png_longjmp(png, 1);
}

void ignorePngWarning(png_structp, png_const_charp) {}

bool readPngHeader(PngReader& reader, FILE* file)
{
    if (setjmp(png_jmpbuf(reader.png))) return false;
    png_init_io(reader.png, file);
    png_read_info(reader.png, reader.info);
    if (png_get_color_type(reader.png, reader.info) != PNG_COLOR_TYPE_PALETTE) {
        std::snprintf(reader.error, sizeof reader.error, "image has no palette indices");
        return false;
    }
    // Before the reader allocates its rows.
    const uint64_t pixels =
        uint64_t(png_get_image_width(reader.png, reader.info)) * png_get_image_height(reader.png, reader.info);
    if (pixels > uint64_t(kMaxDecodedImageMegabytes) << 20) {
        std::snprintf(reader.error, sizeof reader.error, "image is too large");
        return false;
    }
    // One byte per index, whatever the stored depth; no expansion to colours.
    png_set_packing(reader.png);
    png_set_interlace_handling(reader.png);
    png_read_update_info(reader.png, reader.info);
    return true;
}

bool readPngRows(PngReader& reader, png_bytepp rows)
{
    if (setjmp(png_jmpbuf(reader.png))) return false;
    // Chunks after the image data are not read: the indices are complete.
    png_read_image(reader.png, rows);
    return true;
}

IndexedImage readPngIndices(const QString& path)
{
    const std::unique_ptr<FILE, decltype(&std::fclose)> file(std::fopen(QFile::encodeName(path).constData(), "rb"),
                                                             &std::fclose);
    if (!file) throw std::runtime_error("cannot open " + path.toStdString());
    PngReader reader;
    reader.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &reader, onPngError, ignorePngWarning);
    if (reader.png) reader.info = png_create_info_struct(reader.png);
    if (!reader.info) throw std::runtime_error("out of memory");
    // The size is checked against the limit of every decoder here instead.
    png_set_user_limits(reader.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    if (!readPngHeader(reader, file.get())) throw std::runtime_error(reader.error);

    const int64_t width = png_get_image_width(reader.png, reader.info);
    const int64_t height = png_get_image_height(reader.png, reader.info);
    NdArray indices = NdArray::empty({height, width}, DType::UInt8);
    std::vector<png_bytep> rows(static_cast<size_t>(height));
    for (int64_t y = 0; y < height; ++y) rows[y] = reinterpret_cast<png_bytep>(indices.mutableData()) + y * width;
    if (!readPngRows(reader, rows.data())) throw std::runtime_error(reader.error);

    QList<QRgb> table;
    png_colorp palette = nullptr;
    int colours = 0;
    if (png_get_PLTE(reader.png, reader.info, &palette, &colours) & PNG_INFO_PLTE)
        for (int i = 0; i < colours; ++i) table.append(qRgb(palette[i].red, palette[i].green, palette[i].blue));
    return {indices, table};
}

IndexedImage readOtherIndices(const QString& path)
{
    QImageReader reader(path);
    reader.setAutoTransform(false);
    reader.setAllocationLimit(kMaxDecodedImageMegabytes);
    QImage image = reader.read();
    if (image.isNull()) throw std::runtime_error(reader.errorString().toStdString());
    // 1-bit files come as Mono; the conversion keeps their two indices and table.
    if (image.format() == QImage::Format_Mono || image.format() == QImage::Format_MonoLSB)
        image = image.convertToFormat(QImage::Format_Indexed8);
    if (image.format() != QImage::Format_Indexed8) throw std::runtime_error("image has no palette indices");

    const int height = image.height(), width = image.width();
    NdArray indices = NdArray::empty({height, width}, DType::UInt8);
    std::byte* out = indices.mutableData();
    for (int y = 0; y < height; ++y)
        std::copy_n(reinterpret_cast<const std::byte*>(image.constScanLine(y)), width, out + int64_t(y) * width);
    return {indices, image.colorTable()};
}

bool isPng(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return false;
    const QByteArray signature = file.read(8);
    return signature.size() == 8 && png_sig_cmp(reinterpret_cast<png_const_bytep>(signature.constData()), 0, 8) == 0;
}

} // namespace

IndexedImage readIndexedImage(const QString& path)
{
    return isPng(path) ? readPngIndices(path) : readOtherIndices(path);
}

} // namespace torvex
