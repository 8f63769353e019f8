// The loader's path for one file, on arbitrary file contents: decode with
// OpenImageIO, stretch to 8 bits, bring to three channels and centre on a
// larger canvas; or, when the file is no image, draw its placeholder frame.
#include "toolboxes/importData/sequence/FrameShape.h"
#include "toolboxes/importData/sequence/Normalise8Bit.h"
#include "toolboxes/importData/sequence/PlaceholderFrame.h"
#include "toolboxes/importData/sequence/StillImageDecoder.h"

#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <stdexcept>

#include "FuzzCheck.h"

using namespace torvex;

namespace {

QTemporaryDir* folder;

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // Placeholder text is drawn only with a GUI application.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    new QGuiApplication(*argc, *argv);
    folder = new QTemporaryDir;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0) return 0;
    // The first byte picks the name the file goes by, which steers which
    // reader OpenImageIO tries first.
    static const char* const extensions[] = {".png", ".jpg", ".tif", ".gif", ".bmp", ".pgm",
                                             ".tga", ".webp", ".txt", ".raw", ""};
    const QString path = folder->path() + "/file" + extensions[data[0] % std::size(extensions)];
    {
        QFile file(path);
        FUZZ_CHECK(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(reinterpret_cast<const char*>(data + 1), static_cast<qint64>(size - 1));
    }

    try {
        const DecodedImage decoded = decodeStillImage(path);
        const NdArray image = normaliseToUInt8(decoded);
        FUZZ_CHECK(image.dtype() == DType::UInt8);
        FUZZ_CHECK(image.extent(0) == decoded.pixels.extent(0) && image.extent(1) == decoded.pixels.extent(1));
        const NdArray rgb = unifyChannels(image, 3);
        FUZZ_CHECK(rgb.shape() == (Shape{image.extent(0), image.extent(1), 3}));
        const NdArray padded = padToCentre(rgb, image.extent(0) + 3, image.extent(1) + 2);
        FUZZ_CHECK(padded.extent(0) == image.extent(0) + 3);
    } catch (const std::runtime_error&) {
        const NdArray frame = renderPlaceholderFrame(path, 96, 64, 3);
        FUZZ_CHECK(frame.shape() == (Shape{64, 96, 3}));
    }
    return 0;
}
