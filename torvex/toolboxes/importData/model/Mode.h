#pragma once

#include <QString>

#include <optional>

namespace torvex {

// What the tool reads: a raw file, or a list of still images.
enum class Mode { VolumeData, ImageSequence };

// The text the window shows for a mode: "Volume Data", "Image Sequence".
QString modeText(Mode mode);
// The mode of such a text; none for any other text.
std::optional<Mode> modeOfText(const QString& text);

} // namespace torvex
