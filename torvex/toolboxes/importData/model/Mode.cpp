#include "toolboxes/importData/model/Mode.h"

namespace torvex {

QString modeText(Mode mode) { return mode == Mode::VolumeData ? "Volume Data" : "Image Sequence"; }

std::optional<Mode> modeOfText(const QString& text)
{
    if (text == QLatin1String("Volume Data")) return Mode::VolumeData;
    if (text == QLatin1String("Image Sequence")) return Mode::ImageSequence;
    return std::nullopt;
}

} // namespace torvex
