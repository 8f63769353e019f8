#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>
#include <memory>

namespace torvex {

// A regular file's bytes, mapped read-only and shared rather than read: opening
// costs neither time nor memory in proportion to the file's size, and only the
// pages something looks at are ever read. The map lives as long as any holder
// of the shared pointer (arrays made over bytes() hold one, see ownerOf).
//
// A file that shrinks while mapped would kill the process with SIGBUS on the
// first touch of a cut page; MapFaultGuard turns that page into zeros instead
// and marks the map, so the tool can say the file changed rather than crash.
class MappedFile {
public:
    // Throws std::runtime_error with the reason: no such file, no regular file
    // (a FIFO, a device), or a map the system refuses (address-space limit).
    static std::shared_ptr<const MappedFile> open(const QString& path);
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    // The bytes, not copied and not owned: keep this object alive while they are used.
    QByteArray bytes() const;
    const QString& path() const { return path_; }
    int64_t size() const { return size_; }
    // Whether the file is now shorter than when it was mapped, or a cut page
    // was touched (and read as zeros).
    bool changedOnDisk() const;
    // "The file changed on disk while open: <path>", for the user.
    QString changedMessage() const;

    // The live map that holds `address`, or none: views over mapped bytes use
    // it as their owner, so they keep the map alive wherever they go.
    static std::shared_ptr<const void> ownerOf(const void* address);

private:
    MappedFile(QString path, int fd, const char* data, int64_t size);

    QString path_;
    int fd_ = -1;
    const char* data_ = nullptr;
    int64_t size_ = 0;
    int guardSlot_ = -1;
};

} // namespace torvex
