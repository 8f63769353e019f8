// Big-endian raw files: read like their little-endian twins, by the tool and
// by its generated load_data.
#include "toolboxes/importData/loadfunction/VolumeLoadFunction.h"
#include "toolboxes/importData/volume/RawDecoder.h"

#include "../support/TempFiles.h"

#include <gtest/gtest.h>

using namespace torvex;

namespace {

std::vector<double> values(const NdArray& a)
{
    std::vector<double> out;
    a.forEach([&](const std::byte* e) { out.push_back(a.valueAt(e)); });
    return out;
}

QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

} // namespace

TEST(BigEndian, GrayValuesReadLikeTheirLittleEndianTwins)
{
    QTemporaryDir dir;
    // Two frames of 3 x 5 per type, written by NumPy in both byte orders.
    test::runPython("import sys, numpy as np\n"
                    "v = np.linspace(-300, 70000, 30).reshape(2, 3, 5)\n"
                    "for t in ('u2', 'i2', 'u4', 'i4', 'f2', 'f4', 'f8'):\n"
                    "    v.astype(t).astype('>' + t).tofile(f'{sys.argv[1]}/{t}.be')\n"
                    "    v.astype(t).astype('<' + t).tofile(f'{sys.argv[1]}/{t}.le')\n",
                    {dir.path()});
    const std::map<QString, QString> types = {{"u2", "16-bit Unsigned"}, {"i2", "16-bit Signed"},
                                              {"u4", "32-bit Unsigned"}, {"i4", "32-bit Signed"},
                                              {"f2", "16-bit Real"},     {"f4", "32-bit Real"},
                                              {"f8", "64-bit Real"}};
    for (const auto& [numpy, type] : types) {
        const RawLayout little{.imgType = type, .width = 5, .height = 3, .frame = 2, .littleEndian = true, .readOrder = "C"};
        RawLayout big = little;
        big.littleEndian = false;
        big.bigEndian = true;
        const QByteArray bigBytes = bytesOf(dir.filePath(numpy + ".be"));
        const NdArray twin = *decodeRawVolume(bytesOf(dir.filePath(numpy + ".le")), little);
        const NdArray read = *decodeRawVolume(bigBytes, big);
        EXPECT_EQ(values(read), values(twin)) << type.toStdString();
        // Still a view on the file's bytes: values are swapped as they are read.
        EXPECT_EQ(reinterpret_cast<const char*>(read.data()), bigBytes.constData());

        // The generated function reads the big-endian file as NumPy reads the twin.
        const QString code = volumeLoadFunctionText({.imgType = type, .width = 5, .height = 3, .frame = 2,
                                                     .readOrder = "C", .bigEndian = true});
        EXPECT_TRUE(code.contains(".newbyteorder('>')"));
        EXPECT_EQ(test::runPython(code + "\nimport sys\na = load_data(sys.argv[1])\n"
                                         "b = np.fromfile(sys.argv[2], dtype='<" + numpy + "').reshape(2, 3, 5)\n"
                                         "print(bool(np.array_equal(a.reshape(2, 3, 5), b, equal_nan=True)))\n",
                                  {dir.filePath(numpy + ".be"), dir.filePath(numpy + ".le")}),
                  "True")
            << type.toStdString();
    }
}
