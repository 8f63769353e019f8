#pragma once

#include <QString>

namespace torvex {

// What a message of the status strip tells, read from its text: the strip
// takes a colour for each, so that an error never looks like a success.
enum class StatusTone { Neutral, Success, Warning, Error };

StatusTone statusToneOf(const QString& message);
// The strip's style sheet in the colour of the tone, white text on it.
QString statusStyleSheet(StatusTone tone);

} // namespace torvex
