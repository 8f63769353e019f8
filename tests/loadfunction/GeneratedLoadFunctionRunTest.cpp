#include "PythonProcess.h"
#include "toolboxes/importData/loadfunction/ImageSequenceLoadFunction.h"

#include "../support/TempFiles.h"

#include <QDir>

#include <gtest/gtest.h>

using namespace torvex;

// The generated sequence loader on its own: the empty filter's default, a
// regular expression on the base name, and 16-bit stretching (see the script).
TEST(GeneratedLoadFunctions, ImageSequenceStacksAFolderOfPngs)
{
    QTemporaryDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir("images"));
    const QString images = dir.filePath("images");
    test::writeFile(dir.filePath("all.py"), imageSequenceLoadFunctionText({images + "/a.png"}, "", false).toUtf8());
    test::writeFile(dir.filePath("a_and_b.py"),
                    imageSequenceLoadFunctionText({images + "/a.png"}, "^[ab]\\.", true).toUtf8());
    const PythonRun run = runPython(
        {loadFunctionTestDir() + "/check_image_sequence.py", images, dir.filePath("all.py"), dir.filePath("a_and_b.py")});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
}
