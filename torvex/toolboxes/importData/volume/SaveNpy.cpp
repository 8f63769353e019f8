#include "NdArray.h"

#include "toolboxes/importData/volume/FileSaving.h"

#include <QIODevice>

#include <algorithm>

namespace torvex {

namespace {

std::string npyDescr(DType dtype)
{
    switch (dtype) {
    case DType::UInt8: return "|u1";
    case DType::Int16: return "<i2";
    case DType::UInt16: return "<u2";
    case DType::Int32: return "<i4";
    case DType::UInt32: return "<u4";
    case DType::Float16: return "<f2";
    case DType::Float32: return "<f4";
    case DType::Float64: break;
    }
    return "<f8";
}

// Python's text of a tuple of ints: "(3, 4)", "(3,)", "()".
std::string npyShape(const Shape& shape)
{
    std::string out = "(";
    for (size_t i = 0; i < shape.size(); ++i) out += (i ? ", " : "") + std::to_string(shape[i]);
    return out + (shape.size() == 1 ? ",)" : ")");
}

} // namespace

void saveNpy(const NdArray& array, const QString& path, const Progress& progress)
{
    static_assert(std::endian::native == std::endian::little, "the .npy writer stores host-order bytes as little-endian");
    std::string header = "{'descr': '" + npyDescr(array.dtype()) + "', 'fortran_order': False, 'shape': " +
                         npyShape(array.shape()) + ", }";
    // Magic, version and length take 10 bytes; the header ends in a line feed
    // and is padded so the data starts on a 64-byte boundary.
    const size_t total = (10 + header.size() + 1 + 63) / 64 * 64;
    header += std::string(total - 10 - header.size() - 1, ' ') + "\n";
    const auto headerLength = static_cast<uint16_t>(header.size());

    const char magic[8] = {'\x93', 'N', 'U', 'M', 'P', 'Y', 1, 0};
    const char length[2] = {static_cast<char>(headerLength & 0xff), static_cast<char>(headerLength >> 8)};
    try {
        saveFile(path, [&](QIODevice& file) {
            file.write(magic, 8);
            file.write(length, 2);
            file.write(header.data(), static_cast<qint64>(header.size()));
            // Write frame by frame so that a view never needs a second full-size copy.
            auto writeBlock = [&](const NdArray& block) {
                const NdArray contiguous =
                    block.is_contiguous() && block.byteOrder() == ByteOrder::Native ? block : block.copy();
                file.write(reinterpret_cast<const char*>(contiguous.data()), contiguous.nbytes());
            };
            if (array.ndim() == 0 || array.extent(0) == 0) {
                writeBlock(array);
                return;
            }
            const int64_t frames = array.extent(0), chunk = framesPerChunk(array);
            reportProgress(progress, 0, frames);
            for (int64_t first = 0; first < frames; first += chunk) {
                const int64_t last = std::min(frames, first + chunk);
                if (array.is_contiguous()) writeBlock(array.slice(0, first, last));
                else
                    for (int64_t i = first; i < last; ++i) writeBlock(array.index(i));
                reportProgress(progress, last, frames);
            }
        });
    } catch (const Cancelled&) {
        throw;
    } catch (const std::runtime_error& e) {
        throw std::runtime_error("Cannot write " + path.toStdString() + ": " + e.what());
    }
}

} // namespace torvex
