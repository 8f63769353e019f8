#include "IndexedImage.h"

#include "StillImageDecoder.h"

#include <QImage>
#include <QImageReader>

#include <algorithm>
#include <stdexcept>

namespace torvex {

IndexedImage readIndexedImage(const QString& path)
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

} // namespace torvex
