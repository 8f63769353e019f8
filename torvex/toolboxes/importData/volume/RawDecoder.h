#pragma once

#include "ImageTypes.h"
#include "NdArray.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace torvex {

// How the user says a headerless file is laid out.
struct RawDecodeParams {
    int64_t offset = 0;      // bytes before the first frame
    int64_t gap = 0;         // bytes between the end of one frame and the next
    int64_t width = 0;
    int64_t height = 0;
    int64_t frame = 0;       // number of frames
    bool littleEndian = false;
    QString readOrder = "F"; // "F": the file runs down the columns; "C": along the rows
    QString colorOrder = "AABBCC"; // "ABCABC" interleaved, anything else planar
};

// Decodes `bytes` as a stack of shape (frame, height, width, channels). Gray
// types and every colour layout whose channels sit at evenly spaced byte
// positions come back as read-only views on `bytes`; the rest are new arrays.
// Returns none for an unknown type name; throws std::runtime_error with the
// reason when the bytes do not fit the parameters.
std::optional<NdArray> decodeRawVolume(const QByteArray& bytes, const QString& imgType, const RawDecodeParams& p);

NdArray decodeGray(const QByteArray& bytes, const RawDecodeParams& p, DType dtype, int bytesPerPixel);
NdArray decodeColor(const QByteArray& bytes, const RawDecodeParams& p, const QString& colorType, int bytesPerPixel);
NdArray decodeBitmap(const QByteArray& bytes, const RawDecodeParams& p);

} // namespace torvex
