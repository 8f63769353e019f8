#include "PythonProcess.h"
#include "toolboxes/importData/loadfunction/VolumeLoadFunction.h"

#include <QFile>

#include <gtest/gtest.h>

namespace torvex {
namespace {

std::string readTestData(const QString& name)
{
    QFile file(loadFunctionTestDir() + "/data/" + name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
    return file.readAll().toStdString();
}

TEST(VolumeLoadFunctionText, ReferenceExamplesToTheCharacter)
{
    EXPECT_EQ(volumeLoadFunctionText({.imgType = "16-bit Unsigned", .offset = 128, .width = 512, .height = 256,
                                      .frame = 4, .littleEndian = true, .keep_c_on_gray = true})
                  .toStdString(),
              readTestData("load_data_uint16_minimal.txt"));
    EXPECT_EQ(volumeLoadFunctionText({.imgType = "32-bit ARGB", .gap = 64, .width = 640, .height = 480, .frame = 3,
                                      .readOrder = "C", .colorOrder = "ABCABC", .permute = "0,2,1", .hflip = true,
                                      .data_format = "HWCD"})
                  .toStdString(),
              readTestData("load_data_argb_all_blocks.txt"));
}

} // namespace
} // namespace torvex
