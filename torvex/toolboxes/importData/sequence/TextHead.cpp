#include "TextHead.h"

#include <QFile>

namespace torvex {

namespace {

// Decodes one code point at bytes[i], advancing i; -1 for an invalid or cut-off sequence.
char32_t decodeUtf8(const QByteArray& bytes, qsizetype& i)
{
    const auto byteAt = [&](qsizetype k) { return static_cast<unsigned char>(bytes[k]); };
    const unsigned char lead = byteAt(i);
    if (lead < 0x80) {
        ++i;
        return lead;
    }
    // Length, payload bits of the lead byte, and the allowed range of the second
    // byte, which excludes overlong forms, surrogates and code points past U+10FFFF.
    int length;
    char32_t cp;
    unsigned char low = 0x80, high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        cp = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        cp = lead & 0x0F;
        if (lead == 0xE0) low = 0xA0;
        if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        cp = lead & 0x07;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;
    } else {
        return char32_t(-1);
    }
    if (i + length > bytes.size()) return char32_t(-1);
    for (int k = 1; k < length; ++k) {
        const unsigned char b = byteAt(i + k);
        if (b < (k == 1 ? low : 0x80) || b > (k == 1 ? high : 0xBF)) return char32_t(-1);
        cp = (cp << 6) | (b & 0x3F);
    }
    i += length;
    return cp;
}

bool isLineBoundary(char32_t c)
{
    switch (c) {
    case U'\n': case U'\r': case U'\v': case U'\f': case 0x1C: case 0x1D: case 0x1E:
    case 0x85: case 0x2028: case 0x2029: return true;
    default: return false;
    }
}

} // namespace

std::optional<std::u32string> readTextHead(const QString& path, int maxChars)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    // Four bytes hold any character; one more shows whether a last CR has its LF.
    const QByteArray bytes = file.read(qint64(maxChars) * 4 + 1);
    if (file.error() != QFileDevice::NoError) return std::nullopt;

    std::u32string text;
    qsizetype i = 0;
    while (static_cast<int>(text.size()) < maxChars && i < bytes.size()) {
        const char32_t c = decodeUtf8(bytes, i);
        if (c == char32_t(-1)) return std::nullopt;
        if (c == U'\r') {
            if (i < bytes.size() && bytes[i] == '\n') ++i;
            text += U'\n';
        } else text += c;
    }
    return text;
}

std::vector<std::u32string> splitTextLines(const std::u32string& text)
{
    std::vector<std::u32string> lines;
    size_t start = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (!isLineBoundary(text[i])) continue;
        lines.push_back(text.substr(start, i - start));
        if (text[i] == U'\r' && i + 1 < text.size() && text[i + 1] == U'\n') ++i;
        start = i + 1;
    }
    if (start < text.size()) lines.push_back(text.substr(start));
    return lines;
}

} // namespace torvex
