#include "toolboxes/importData/ui/StatusTone.h"

#include <QStringList>

namespace torvex {

StatusTone statusToneOf(const QString& message)
{
    if (message.startsWith("Error")) return StatusTone::Error;
    // The byte balance: none left over is the one good outcome.
    if (message.startsWith("Remaining bytes"))
        return message.endsWith(": +0") ? StatusTone::Success : StatusTone::Warning;
    static const QStringList warnings = {"No binary data loaded", "Set width and height", "No valid files",
                                         "Missing ", "Numbered names out of order",
                                         "Cannot guess", "The file changed on disk"};
    for (const QString& start : warnings)
        if (message.startsWith(start)) return StatusTone::Warning;
    if (message.contains(" frames are placeholders for files")) return StatusTone::Warning;
    static const QStringList successes = {"loaded successfully", "image(s) loaded", "files found in the folder",
                                          "Guessed "};
    for (const QString& part : successes)
        if (message.contains(part)) return StatusTone::Success;
    return StatusTone::Neutral;
}

QString statusStyleSheet(StatusTone tone)
{
    const char* background = "#37556f"; // slate: news that is neither good nor bad
    switch (tone) {
    case StatusTone::Success: background = "#16825d"; break;
    case StatusTone::Warning: background = "#a85d00"; break;
    case StatusTone::Error: background = "#c42b1c"; break;
    case StatusTone::Neutral: break;
    }
    return QStringLiteral("background-color: %1;color: #ffffff;font-size: 9pt;").arg(background);
}

} // namespace torvex
