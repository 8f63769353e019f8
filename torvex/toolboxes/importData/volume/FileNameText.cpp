#include "FileNameText.h"

#include <QFile>
#include <QFileInfo>

#include <dirent.h>

#include <memory>

namespace torvex {

namespace {
constexpr char16_t kReplacement = u'\uFFFD';
}

QString printablePath(const QString& path)
{
    QString text;
    text.reserve(path.size());
    for (const QChar c : path) {
        const char16_t u = c.unicode();
        if (u == u'\n') text += "\\n";
        else if (u == u'\t') text += "\\t";
        else if (u == u'\r') text += "\\r";
        else if (u < 0x20 || (u >= 0x7f && u < 0xa0)) text += QString("\\x%1").arg(u, 2, 16, QChar('0'));
        else if (u == kReplacement) text += "\\ufffd";
        else text += c;
    }
    return text;
}

QString unreachableNameReason(const QString& path)
{
    if (!path.contains(QChar(kReplacement)) || QFileInfo::exists(path)) return {};
    return "its name is not valid UTF-8, the encoding this system reads file names in, so it cannot be "
           "opened here: rename it (convmv renames many files at once)";
}

QStringList unreachableNames(const QString& folder)
{
    QStringList names;
    const std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir(QFile::encodeName(folder).constData()), ::closedir);
    if (!dir) return names;
    while (const dirent* entry = ::readdir(dir.get())) {
        const QByteArray raw(entry->d_name);
        if (QFile::encodeName(QFile::decodeName(raw)) == raw) continue;
        QString text;
        for (const char c : raw) {
            const auto byte = static_cast<unsigned char>(c);
            text += byte < 0x80 ? QString(QChar(byte)) : QString("\\x%1").arg(byte, 2, 16, QChar('0'));
        }
        names << printablePath(text);
    }
    names.sort();
    return names;
}

} // namespace torvex
