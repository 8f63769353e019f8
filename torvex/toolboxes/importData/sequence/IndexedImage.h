#pragma once

#include "toolboxes/importData/volume/NdArray.h"

#include <QList>
#include <QRgb>
#include <QString>

namespace torvex {

// A palette image as stored: one index per pixel and the table they point into.
struct IndexedImage {
    NdArray indices; // (H, W) uint8
    QList<QRgb> colourTable;
};

// Reads the palette indices of a PNG or BMP file, which the general decoder
// would expand to colours. Throws std::runtime_error when the file cannot be
// read or does not decode to indices.
IndexedImage readIndexedImage(const QString& path);

} // namespace torvex
