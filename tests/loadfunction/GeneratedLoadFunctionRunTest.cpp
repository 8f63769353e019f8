#include "PythonProcess.h"
#include "toolboxes/importData/loadfunction/ImageSequenceLoadFunction.h"
#include "toolboxes/importData/loadfunction/VolumeLoadFunction.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace torvex {
namespace {

const char* const kImageTypes[] = {"8-bit",       "16-bit Signed", "16-bit Unsigned", "32-bit Signed", "32-bit Unsigned",
                                   "16-bit Real", "32-bit Real",   "64-bit Real",     "24-bit RGB",    "24-bit BGR",
                                   "32-bit ARGB", "32-bit ABGR",   "1-bit Bitmap"};

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    file.write(bytes);
}

TEST(GeneratedLoadFunctions, CompileForAnySettingsAndFilterText)
{
    QTemporaryDir dir;
    QStringList files;
    const auto add = [&](const QString& text) {
        files << dir.filePath(QString("text%1.py").arg(files.size()));
        writeFile(files.last(), text.toUtf8());
    };
    for (const char* type : kImageTypes) {
        for (const char* colorOrder : {"ABCABC", "AABBCC"}) {
            add(volumeLoadFunctionText({.imgType = type, .offset = 7, .width = 5, .height = 3, .frame = 2,
                                        .littleEndian = true, .colorOrder = colorOrder, .keep_c_on_gray = true}));
            add(volumeLoadFunctionText({.imgType = type, .gap = -1, .colorOrder = colorOrder, .permute = "2,1,0",
                                        .vflip = true, .data_format = "HWCD"}));
        }
    }
    const QStringList filters{"", "it's", "\"q\" and 'q'", "ends\\", "'''", "\"\"\"", "\n\r\t\x01",
                              QString::fromUtf16(u"\u00e9\u00d7\U0001F600\u2028"), QString(QChar(char16_t(0xdc00)))};
    for (const QString& filter : filters) {
        add(imageSequenceLoadFunctionText({"/tmp/we\"ird\\/a.png"}, filter, false));
        add(imageSequenceLoadFunctionText({"/tmp/we\"ird\\/a.png"}, filter, true));
    }
    const PythonRun run = runPython(QStringList{"-m", "py_compile"} + files);
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
}

TEST(GeneratedLoadFunctions, ImageSequenceStacksAFolderOfPngs)
{
    QTemporaryDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir("images"));
    const QString images = dir.filePath("images");
    writeFile(dir.filePath("all.py"), imageSequenceLoadFunctionText({images + "/a.png"}, "", false).toUtf8());
    writeFile(dir.filePath("a_and_b.py"), imageSequenceLoadFunctionText({images + "/a.png"}, "^[ab]\\.", true).toUtf8());
    const PythonRun run = runPython(
        {loadFunctionTestDir() + "/check_image_sequence.py", images, dir.filePath("all.py"), dir.filePath("a_and_b.py")});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
}

} // namespace
} // namespace torvex
