#pragma once

#include "StillImageDecoder.h"

#include <mutex>
#include <optional>
#include <thread>
#include <unordered_map>

namespace torvex {

class TiffFile;

// Reads pages of multi-page TIFF files straight into the caller's memory,
// keeping the last file each thread read open, so that a thread going through
// a file's pages in order neither reopens it nor reads the pages before them
// again. Opening the file per page made a 200-page TIFF load at 0.9 times the
// rate of a bare one-thread OpenImageIO loop over its pages; kept open, 1.8
// times with the machine's second core busy and 2.2 to 3.2 times with it free
// (bench_loader).
// Shared by the threads of one load; the files close with it.
class TiffPages {
public:
    TiffPages();
    ~TiffPages();
    TiffPages(const TiffPages&) = delete;
    TiffPages& operator=(const TiffPages&) = delete;

    // Page `page` (from 0) of `path` in its stored type, as the general
    // decoder reads it. None for a page the general decoder must read: tiled,
    // in separate planes, with extra samples, other than gray or RGB samples
    // of 8 bits unsigned or 16 and 32 bits. Throws std::runtime_error for a
    // page that does not decode.
    std::optional<NdArray> read(const QString& path, int page, const PixelAllocator& allocate);

private:
    struct OpenFile {
        QString path;
        std::unique_ptr<TiffFile> file;
    };
    // The open file of the calling thread.
    OpenFile& ownFile();

    std::mutex mutex_;
    // Each entry is used by its own thread only; the lock guards the map.
    std::unordered_map<std::thread::id, OpenFile> files_;
};

} // namespace torvex
