#pragma once

#include "toolboxes/importData/entries/VolumeParams.h"

#include <QString>

namespace torvex {

// The panel settings that the generated load_data text repeats. Field names
// follow the generated Python's keyword names; the layout's defaults are the
// generator's own, except the type and the size, which it takes as given.
struct LoadFunctionParams {
    QString imgType = "";
    int offset = 0;
    int gap = 0;
    int width = 0;
    int height = 0;
    int frame = 0;
    bool littleEndian = false;
    QString readOrder = RawLayout().readOrder;
    QString colorOrder = RawLayout().colorOrder;
    QString permute = AxisTransfer().permute;
    bool hflip = false;
    bool vflip = false;
    QString data_format = "DHWC";
    bool keep_c_on_gray = false;
    bool bigEndian = false; // beside the generator's fourteen: explicitly big-endian gray values

    // The panel's settings with the import's axis order.
    static LoadFunctionParams from(const VolumeParams& panel, const QString& data_format, bool keep_c_on_gray);
    // The byte order these settings read in: big-endian wins over little.
    ByteOrder byteOrder() const;
    AxisTransfer transfer() const { return {.permute = permute, .hflip = hflip, .vflip = vflip}; }
};

} // namespace torvex
