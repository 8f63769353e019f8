#include "GifIndices.h"

#include "StillImageDecoder.h"

#include <QFile>

#include <gif_lib.h>

#include <memory>
#include <stdexcept>
#include <vector>

namespace torvex {

namespace {

[[noreturn]] void fail(const std::string& text) { throw std::runtime_error("GIF: " + text); }

[[noreturn]] void fail(int error)
{
    const char* text = GifErrorString(error);
    fail(text ? text : "unreadable file");
}

struct CloseGif {
    void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
};
using GifFile = std::unique_ptr<GifFileType, CloseGif>;

void check(GifFileType* gif, int result)
{
    if (result == GIF_ERROR) fail(gif->Error);
}

QList<QRgb> colourTable(const ColorMapObject* map)
{
    QList<QRgb> table;
    if (!map) return table;
    for (int i = 0; i < map->ColorCount; ++i)
        table.append(qRgb(map->Colors[i].Red, map->Colors[i].Green, map->Colors[i].Blue));
    return table;
}

// The order in which an interlaced image stores its rows.
std::vector<int> rowOrder(int height, bool interlaced)
{
    std::vector<int> rows;
    if (!interlaced) {
        for (int y = 0; y < height; ++y) rows.push_back(y);
        return rows;
    }
    for (const auto [start, step] : {std::pair{0, 8}, {4, 8}, {2, 4}, {1, 2}})
        for (int y = start; y < height; y += step) rows.push_back(y);
    return rows;
}

} // namespace

IndexedImage readGifIndices(const QString& path)
{
    int error = 0;
    // Reads the header and the screen descriptor.
    GifFile gif(DGifOpenFileName(QFile::encodeName(path).constData(), &error));
    if (!gif) fail(error);
    const int screenWidth = gif->SWidth, screenHeight = gif->SHeight;
    int transparent = -1;
    for (;;) {
        GifRecordType record;
        check(gif.get(), DGifGetRecordType(gif.get(), &record));
        if (record == TERMINATE_RECORD_TYPE) fail("file holds no image");
        if (record == EXTENSION_RECORD_TYPE) {
            int label = 0;
            GifByteType* block = nullptr;
            check(gif.get(), DGifGetExtension(gif.get(), &label, &block));
            GraphicsControlBlock control;
            if (label == GRAPHICS_EXT_FUNC_CODE && block
                && DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK)
                transparent = control.TransparentColor;
            while (block) check(gif.get(), DGifGetExtensionNext(gif.get(), &block));
            continue;
        }
        if (record != IMAGE_DESC_RECORD_TYPE) fail("unknown block");
        check(gif.get(), DGifGetImageDesc(gif.get()));
        const GifImageDesc& image = gif->Image;
        if (screenWidth <= 0 || screenHeight <= 0) fail("empty screen");
        if (int64_t(screenWidth) * screenHeight > int64_t(kMaxDecodedImageMegabytes) << 20) fail("image is too large");

        NdArray indices = NdArray::empty({screenHeight, screenWidth}, DType::UInt8);
        std::byte* canvas = indices.mutableData();
        std::fill_n(canvas, indices.size(), std::byte(transparent < 0 ? 0 : transparent));
        // Every row is decoded, also those off the screen: the data must be whole.
        std::vector<GifPixelType> line(std::max(image.Width, 1));
        const std::vector<int> rows = rowOrder(image.Height, image.Interlace);
        for (int r = 0; r < image.Height && image.Width > 0; ++r) {
            check(gif.get(), DGifGetLine(gif.get(), line.data(), image.Width));
            const int y = image.Top + rows[r];
            if (y >= screenHeight) continue;
            for (int x = 0; x < image.Width && image.Left + x < screenWidth; ++x)
                canvas[int64_t(y) * screenWidth + image.Left + x] = std::byte(line[x]);
        }
        return {indices, colourTable(image.ColorMap ? image.ColorMap : gif->SColorMap)};
    }
}

} // namespace torvex
