#include "TiffFile.h"

#include "StillImageDecoder.h"

#include <QFile>

#include <cstdarg>
#include <cstdio>
#include <stdexcept>

namespace torvex {

namespace {

int keepError(TIFF*, void* user, const char* module, const char* format, va_list args)
{
    auto* first = static_cast<std::string*>(user);
    if (first->empty()) {
        char text[512];
        std::vsnprintf(text, sizeof text, format, args);
        *first = module ? std::string(module) + ": " + text : text;
    }
    return 1; // handled: the library's global handler stays quiet
}

int ignoreWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

} // namespace

TiffFile::TiffFile(const QString& path)
{
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                  &TIFFOpenOptionsFree);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keepError, firstError_.get());
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), ignoreWarning, nullptr);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), tmsize_t(kMaxDecodedImageMegabytes) << 20);
    // "m": no memory mapping, so a file that shrinks under us is a read error, not a crash.
    tiff_.reset(TIFFOpenExt(QFile::encodeName(path).constData(), "rm", options.get()));
    if (!tiff_) fail("cannot open file");
}

void TiffFile::fail(const char* fallback) const
{
    throw std::runtime_error("TIFF: " + (firstError_->empty() ? std::string(fallback) : *firstError_));
}

} // namespace torvex
