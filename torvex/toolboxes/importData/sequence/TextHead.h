#pragma once

#include <QString>

#include <optional>
#include <string>
#include <vector>

namespace torvex {

// The first `maxChars` characters (code points) of a file read as strict
// UTF-8 text, with CR LF and a lone CR read as LF. None when the bytes that
// make up those characters are not valid UTF-8 (a surrogate, an overlong
// form, a character cut off by the end of the file) or the file can't be read.
std::optional<std::u32string> readTextHead(const QString& path, int maxChars);

// Lines split at LF, CR, CR LF, VT, FF, FS, GS, RS, NEL, LS and PS, with no
// empty line after a final line end.
std::vector<std::u32string> splitTextLines(const std::u32string& text);

} // namespace torvex
