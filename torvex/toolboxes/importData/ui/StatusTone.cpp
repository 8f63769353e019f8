#include "toolboxes/importData/ui/StatusTone.h"

namespace torvex {

QString statusStyleSheet(StatusTone tone)
{
    const char* background = "#37556f"; // slate: news that is neither good nor bad
    switch (tone) {
    case StatusTone::Success: background = "#16825d"; break;
    case StatusTone::Warning: background = "#a85d00"; break;
    case StatusTone::Error: background = "#c42b1c"; break;
    case StatusTone::Info: break;
    }
    return QStringLiteral("background-color: %1;color: #ffffff;font-size: 9pt;").arg(background);
}

} // namespace torvex
