#include "PythonProcess.h"
#include "toolboxes/importData/loadfunction/VolumeLoadFunction.h"

#include <QFile>

#include <gtest/gtest.h>

#include <stdexcept>

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

struct BranchCase {
    LoadFunctionParams params;
    QString presentLine;
    QString absentText;
};

void PrintTo(const BranchCase& c, std::ostream* os)
{
    *os << c.params.imgType.toStdString() << " -> " << c.presentLine.toStdString();
}

class VolumeLoadFunctionBranch : public testing::TestWithParam<BranchCase> {};

TEST_P(VolumeLoadFunctionBranch, ChoosesItsRows)
{
    const QString text = volumeLoadFunctionText(GetParam().params);
    EXPECT_TRUE(text.split(u'\n').contains(GetParam().presentLine));
    EXPECT_TRUE(GetParam().absentText.isEmpty() || !text.contains(GetParam().absentText));
}

INSTANTIATE_TEST_SUITE_P(
    VolumeLoadFunctionText, VolumeLoadFunctionBranch,
    testing::Values(
        BranchCase{{.imgType = "32-bit Real"}, "    _expected  = offset + frame * height * width * 4", "_stride"},
        BranchCase{{.imgType = "16-bit Signed", .gap = -2}, "    _dtype       = np.dtype(np.int16)", "np.array("},
        BranchCase{{.imgType = "8-bit", .littleEndian = true}, "        dtype=np.dtype(np.uint8).newbyteorder('<'),", ""},
        BranchCase{{.imgType = "24-bit RGB", .littleEndian = true, .colorOrder = "ABCABC"},
                   "    r,g,b = _arr[...,2],_arr[...,1],_arr[...,0]", "_pl"},
        BranchCase{{.imgType = "32-bit ABGR", .gap = 1, .colorOrder = "ABCABC"},
                   "    a,b,g,r = _arr[...,0],_arr[...,1],_arr[...,2],_arr[...,3]", "_pl"},
        BranchCase{{.imgType = "24-bit BGR", .littleEndian = true},
                   "    prasedData = np.stack([_pl[:,2,:,:], _pl[:,1,:,:], _pl[:,0,:,:]], axis=-1)", "_arr"},
        BranchCase{{.imgType = "32-bit ARGB", .gap = 2},
                   "    prasedData = np.stack([_pl[:,1,:,:], _pl[:,2,:,:], _pl[:,3,:,:], _pl[:,0,:,:]], axis=-1)", "_arr"},
        BranchCase{{.imgType = "1-bit Bitmap", .colorOrder = "ABCABC"},
                   "    prasedData = np.unpackbits(_raw).reshape((frame, height, width, 1))", "colorOrder"},
        BranchCase{{.imgType = "1-bit Bitmap", .gap = 9}, "            .reshape((height, width, 1))", "_raw"},
        BranchCase{{.imgType = "8-bit", .hflip = true}, "    prasedData = _imgTransfer(prasedData, permute, hflip, vflip)", ""},
        BranchCase{{.imgType = "8-bit", .vflip = true}, "    def _imgTransfer(prasedData, permute, hflip, vflip):", ""},
        BranchCase{{.imgType = "8-bit"}, "    prasedData = _reformat(prasedData, data_format, keep_c_on_gray)", "_imgTransfer"},
        BranchCase{{.imgType = "8-bit", .data_format = "HWCD", .keep_c_on_gray = true}, "    data_format = 'HWCD'", ""},
        BranchCase{{.imgType = "8-bit", .keep_c_on_gray = true}, "    return prasedData", "def _"}));

TEST(VolumeLoadFunctionText, UnknownTypeFailsWithItsName)
{
    for (const QString type : {"", "12-bit", "8-Bit", "24-bit RGB "}) {
        try {
            volumeLoadFunctionText({.imgType = type});
            ADD_FAILURE() << "no failure for " << type.toStdString();
        } catch (const std::runtime_error& e) {
            EXPECT_EQ(std::string(e.what()), ("Unsupported image type: " + type).toStdString());
        }
    }
}

} // namespace
} // namespace torvex
