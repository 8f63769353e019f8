#pragma once

#include "VolumeParams.h"
#include "toolboxes/importData/volume/NdArray.h"
#include "toolboxes/importData/volume/RawFile.h"

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace torvex {

// One loaded data set, held by value on an item of the entry list. Arrays and
// file bytes are shared with the window (copying the record copies no pixel);
// the two lists are the entry's own.
struct DataEntry {
    QString mode;                                 // "Volume Data" or "Image Sequence"
    std::optional<NdArray> data;                  // what is previewed and imported
    std::optional<QStringList> file_list;         // the filtered image files
    std::optional<QList<int>> checked_indexes;    // the checked image rows
    std::optional<NdArray> image_sequence;        // the whole image stack
    std::optional<QByteArray> readedBinary;       // the raw file's bytes
    std::shared_ptr<const MappedFile> mappedFile; // ... which it points into, kept mapped
    std::optional<QString> file_path;             // the raw file
    std::optional<VolumeParams> params;           // the panel settings
};

} // namespace torvex

Q_DECLARE_METATYPE(torvex::DataEntry)
