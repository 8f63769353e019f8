#pragma once

#include "ImageTypes.h"
#include "NdArray.h"
#include "RawLayout.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace torvex {


// Decodes `bytes` as a stack of shape (frame, height, width, channels). Gray
// types and every colour layout whose channels sit at evenly spaced byte
// positions come back as read-only views on `bytes`; the rest are new arrays.
// Returns none for an unknown type name; throws std::runtime_error with the
// reason when the bytes do not fit the layout. The new arrays are made in
// chunks of frames told to `progress` (see Progress).
std::optional<NdArray> decodeRawVolume(const QByteArray& bytes, const RawLayout& p, const Progress& progress = {});

NdArray decodeGray(const QByteArray& bytes, const RawLayout& p, DType dtype, int bytesPerPixel);
NdArray decodeColor(const QByteArray& bytes, const RawLayout& p, const QString& colorType, int bytesPerPixel,
                    const Progress& progress = {});
NdArray decodeBitmap(const QByteArray& bytes, const RawLayout& p, const Progress& progress = {});

} // namespace torvex
