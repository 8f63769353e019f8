#pragma once

#include <QString>

namespace torvex {

// How a message of the status strip is to be read: the strip takes a colour
// for each, so that an error never looks like a success.
enum class StatusTone { Info, Success, Warning, Error };

// The strip's style sheet in the colour of the tone, white text on it.
QString statusStyleSheet(StatusTone tone);

} // namespace torvex
