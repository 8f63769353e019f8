#include "RawFile.h"

#include "toolboxes/importData/volume/FileNameText.h"
#include "toolboxes/importData/volume/MapFaultGuard.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <vector>

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

struct LiveMap {
    const char* begin;
    const char* end;
    std::weak_ptr<const MappedFile> file;
};

std::mutex registryMutex;
std::vector<LiveMap> registry;

} // namespace

MappedFile::MappedFile(QString path, int fd, const char* data, int64_t size)
    : path_(std::move(path)), fd_(fd), data_(data), size_(size),
      guardSlot_(data ? MapFaultGuard::watch(data, static_cast<size_t>(size)) : -1)
{
}

MappedFile::~MappedFile()
{
    if (data_) {
        const std::lock_guard lock(registryMutex);
        std::erase_if(registry, [this](const LiveMap& map) { return map.begin == data_; });
    }
    MapFaultGuard::unwatch(guardSlot_);
    if (data_) ::munmap(const_cast<char*>(data_), static_cast<size_t>(size_));
    ::close(fd_);
}

std::shared_ptr<const MappedFile> MappedFile::open(const QString& path)
{
    const QByteArray native = QFile::encodeName(path);
    // Without blocking: a FIFO that nobody writes would hold the window for ever
    // at the open. It is then turned away as no regular file.
    const int fd = ::open(native.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        const QString why = unreachableNameReason(path);
        failWith(path, why.isEmpty() ? std::strerror(errno) : why.toStdString());
    }
    auto refuse = [&](const std::string& reason) {
        ::close(fd);
        failWith(path, reason);
    };
    struct stat info {};
    if (::fstat(fd, &info) != 0) refuse(std::strerror(errno));
    if (S_ISDIR(info.st_mode)) refuse("Is a directory");
    if (!S_ISREG(info.st_mode)) refuse("Not a regular file");
    if (info.st_size == 0) return std::shared_ptr<const MappedFile>(new MappedFile(path, fd, nullptr, 0));

    void* data = ::mmap(nullptr, static_cast<size_t>(info.st_size), PROT_READ, MAP_SHARED, fd, 0);
    if (data == MAP_FAILED)
        refuse(std::string("Cannot map the file into memory (") + std::strerror(errno) + ", " +
               std::to_string(info.st_size) + " bytes)");
    std::shared_ptr<const MappedFile> file(new MappedFile(path, fd, static_cast<const char*>(data), info.st_size));
    const std::lock_guard lock(registryMutex);
    registry.push_back({file->data_, file->data_ + file->size_, file});
    return file;
}

QByteArray MappedFile::bytes() const
{
    return data_ ? QByteArray::fromRawData(data_, static_cast<qsizetype>(size_)) : QByteArray();
}

bool MappedFile::changedOnDisk() const
{
    struct stat info {};
    return MapFaultGuard::faulted(guardSlot_) || (::fstat(fd_, &info) == 0 && info.st_size < size_);
}

QString MappedFile::changedMessage() const
{
    return "The file changed on disk while open (it is shorter now; the cut part reads as zeros): " + path_;
}

std::shared_ptr<const void> MappedFile::ownerOf(const void* address)
{
    const auto* p = static_cast<const char*>(address);
    const std::lock_guard lock(registryMutex);
    for (const LiveMap& map : registry)
        if (p >= map.begin && p < map.end) return map.file.lock();
    return nullptr;
}

} // namespace torvex
