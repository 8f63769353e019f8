#include "RawFile.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <new>
#include <stdexcept>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace torvex {

namespace {

[[noreturn]] void failWith(const QString& path, const std::string& reason)
{
    throw std::runtime_error(reason + ": '" + path.toStdString() + "'");
}

// Large file buffers fill much faster in 2 MiB pages: far fewer page faults.
void adviseHugePages(char* data, qsizetype size)
{
    constexpr uintptr_t huge = 2u << 20;
    const uintptr_t begin = (reinterpret_cast<uintptr_t>(data) + huge - 1) & ~(huge - 1);
    const uintptr_t end = (reinterpret_cast<uintptr_t>(data) + static_cast<uintptr_t>(size)) & ~(huge - 1);
    if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

struct FileDescriptor {
    int fd;
    ~FileDescriptor()
    {
        if (fd >= 0) ::close(fd);
    }
};

} // namespace

QByteArray readWholeFile(const QString& path)
{
    const QByteArray native = QFile::encodeName(path);
    // Without blocking: a FIFO that nobody writes would hold the window for ever
    // at the open. It is then turned away as no regular file.
    const FileDescriptor file{::open(native.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
    if (file.fd < 0) failWith(path, std::strerror(errno));
    struct stat info {};
    if (::fstat(file.fd, &info) != 0) failWith(path, std::strerror(errno));
    if (S_ISDIR(info.st_mode)) failWith(path, "Is a directory");
    if (!S_ISREG(info.st_mode)) failWith(path, "Not a regular file");

    QByteArray buffer;
    try {
        buffer = QByteArray(static_cast<qsizetype>(info.st_size), Qt::Uninitialized);
    } catch (const std::bad_alloc&) {
        failWith(path, "Not enough memory for " + std::to_string(info.st_size) + " bytes");
    }
    adviseHugePages(buffer.data(), buffer.size());

    qsizetype done = 0;
    while (done < buffer.size()) {
        // read() moves at most about 2 GiB per call.
        const size_t chunk = static_cast<size_t>(std::min<qsizetype>(buffer.size() - done, qsizetype(1) << 30));
        const ssize_t got = ::read(file.fd, buffer.data() + done, chunk);
        if (got < 0) {
            if (errno == EINTR) continue;
            failWith(path, std::strerror(errno));
        }
        if (got == 0) break; // the file shrank while being read
        done += got;
    }
    buffer.truncate(done);
    return buffer;
}

} // namespace torvex
