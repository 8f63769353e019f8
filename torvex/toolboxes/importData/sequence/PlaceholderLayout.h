#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <string>
#include <vector>

namespace torvex {

// What the placeholder frame of a file that is no image shows, apart from the
// drawing itself. Text is wrapped by counting characters of a monospace font.

struct PlaceholderGeometry {
    int maxCharsPerLine; // at least 1
    int maxLines;        // at least 1
};

// From the canvas size and the font's character width and line height, with a
// 4-pixel margin on each side.
PlaceholderGeometry placeholderGeometry(int64_t canvasWidth, int64_t canvasHeight, int charWidth, int lineHeight);

// Each line cut from the front into pieces of maxCharsPerLine characters; an
// empty line stays one empty piece.
QStringList wrapLines(const std::vector<std::u32string>& lines, int maxCharsPerLine);

// Rows of "oooo: xx xx ..." with (maxCharsPerLine - 6) / 3 bytes a row, at least 1.
QStringList hexDumpRows(const QByteArray& bytes, int maxCharsPerLine);

// The file's first 8192 characters as wrapped text lines when it is valid
// UTF-8, else a hexadecimal dump of its first 512 bytes, else "<unreadable>".
QStringList placeholderContentLines(const QString& path, int maxCharsPerLine);

// How many content lines fit below the header and separator, and whether "…"
// follows them in place of the rest.
struct ShownContent {
    int lineCount;
    bool ellipsis;
};
ShownContent shownContent(int contentLineCount, int maxLines);

} // namespace torvex
