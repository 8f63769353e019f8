#pragma once

#include <QString>

#include <tiffio.h>

#include <memory>
#include <string>

namespace torvex {

// A TIFF file opened for reading by libtiff with handlers of its own: its
// first error is kept for the exception it becomes, warnings are dropped, and
// nothing is printed or set in the library's global handlers, which the
// general decoder uses for the same library.
class TiffFile {
public:
    // Throws std::runtime_error when the file does not open as a TIFF.
    explicit TiffFile(const QString& path);

    TIFF* get() const { return tiff_.get(); }
    // Throws the file's first error, or `fallback` when libtiff gave none.
    [[noreturn]] void fail(const char* fallback) const;

private:
    struct Close {
        void operator()(TIFF* tiff) const { TIFFClose(tiff); }
    };
    // On the heap: libtiff keeps its address.
    std::unique_ptr<std::string> firstError_ = std::make_unique<std::string>();
    std::unique_ptr<TIFF, Close> tiff_;
};

} // namespace torvex
