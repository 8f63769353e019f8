#include "PythonProcess.h"
#include "toolboxes/importData/loadfunction/VolumeLoadFunction.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace torvex;

TEST(VolumeLoadFunctionText, ReferenceExamplesToTheCharacter)
{
    const std::pair<LoadFunctionParams, const char*> cases[] = {
        {{.imgType = "16-bit Unsigned", .offset = 128, .width = 512, .height = 256, .frame = 4, .littleEndian = true,
          .keep_c_on_gray = true},
         "load_data_uint16_minimal.txt"},
        {{.imgType = "32-bit ARGB", .gap = 64, .width = 640, .height = 480, .frame = 3, .readOrder = "C",
          .colorOrder = "ABCABC", .permute = "0,2,1", .hflip = true, .data_format = "HWCD"},
         "load_data_argb_all_blocks.txt"}};
    for (const auto& [params, reference] : cases) {
        QFile file(loadFunctionTestDir() + "/data/" + reference);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << reference;
        EXPECT_EQ(volumeLoadFunctionText(params).toStdString(), file.readAll().toStdString()) << reference;
    }
}
