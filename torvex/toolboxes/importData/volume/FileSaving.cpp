#include "toolboxes/importData/volume/FileSaving.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace torvex {

namespace {

[[noreturn]] void fail(const QString& reason) { throw std::runtime_error(reason.toStdString()); }

// The bytes are written and reach the system: a buffered write that fails only
// on its flush (a full disk) counts as failed too.
void writeAndFlush(QFileDevice& file, const std::function<void(QIODevice&)>& write)
{
    write(file);
    if (file.error() != QFileDevice::NoError || !file.flush()) fail(file.errorString());
}

void writeInPlace(const QString& path, const std::function<void(QIODevice&)>& write)
{
    // Opened without blocking, so that a FIFO that nobody reads fails at once
    // instead of holding the window for ever; the writes then block as usual.
    const int fd = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) fail(QString::fromLocal8Bit(std::strerror(errno)));
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags >= 0) ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
    QFile file;
    if (!file.open(fd, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        fail(file.errorString());
    }
    writeAndFlush(file, write);
}

} // namespace

void saveFile(const QString& path, const std::function<void(QIODevice&)>& write)
{
    const QFileInfo target(path);
    if (target.exists() && !target.isFile()) {
        writeInPlace(path, write);
        return;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) fail(file.errorString());
    writeAndFlush(file, write);
    if (!file.commit()) fail(file.errorString());
}

} // namespace torvex
