#include "NameHints.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <array>
#include <limits>

namespace torvex {

namespace {

struct TypeWords {
    const char* imgType;
    std::array<const char*, 5> words; // unused slots empty
};

// Words that name a type on their own; "32bit" alone could be an integer or a float, so it names none.
const std::array<TypeWords, 8> kTypeWords{{
    {"8-bit", {"8bit", "u8", "uint8", "ubyte", "byte"}},
    {"16-bit Signed", {"i16", "s16", "int16", "short", ""}},
    {"16-bit Unsigned", {"16bit", "u16", "uint16", "ushort", ""}},
    {"32-bit Signed", {"i32", "s32", "int32", "int", ""}},
    {"32-bit Unsigned", {"u32", "uint32", "uint", "", ""}},
    {"16-bit Real", {"f16", "float16", "half", "", ""}},
    {"32-bit Real", {"f32", "float32", "float", "single", "real"}},
    {"64-bit Real", {"f64", "float64", "double", "", ""}},
}};

std::optional<QString> typeOfWord(const QString& word)
{
    for (const TypeWords& type : kTypeWords)
        for (const char* w : type.words)
            if (*w && word == QLatin1String(w)) return QString::fromLatin1(type.imgType);
    return std::nullopt;
}

std::optional<bool> orderOfWord(const QString& word)
{
    if (word == "le" || word == "little" || word == "littleendian" || word == "lsb") return true;
    if (word == "be" || word == "big" || word == "bigendian" || word == "msb") return false;
    return std::nullopt;
}

// A size the panel can hold; names with absurd numbers give no hint.
std::optional<int64_t> size(const QString& digits)
{
    bool ok = false;
    const qlonglong value = digits.toLongLong(&ok);
    if (!ok || value <= 0 || value > std::numeric_limits<int>::max()) return std::nullopt;
    return value;
}

} // namespace

NameHints readNameHints(const QString& fileName)
{
    NameHints hints;
    const QString name = QFileInfo(fileName).fileName().toLower();

    static const QRegularExpression dims(R"((?<!\d)(\d+)x(\d+)(?:x(\d+))?(?!\d))");
    if (const QRegularExpressionMatch m = dims.match(name); m.hasMatch()) {
        hints.width = size(m.captured(1));
        hints.height = size(m.captured(2));
        if (m.hasCaptured(3)) hints.frames = size(m.captured(3));
    }

    static const QRegularExpression separators("[^a-z0-9]+");
    static const QRegularExpression sizeWord(R"(^(w|width|h|height|d|z|frames|slices)(\d+)$)");
    static const QRegularExpression typeWithOrder(R"(^(.+?)(le|be)$)");
    for (const QString& word : name.split(separators, Qt::SkipEmptyParts)) {
        if (const QRegularExpressionMatch m = sizeWord.match(word); m.hasMatch()) {
            const QString key = m.captured(1);
            std::optional<int64_t>& target = key.startsWith('w')   ? hints.width
                                             : key.startsWith('h') ? hints.height
                                                                   : hints.frames;
            if (!target) target = size(m.captured(2));
        } else if (const std::optional<QString> type = typeOfWord(word)) {
            hints.imgType = type;
        } else if (const std::optional<bool> little = orderOfWord(word)) {
            hints.littleEndian = little;
        } else if (const QRegularExpressionMatch m = typeWithOrder.match(word); m.hasMatch()) {
            // "u16le", "float32be"
            if (const std::optional<QString> joined = typeOfWord(m.captured(1))) {
                hints.imgType = joined;
                hints.littleEndian = m.captured(2) == "le";
            }
        }
    }
    return hints;
}

} // namespace torvex
