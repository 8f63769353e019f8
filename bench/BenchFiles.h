// What several benchmarks make and read: a raw 16-bit volume on disk and the
// process's memory figures.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace torvex::bench {

// `frames` frames of width x height native 16-bit values that differ from
// frame to frame.
inline void writeUInt16Volume(const QString& path, int64_t width, int64_t height, int64_t frames)
{
    std::vector<uint16_t> frame(static_cast<size_t>(width * height));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) std::abort();
    for (int64_t f = 0; f < frames; ++f) {
        for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint16_t>(i * 7 + f * 131);
        file.write(reinterpret_cast<const char*>(frame.data()), static_cast<qint64>(frame.size() * 2));
    }
}

// A field of /proc/self/status ("VmHWM", "VmRSS", "RssAnon"), in bytes; -1 if absent.
inline int64_t statusBytes(const QByteArray& field)
{
    QFile status("/proc/self/status");
    if (!status.open(QIODevice::ReadOnly)) return -1;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(field + ":")) return line.mid(field.size() + 1).trimmed().split(' ').first().toLongLong() * 1024;
    return -1;
}

} // namespace torvex::bench
