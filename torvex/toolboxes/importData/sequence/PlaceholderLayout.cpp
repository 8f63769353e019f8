#include "PlaceholderLayout.h"

#include "TextHead.h"

#include <QFile>

#include <algorithm>
#include <filesystem>

namespace torvex {

namespace {

constexpr int kMaxTextChars = 8192;
constexpr int kMaxDumpBytes = 512;

} // namespace

PlaceholderGeometry placeholderGeometry(int64_t canvasWidth, int64_t canvasHeight, int charWidth, int lineHeight)
{
    // A canvas narrower than its margins still gets one character and one line.
    const auto fit = [](int64_t space, int unit) {
        return static_cast<int>(std::clamp<int64_t>(space / std::max(unit, 1), 1, INT32_MAX));
    };
    return {fit(canvasWidth - 8, charWidth), fit(canvasHeight - 8, lineHeight)};
}

QStringList wrapLines(const std::vector<std::u32string>& lines, int maxCharsPerLine)
{
    QStringList pieces;
    for (const std::u32string& line : lines) {
        size_t start = 0;
        do {
            const std::u32string piece = line.substr(start, maxCharsPerLine);
            pieces.append(QString::fromUcs4(piece.data(), static_cast<qsizetype>(piece.size())));
            start += maxCharsPerLine;
        } while (start < line.size());
    }
    return pieces;
}

QStringList hexDumpRows(const QByteArray& bytes, int maxCharsPerLine)
{
    const int perRow = std::max((maxCharsPerLine - 6) / 3, 1);
    QStringList rows;
    for (qsizetype offset = 0; offset < bytes.size(); offset += perRow) {
        rows.append(QStringLiteral("%1: ").arg(offset, 4, 16, QLatin1Char('0'))
                    + QString::fromLatin1(bytes.mid(offset, perRow).toHex(' ')));
    }
    return rows;
}

QStringList placeholderContentLines(const QString& path, int maxCharsPerLine)
{
    // A pipe or device could block the reads below for ever.
    std::error_code ec;
    if (!std::filesystem::is_regular_file(QFile::encodeName(path).toStdString(), ec))
        return {QStringLiteral("<unreadable>")};
    if (const auto text = readTextHead(path, kMaxTextChars)) return wrapLines(splitTextLines(*text), maxCharsPerLine);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {QStringLiteral("<unreadable>")};
    const QByteArray head = file.read(kMaxDumpBytes);
    if (file.error() != QFileDevice::NoError) return {QStringLiteral("<unreadable>")};
    return hexDumpRows(head, maxCharsPerLine);
}

ShownContent shownContent(int contentLineCount, int maxLines)
{
    const int room = std::max(maxLines - 2, 0);
    return {std::min(contentLineCount, room), contentLineCount > room};
}

} // namespace torvex
