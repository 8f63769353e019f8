// The generated Python texts and the filter rules, with arbitrary filter
// texts, folder and file names and parameter values. Whatever goes in, the
// texts must carry it only inside escaped literals or comments, so that the
// generated code stays valid Python.
#include "toolboxes/importData/loadfunction/ImageSequenceLoadFunction.h"
#include "toolboxes/importData/loadfunction/PythonText.h"
#include "toolboxes/importData/loadfunction/VolumeLoadFunction.h"
#include "toolboxes/importData/sequence/FileFilter.h"
#include "toolboxes/importData/volume/ImageTypes.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <stdexcept>

#include "FuzzCheck.h"

using namespace torvex;

namespace {

QString text(FuzzedDataProvider& in, size_t maxBytes)
{
    const std::string bytes = in.ConsumeRandomLengthString(maxBytes);
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

bool printable(QChar c) { return c >= ' ' && c != QChar(0x7f); }

// Python reads any character inside a comment but NUL; a carriage return
// would end the comment and turn the rest into code. Outside comments,
// whatever the user typed must have been escaped into printable text.
bool fitForPythonSource(const QString& code)
{
    if (code.contains('\r') || code.contains(QChar(0))) return false;
    for (const QString& line : code.split('\n')) {
        if (line.trimmed().startsWith('#')) continue;
        if (!std::all_of(line.begin(), line.end(), printable)) return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider in(data, size);
    const QString filter = text(in, 64);
    const bool useRegex = in.ConsumeBool();
    const QString folder = text(in, 48);
    QStringList files;
    for (int n = in.ConsumeIntegralInRange(1, 4); n > 0; --n) files << folder + "/" + text(in, 24);

    const QString repr = pythonRepr(filter);
    FUZZ_CHECK(repr.size() >= 2 && (repr.front() == '\'' || repr.front() == '"') && repr.back() == repr.front());
    FUZZ_CHECK(std::all_of(repr.begin(), repr.end(), printable));

    try {
        const QStringList passed = filterFiles(files, useRegex ? filter : wildcardPattern(filter), !useRegex);
        // What passes keeps its order and is never made up.
        qsizetype from = 0;
        for (const QString& f : passed) {
            from = files.indexOf(f, from);
            FUZZ_CHECK(from >= 0);
            ++from;
        }
    } catch (const std::runtime_error&) {
    }
    for (const QString& f : files) displayName(f, in.ConsumeIntegralInRange(0, 40));

    FUZZ_CHECK(fitForPythonSource(imageSequenceLoadFunctionText(files, filter, useRegex)));

    const auto& types = imageTypes();
    LoadFunctionParams p;
    const size_t typeIndex = in.ConsumeIntegralInRange<size_t>(0, types.size());
    p.imgType = typeIndex < types.size() ? types[typeIndex].name : text(in, 16);
    p.offset = in.ConsumeIntegralInRange(0, 2147483647);
    p.gap = in.ConsumeIntegralInRange(0, 2147483647);
    p.width = in.ConsumeIntegralInRange(0, 2147483647);
    p.height = in.ConsumeIntegralInRange(0, 2147483647);
    p.frame = in.ConsumeIntegralInRange(0, 2147483647);
    p.littleEndian = in.ConsumeBool();
    p.readOrder = in.ConsumeBool() ? "C" : "F";
    p.colorOrder = in.ConsumeBool() ? "ABCABC" : "AABBCC";
    p.permute = in.PickValueInArray({"0,1,2", "0,2,1", "1,0,2", "1,2,0", "2,0,1", "2,1,0"});
    p.hflip = in.ConsumeBool();
    p.vflip = in.ConsumeBool();
    p.data_format = in.ConsumeBool() ? "DHWC" : "HWCD";
    p.keep_c_on_gray = in.ConsumeBool();
    try {
        FUZZ_CHECK(fitForPythonSource(volumeLoadFunctionText(p)));
    } catch (const std::runtime_error&) {
        FUZZ_CHECK(typeIndex == types.size());
    }
    return 0;
}
