// Plain PNG files through the fast reader: every row filter, colour type and
// chunk layout against the pixels they were made from; what it must leave to
// the general decoder, and damage.
#include "toolboxes/importData/sequence/PlainPng.h"

#include "../support/TempFiles.h"

#include <QDir>

#include <gtest/gtest.h>

using namespace torvex;

namespace {

// Writes PNG files by hand, rows filtered in turn by all five filters, beside
// the raw pixels they hold.
const char* kWriter = R"(
import sys, zlib, struct, numpy as np
d = sys.argv[1]
def chunk(kind, data, crc=None):
    crc = zlib.crc32(kind + data) if crc is None else crc
    return struct.pack('>I', len(data)) + kind + data + struct.pack('>I', crc & 0xffffffff)
def filtered(px, ch, first_filter=0):
    rows = px.reshape(px.shape[0], -1).astype(np.int32)
    prev, out = np.zeros(rows.shape[1], np.int32), bytearray()
    for y, row in enumerate(rows):
        f = (y + first_filter) % 5
        left = np.concatenate([np.zeros(ch, np.int32), row[:-ch]])
        upleft = np.concatenate([np.zeros(ch, np.int32), prev[:-ch]])
        p = left + prev - upleft
        pa, pb, pc = abs(p - left), abs(p - prev), abs(p - upleft)
        pred = [0, left, prev, (left + prev) >> 1, np.where((pa <= pb) & (pa <= pc), left, np.where(pb <= pc, prev, upleft))][f]
        out.append(f)
        out += ((row - pred) & 255).astype(np.uint8).tobytes()
        prev = row
    return bytes(out)
def png(name, px, ctype, depth=8, interlace=0, before=b'', idat_crc=None, split=False, data=None):
    h, w = px.shape[:2]
    ch = 1 if px.ndim == 2 else px.shape[2]
    z = zlib.compress(data if data is not None else filtered(px, ch))
    idat = chunk(b'IDAT', z[:len(z) // 2]) + chunk(b'IDAT', z[len(z) // 2:]) if split else chunk(b'IDAT', z, idat_crc)
    open(f'{d}/{name}.png', 'wb').write(b'\x89PNG\r\n\x1a\n' +
        chunk(b'IHDR', struct.pack('>IIBBBBB', w, h, depth, ctype, 0, 0, interlace)) + before + idat + chunk(b'IEND', b''))
    open(f'{d}/{name}.raw', 'wb').write(px.astype(np.uint8).tobytes())
rng = np.random.default_rng(7)
for ctype, ch in ((0, 1), (4, 2), (2, 3), (6, 4)):
    for h, w in ((1, 1), (7, 5), (33, 17)):
        px = rng.integers(0, 256, (h, w, ch) if ch > 1 else (h, w))
        png(f'plain_{ctype}_{h}x{w}', px, ctype, split=h == 33, before=chunk(b'tEXt', b'k\0v', crc=1))
png('plain_2_64x64', rng.integers(0, 4, (64, 64, 3)), 2) # small values: many ties in the Paeth predictor
px = rng.integers(0, 256, (4, 4, 3))
png('other_trns', px, 2, before=chunk(b'tRNS', b'\0\0\0\0\0\0'))
png('other_sbit', px, 2, before=chunk(b'sBIT', b'\5\5\5'))
png('other_interlaced', px, 2, interlace=1)
png('other_16bit', px, 2, depth=16)
png('other_palette', px[:, :, 0], 3, before=chunk(b'PLTE', bytes(768)))
png('damaged_crc', px, 2, idat_crc=0)
png('damaged_filter', px, 2, data=bytes([5]) + bytes(12) + bytes([0]) + bytes(12) * 3)
png('damaged_short', px, 2, data=filtered(px, 3)[:-1])
open(f'{d}/damaged_cut.png', 'wb').write(open(f'{d}/plain_2_7x5.png', 'rb').read()[:60])
)";

class PlainPng : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        dir = new QTemporaryDir;
        test::runPython(kWriter, {dir->path()});
    }
    static void TearDownTestSuite() { delete dir; }
    static QByteArray read(const QString& name)
    {
        QFile file(dir->filePath(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        return file.readAll();
    }
    static QTemporaryDir* dir;
};
QTemporaryDir* PlainPng::dir = nullptr;

} // namespace

TEST_F(PlainPng, ReadsEveryFilterColourTypeAndChunkLayout)
{
    const QStringList names = QDir(dir->path()).entryList({"plain_*.png"});
    ASSERT_EQ(names.size(), 13);
    for (const QString& name : names) {
        const std::optional<NdArray> pixels = decodePlainPng(read(name), NdArray::empty);
        ASSERT_TRUE(pixels) << name.toStdString();
        const QByteArray raw = read(QString(name).replace(".png", ".raw"));
        EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(pixels->data()), pixels->nbytes()), raw) << name.toStdString();
        const int colourType = name.split('_')[1].toInt(); // 0 gray, 4 gray and alpha, 2 RGB, 6 RGBA
        EXPECT_EQ(pixels->ndim() == 2 ? 1 : pixels->extent(2), QList<int>({1, 0, 3, 0, 2, 0, 4})[colourType])
            << name.toStdString();
        // The still-image decoder takes the same road.
        EXPECT_EQ(decodeStillImage(dir->filePath(name)).pixels.shape(), pixels->shape()) << name.toStdString();
    }
}

TEST_F(PlainPng, LeavesOtherFilesToTheGeneralDecoderAndRefusesDamage)
{
    for (const char* name : {"other_trns.png", "other_sbit.png", "other_interlaced.png", "other_16bit.png",
                             "other_palette.png"})
        EXPECT_FALSE(decodePlainPng(read(name), NdArray::empty)) << name;
    EXPECT_FALSE(decodePlainPng("GIF89a", NdArray::empty));
    for (const char* name : {"damaged_crc.png", "damaged_filter.png", "damaged_short.png", "damaged_cut.png"})
        EXPECT_THROW(decodePlainPng(read(name), NdArray::empty), std::runtime_error) << name;
}
