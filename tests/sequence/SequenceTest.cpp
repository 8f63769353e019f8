// Still images and other files through the loader's steps: decoding (and the
// fast reader of plain PNG files), 8-bit stretching, frame shape, placeholders,
// the worker, the file filter, and numbered names.
#include "toolboxes/importData/loadfunction/ImageSequenceLoadFunction.h"
#include "toolboxes/importData/sequence/FileFilter.h"
#include "toolboxes/importData/sequence/FramePages.h"
#include "toolboxes/importData/sequence/FrameShape.h"
#include "toolboxes/importData/sequence/ImageLoaderWorker.h"
#include "toolboxes/importData/sequence/KeptDepth.h"
#include "toolboxes/importData/sequence/Normalise8Bit.h"
#include "toolboxes/importData/sequence/NumberedNames.h"
#include "toolboxes/importData/sequence/PlaceholderFrame.h"
#include "toolboxes/importData/sequence/PlaceholderLayout.h"
#include "toolboxes/importData/sequence/PlainPng.h"
#include "toolboxes/importData/sequence/StillImageDecoder.h"
#include "toolboxes/importData/sequence/TextHead.h"
#include "toolboxes/importData/sequence/TiffPages.h"

#include "../support/TempFiles.h"

#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cstring>
#include <numeric>

using namespace torvex;

namespace {

// The images and other files that the tests load, written once per run.
const char* const kWriteFiles = R"py(
import base64, struct, sys, zlib
import numpy as np
from PIL import Image

out = sys.argv[1] + "/"
def write(name, data):
    open(out + name, "wb").write(data)
ramp = (np.arange(20, dtype=np.uint8) * 10 + 3).reshape(4, 5)
rgb = np.stack([ramp, ramp + 1, ramp + 2], axis=2)

Image.fromarray(ramp, "L").save(out + "gray8.png")
Image.fromarray((np.arange(20, dtype=np.uint16) + 1000).reshape(4, 5)).save(out + "gray16.png")
Image.fromarray(rgb, "RGB").save(out + "rgb.png")
Image.fromarray(np.dstack([rgb, np.full((4, 5), 7, np.uint8)]), "RGBA").save(out + "rgba.png")
Image.fromarray(np.dstack([ramp, ramp]), "LA").save(out + "gray_alpha.png")
Image.fromarray(rgb, "RGB").convert("CMYK").save(out + "cmyk.tif")
Image.fromarray(np.linspace(-1, 1, 20, dtype=np.float32).reshape(4, 5), "F").save(out + "float.tif")

palette = Image.new("P", (5, 4))
palette.putpalette([200, 0, 0, 0, 200, 0, 0, 0, 200, 90, 90, 90])
palette.putdata([i % 4 for i in range(20)])
for ext in ("png", "bmp", "tif"):
    palette.save(out + "palette." + ext)
# Large enough to be stored interlaced, with 16 colours for longer LZW codes.
wide = Image.new("P", (40, 20))
wide.putpalette([v for i in range(16) for v in (i * 16, 255 - i * 16, i * 8)])
wide.putdata([(x * 3 + y * 7) % 16 for y in range(20) for x in range(40)])
wide.save(out + "palette.gif")
bits = Image.fromarray((np.arange(20) % 3 == 0).reshape(4, 5))
for ext in ("png", "bmp", "pbm", "tif"):
    bits.save(out + "bilevel." + ext)
Image.new("1", (5, 4), 1).save(out + "white_bilevel.png")

# Pages of every kind, compressed with a predictor; palette, alpha and 1-bit
# pages are the general decoder's.
page = np.arange(35 * 6).reshape(35, 6)
Image.fromarray(page.astype(np.uint8), "L").save(out + "pages.tif", compression="tiff_adobe_deflate", save_all=True,
    append_images=[Image.fromarray((page * 300).astype(np.uint16)), Image.fromarray(np.dstack([page] * 3).astype(np.uint8)),
                   Image.fromarray(page.astype(np.float32) / 7 - 9, "F"), Image.fromarray(page.astype(np.int32) * -99999, "I"),
                   palette, Image.fromarray(np.dstack([page] * 4).astype(np.uint8)), bits])

write("text.txt", "first line\r\nsecond\rthird\u2028fourth\n".encode())
write("binary.bin", bytes(range(250, 256)) + bytes(range(20)))
write("empty.png", b"")
whole = open(out + "rgb.png", "rb").read()
write("truncated.png", whole[: len(whole) // 2])
# Damaged headers. A PNG that claims 30000 x 30000 RGBA pixels (3.6 GB) in a few
# bytes, and a GIF header over a broken PNG that makes the GIF reader give up
# with a logic error instead of a read error.
def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
write("claims_huge.png", b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 30000, 30000, 8, 6, 0, 0, 0))
      + chunk(b"IDAT", zlib.compress(bytes(64))) + chunk(b"IEND", b""))
write("damaged.gif", base64.b64decode("R0lGODdhTWluZ0xpNDOJUE5HDQoaCgJJtEkqAAAAAA1JSERSAHcAAAD1//v2BAABAAAIAAAABggrAAA="))
)py";

// Writes PNG files by hand, rows filtered in turn by all five filters, beside
// the raw pixels they hold.
const char* const kWritePngs = R"(
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
png('other_palette', px[:, :, 0], 3, before=chunk(b'PLTE', bytes(768)))
png('damaged_crc', px, 2, idat_crc=0)
png('damaged_filter', px, 2, data=bytes([5]) + bytes(12) + bytes([0]) + bytes(12) * 3)
png('damaged_short', px, 2, data=filtered(px, 3)[:-1])
open(f'{d}/damaged_cut.png', 'wb').write(open(f'{d}/plain_2_7x5.png', 'rb').read()[:60])
for ctype, ch, h, w in ((0, 1, 33, 17), (6, 4, 7, 5)): # 16 bits: filtered as big-endian bytes, read native
    px = rng.integers(0, 65536, (h, w, ch))
    png(f'plain_{ctype}_16bit_{h}x{w}', px.astype('>u2').view(np.uint8).reshape(h, w, 2 * ch), ctype, depth=16)
    open(f'{d}/plain_{ctype}_16bit_{h}x{w}.raw', 'wb').write(px.astype('=u2').tobytes())
)";

QString sequenceFile(const QString& name)
{
    static QTemporaryDir dir;
    [[maybe_unused]] static const QString written =
        test::runPython(kWriteFiles, {dir.path()}) + test::runPython(kWritePngs, {dir.path()});
    return dir.filePath(name);
}

// Elements of a uint8 array in C order.
std::vector<int> bytesOf(const NdArray& array)
{
    std::vector<int> out;
    array.forEach([&](const std::byte* p) { out.push_back(static_cast<int>(*p)); });
    return out;
}

// A file as stored, and element i (C order) after normalising to 8 bits, as
// kWriteFiles made it; none where the stretch is the normaliser's.
using StoredCase = std::tuple<const char* /*file*/, Shape, DType, bool /*bilevel*/, int (*)(int) /*normalised*/>;

class StoredImage : public testing::TestWithParam<StoredCase> {};

TEST_P(StoredImage, KeepsElementTypeAndChannels)
{
    const auto& [file, shape, dtype, bilevel, normalised] = GetParam();
    const DecodedImage image = decodeStillImage(sequenceFile(file));
    EXPECT_EQ(image.pixels.shape(), shape);
    EXPECT_EQ(image.pixels.dtype(), dtype);
    EXPECT_EQ(image.bilevel, bilevel);
    if (!normalised) return;
    const std::vector<int> got = bytesOf(normaliseToUInt8(image));
    for (int i = 0; i < int(got.size()); ++i) ASSERT_EQ(got[i], normalised(i)) << "element " << i;
}

constexpr auto ramp = [](int i) { return i * 10 + 3; };
constexpr auto indices = [](int i) { return i % 4; };
constexpr auto bits = [](int i) { return i % 3 == 0 ? 255 : 0; }; // 0 and 1 stretch
INSTANTIATE_TEST_SUITE_P(
    Files, StoredImage,
    testing::Values(
        StoredCase{"gray8.png", {4, 5}, DType::UInt8, false, ramp},
        StoredCase{"gray16.png", {4, 5}, DType::UInt16, false, nullptr},
        StoredCase{"rgb.png", {4, 5, 3}, DType::UInt8, false, [](int i) { return ramp(i / 3) + i % 3; }},
        StoredCase{"rgba.png", {4, 5, 4}, DType::UInt8, false, [](int i) { return i % 4 == 3 ? 7 : ramp(i / 4) + i % 4; }},
        StoredCase{"gray_alpha.png", {4, 5, 2}, DType::UInt8, false, [](int i) { return ramp(i / 2); }},
        // The inverse of the RGB it was made from, not that RGB converted back.
        StoredCase{"cmyk.tif", {4, 5, 4}, DType::UInt8, false, [](int i) { return i % 4 == 3 ? 0 : 255 - ramp(i / 4) - i % 4; }},
        StoredCase{"float.tif", {4, 5}, DType::Float32, false, nullptr},
        StoredCase{"palette.png", {4, 5}, DType::UInt8, false, indices},
        StoredCase{"palette.bmp", {4, 5}, DType::UInt8, false, indices},
        StoredCase{"palette.tif", {4, 5}, DType::UInt8, false, indices},
        // Stored interlaced, with LZW codes that grow past their first width.
        StoredCase{"palette.gif", {20, 40}, DType::UInt8, false, [](int i) { return (i % 40 * 3 + i / 40 * 7) % 16; }},
        StoredCase{"bilevel.tif", {4, 5}, DType::UInt8, true, bits},
        StoredCase{"bilevel.png", {4, 5}, DType::UInt8, true, bits},
        StoredCase{"bilevel.bmp", {4, 5}, DType::UInt8, true, bits},
        StoredCase{"bilevel.pbm", {4, 5}, DType::UInt8, true, bits},
        StoredCase{"white_bilevel.png", {4, 5}, DType::UInt8, true, [](int) { return 0; }}));

TEST(DecodeStillImage, NonImagesThrow)
{
    for (const char* file : {"text.txt", "binary.bin", "empty.png", "truncated.png", "missing.png", "damaged.gif", "."})
        EXPECT_THROW(decodeStillImage(sequenceFile(file)), std::runtime_error) << file;
    // Refused before the reader allocates for it.
    EXPECT_EQ(test::failure([] { decodeStillImage(sequenceFile("claims_huge.png")); }),
              "the header claims a larger image than the file can hold");
}

template <class T> NdArray row(DType dtype, std::vector<T> values)
{
    NdArray a = NdArray::empty({1, static_cast<int64_t>(values.size())}, dtype);
    std::memcpy(a.mutableData(), values.data(), values.size() * sizeof(T));
    return a;
}

TEST(NormaliseToUInt8, TruncatesEveryStretchedTypeFlatOrNanImagesBecomeZeroAndBytesPass)
{
    // 1/2 of 255 is 127.5: truncation gives 127 where rounding would give 128.
    const std::vector<int> stretched{0, 127, 255}, zeros(3, 0);
    EXPECT_EQ(bytesOf(normaliseToUInt8({row<uint16_t>(DType::UInt16, {10, 11, 12})})), stretched);
    EXPECT_EQ(bytesOf(normaliseToUInt8({row<int16_t>(DType::Int16, {-5, -4, -3})})), stretched);
    EXPECT_EQ(bytesOf(normaliseToUInt8({row<uint32_t>(DType::UInt32, {0, 2000000000u, 4000000000u})})), stretched);
    EXPECT_EQ(bytesOf(normaliseToUInt8({row<float>(DType::Float32, {-1.f, 0.f, 1.f})})), stretched);
    EXPECT_EQ(bytesOf(normaliseToUInt8({row<double>(DType::Float64, {2.0, 2.5, 3.0})})), stretched);
    EXPECT_EQ(bytesOf(normaliseToUInt8({row<uint16_t>(DType::UInt16, {9, 9, 9})})), zeros);
    EXPECT_EQ(bytesOf(normaliseToUInt8({row<double>(DType::Float64, {0.0, NAN, 1.0})})), zeros);
    EXPECT_EQ(bytesOf(normaliseToUInt8({row<float>(DType::Float32, {NAN, 0.f, 1.f})})), zeros);
    // 8-bit images pass without a copy; their values are the stored images' cases.
    const NdArray bytes = row<uint8_t>(DType::UInt8, {0, 1, 1});
    EXPECT_TRUE(normaliseToUInt8({bytes}).sharesStorageWith(bytes));
}

NdArray counting(const Shape& shape)
{
    NdArray a = NdArray::empty(shape, DType::UInt8);
    std::iota(reinterpret_cast<uint8_t*>(a.mutableData()), reinterpret_cast<uint8_t*>(a.mutableData()) + a.size(), 1);
    return a;
}

TEST(KeptDepth, AStackTakesTheNarrowestTypeHoldingEveryValueAndAnyFloatGivesFloat32)
{
    using enum DType;
    const std::tuple<DType, DType, DType> cases[] = {
        {UInt8, UInt16, UInt16}, {UInt8, Int16, Int16},   {UInt16, Int16, Int32},    {Int16, Int32, Int32},
        {UInt8, UInt32, UInt32}, {UInt32, Int32, Float64}, {Int32, Float32, Float32}};
    for (const auto& [a, b, both] : cases)
        EXPECT_TRUE(widenedType(a, b) == both && widenedType(b, a) == both) << dtypeName(a) << " " << dtypeName(b);
    // Doubles narrow to float32.
    EXPECT_EQ(keepStoredValues({NdArray::zeros({1, 2}, Float64), false}).dtype(), Float32);
}

TEST(PadToCentre, OddRowGoesBelowOddColumnRightAndFullSizeIsNotCopied)
{
    const NdArray padded = padToCentre(counting({5, 1}), 8, 4);
    ASSERT_EQ(padded.shape(), (Shape{8, 4}));
    // 3 spare rows: 1 above, 2 below; 3 spare columns: 1 left, 2 right.
    const std::vector<int> expected{0, 0, 0, 0, //
                                    0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0, 5, 0, 0,
                                    0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(bytesOf(padded), expected);
    const NdArray image = counting({2, 3, 3});
    EXPECT_TRUE(padToCentre(image, 2, 3).sharesStorageWith(image));
    EXPECT_EQ(padToCentre(image, 4, 3).shape(), (Shape{4, 3, 3}));
}

TEST(UnifyChannels, RepeatsGrayDropsAlphaOrAveragesWithTruncation)
{
    EXPECT_EQ(bytesOf(unifyChannels(counting({1, 2}), 3)), (std::vector<int>{1, 1, 1, 2, 2, 2}));
    EXPECT_EQ(bytesOf(unifyChannels(counting({1, 2, 4}), 3)), (std::vector<int>{1, 2, 3, 5, 6, 7}));
    EXPECT_EQ(unifyChannels(counting({1, 2, 2}), 3).shape(), (Shape{1, 2, 2}));
    EXPECT_EQ(unifyChannels(counting({1, 2, 5}), 3).shape(), (Shape{1, 2, 5}));
    const NdArray gray = unifyChannels(counting({1, 2, 2}), 1); // (1+2)/2, (3+4)/2
    EXPECT_EQ(gray.shape(), (Shape{1, 2}));
    EXPECT_EQ(bytesOf(gray), (std::vector<int>{1, 3}));
}

TEST(PlaceholderText, SplitsAtEveryLineBoundaryAndWrapsByCharacterCount)
{
    const auto linesOf = [](const std::u32string& text) { return wrapLines(splitTextLines(text), 100); };
    EXPECT_EQ(linesOf(U"a\nb\vc\fd\x1c" U"e\x1d" U"f\x1e" U"g\x85h\u2028i\u2029j\rk\r\nl\n"),
              QStringList({"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l"}));
    EXPECT_EQ(linesOf(U"\n\nx"), QStringList({"", "", "x"}));
    EXPECT_EQ(linesOf(U""), QStringList());
    EXPECT_EQ(wrapLines({U"abcdefg", U"", U"abcdef"}, 3), QStringList({"abc", "def", "g", "", "abc", "def"}));
    EXPECT_EQ(wrapLines({U"\U0001F600x"}, 1), QStringList({QString::fromUtf8("\U0001F600"), "x"}));
}

TEST(PlaceholderText, ReadsStrictUtf8WithNewlinesTranslated)
{
    EXPECT_EQ(readTextHead(sequenceFile("text.txt"), 8192), U"first line\nsecond\nthird\u2028fourth\n");
    EXPECT_EQ(readTextHead(sequenceFile("text.txt"), 13), U"first line\nse"); // CR LF is one character
    for (const char* bad : {"\xed\xa0\x80", "\xc0\xaf", "ok\xc3", "\xf4\x90\x80\x80", "\xff"})
        EXPECT_FALSE(readTextHead(test::writeFile(sequenceFile("bad.txt"), bad), 8192)) << bad;
    EXPECT_EQ(readTextHead(test::writeFile(sequenceFile("emoji.txt"), "\xf0\x9f\x98\x80" "ab"), 2), U"\U0001F600a");
}

TEST(PlaceholderText, FallsBackFromTextToHexToUnreadable)
{
    EXPECT_EQ(placeholderContentLines(sequenceFile("empty.png"), 40), QStringList());
    EXPECT_EQ(placeholderContentLines(sequenceFile("text.txt"), 6),
              QStringList({"first ", "line", "second", "third", "fourth"}));
    EXPECT_EQ(placeholderContentLines(sequenceFile("binary.bin"), 40).first(),
              "0000: fa fb fc fd fe ff 00 01 02 03 04");
    EXPECT_EQ(placeholderContentLines(sequenceFile("missing.bin"), 40), QStringList({"<unreadable>"}));
    // Rows hold what the width allows; below 9 characters one byte a row.
    const QByteArray bytes = QByteArray::fromHex("fafbfcfdfeff000102030405060708090a0b0c0d");
    EXPECT_EQ(hexDumpRows(bytes, 18).last(), "0010: 0a 0b 0c 0d");
    EXPECT_EQ(hexDumpRows(bytes, 8).size(), 20);
}

TEST(PlaceholderText, EllipsisReplacesLinesBeyondMaxLinesMinusTwo)
{
    // content lines, max lines: lines shown, ellipsis
    for (const auto& [lines, maxLines, shown, ellipsis] :
         {std::tuple{3, 5, 3, false}, {4, 5, 3, true}, {1, 2, 0, true}, {1, 1, 0, true}, {0, 1, 0, false}}) {
        EXPECT_EQ(shownContent(lines, maxLines).lineCount, shown) << lines << " of " << maxLines;
        EXPECT_EQ(shownContent(lines, maxLines).ellipsis, ellipsis) << lines << " of " << maxLines;
    }
    EXPECT_EQ(placeholderGeometry(256, 256, 7, 13).maxCharsPerLine, 35);
    EXPECT_EQ(placeholderGeometry(256, 256, 7, 13).maxLines, 19);
    EXPECT_EQ(placeholderGeometry(5, 5, 0, 0).maxLines, 1);
}

// The row whose pixels 4 and width - 4 have the colour of the separator line.
int separatorRow(const NdArray& frame, const std::vector<int>& colour)
{
    const int64_t width = frame.extent(1), channels = colour.size();
    const std::vector<int> px = bytesOf(frame);
    for (int64_t y = 0; y < frame.extent(0); ++y) {
        const auto row = px.begin() + y * width * channels;
        if (std::equal(colour.begin(), colour.end(), row + 4 * channels) &&
            std::equal(colour.begin(), colour.end(), row + (width - 4) * channels))
            return static_cast<int>(y);
    }
    return -1;
}

TEST(PlaceholderFrame, DrawsInTheColoursOfItsChannelCount)
{
    const NdArray tinted = renderPlaceholderFrame(sequenceFile("text.txt"), 120, 60, 3);
    ASSERT_EQ(tinted.shape(), (Shape{60, 120, 3}));
    EXPECT_EQ(bytesOf(tinted.index(0).index(0)), (std::vector<int>{18, 18, 30}));
    EXPECT_GT(separatorRow(tinted, {80, 80, 100}), 8);

    const NdArray gray = renderPlaceholderFrame(sequenceFile("text.txt"), 120, 60, 1);
    ASSERT_EQ(gray.shape(), (Shape{60, 120}));
    const std::vector<int> px = bytesOf(gray);
    EXPECT_EQ(px.front(), 18);
    EXPECT_EQ(separatorRow(gray, {80}), separatorRow(tinted, {80, 80, 100}));
    EXPECT_NE(std::find(px.begin(), px.end(), 200), px.end()) << "header drawn in its colour";
}

// Cancelling is the fault injections' (closing the window mid-load), held at each
// stage; channel counts that do not stack and empty lists are the window test's.
// Pages read in any order through files kept open are those the general
// decoder reads by reopening the file.
TEST(TiffPages, ReadEveryPageInAnyOrderAsTheGeneralDecoder)
{
    TiffPages openPages;
    const QString pages = sequenceFile("pages.tif");
    for (int page : {1, 2, 3, 0, 7, 4, 6, 5, 3, 4, 2}) {
        const NdArray reopened = decodeStillImagePage(pages, page).pixels;
        const NdArray kept = decodeStillImagePage(pages, page, NdArray::empty, &openPages).pixels;
        ASSERT_EQ(kept.shape(), reopened.shape()) << page;
        ASSERT_EQ(kept.dtype(), reopened.dtype()) << page;
        EXPECT_EQ(0, std::memcmp(kept.data(), reopened.data(), size_t(kept.nbytes()))) << page;
        if (page == 4) openPages.read(sequenceFile("float.tif"), 0, NdArray::empty); // another file between
    }
    EXPECT_THROW(openPages.read(pages, 8, NdArray::empty), std::runtime_error);
}

// Every frame of an animated GIF, composed as it shows, is a frame, as the
// generated code reads it, with the stored values kept or stretched.
TEST(ImageLoaderWorker, EveryFrameOfAnAnimatedGifAsTheGeneratedCodeReadsIt)
{
    QTemporaryDir dir;
    test::runPython(R"(
import sys, numpy as np, PIL.Image
ramp = np.arange(120).reshape(12, 10)
frames = [PIL.Image.fromarray(np.dstack([ramp * 7 * k % 200, ramp, ramp * k // 3]).astype(np.uint8)).convert(
    "P", palette=PIL.Image.ADAPTIVE, colors=16) for k in range(1, 4)]
frames[0].save(sys.argv[1] + "/anim.gif", save_all=True, append_images=frames[1:])
)", {dir.path()});
    const PagedRows rows = everyPage({dir.filePath("anim.gif")});
    ASSERT_EQ(rows.paths.size(), 3);
    for (const bool keepDepth : {false, true}) {
        const SequenceReading reading{.keepDepth = keepDepth, .allPages = true};
        _ImageLoaderWorker worker(1, rows.paths, reading, rows.pages);
        QObject::connect(&worker, &_ImageLoaderWorker::finished,
                         [&](int, const NdArray& stack) { saveNpy(stack, dir.filePath("stack.npy")); });
        worker.run();
        EXPECT_EQ(test::runPython(imageSequenceLoadFunctionText(rows.paths, "*.gif", false, false, reading) + R"(
import sys, numpy as np
ours, theirs = np.load(sys.argv[1] + "/stack.npy"), load_image_sequence(sys.argv[1])
print(ours.shape, np.array_equal(ours, theirs))
)", {dir.path()}), "(3, 12, 10, 3) True") << keepDepth;
    }
}

TEST(ImageLoaderWorker, StacksImagesAndPlaceholdersInOneChannelCount)
{
    // The files; the shape of the one stack they end with (only unreadable
    // files: placeholders on the default canvas).
    for (const auto& [names, shape] : {std::pair{QStringList{"gray8.png", "text.txt", "gray16.png"}, Shape{3, 4, 5}},
                                       {QStringList{"empty.png", "missing.png"}, Shape{2, 256, 256, 3}}}) {
        QStringList paths;
        for (const QString& name : names) paths.append(sequenceFile(name));
        _ImageLoaderWorker worker(7, paths);
        int progressCount = 0;
        std::vector<NdArray> stacks;
        QList<int> decoded; // images shown before the stack is done
        QObject::connect(&worker, &_ImageLoaderWorker::progress, [&] { ++progressCount; });
        QObject::connect(&worker, &_ImageLoaderWorker::frameDecoded, [&](int id, int index, const NdArray&) {
            EXPECT_TRUE(id == 7 && stacks.empty());
            decoded << index;
        });
        QObject::connect(&worker, &_ImageLoaderWorker::finished, [&](int id, const NdArray& stack) {
            EXPECT_EQ(id, 7);
            stacks.push_back(stack);
        });
        QObject::connect(&worker, &_ImageLoaderWorker::error, [](int, const QString& e) { ADD_FAILURE() << e.toStdString(); });
        worker.run();
        ASSERT_EQ(stacks.size(), 1u);
        EXPECT_EQ(stacks[0].shape(), shape);
        EXPECT_EQ(progressCount, names.size());
        EXPECT_EQ(decoded, shape.size() == 3 ? QList<int>({0, 2}) : QList<int>());
    }
}

TEST(FileFilter, MatchesFromTheFirstCharacterWithoutReachingTheEnd)
{
    const QStringList files = {"/d/a.png", "/d/a.png.bak", "/d/b.PNG", "/d/scan01.tif", "/d/xscan.tif", "/d/a.tif"};
    auto wildcard = [&](const QString& w) { return filterFiles(files, wildcardPattern(w), true); };
    EXPECT_EQ(wildcard("*.png"), (QStringList{"/d/a.png", "/d/a.png.bak"}));
    EXPECT_EQ(wildcard("scan"), (QStringList{"/d/scan01.tif"}));
    EXPECT_EQ(wildcard("*.TIF"), QStringList{});
    EXPECT_EQ(wildcard("*"), files);
    // "?" keeps its regular-expression meaning: an optional previous character.
    EXPECT_EQ(wildcard("aa?.tif"), (QStringList{"/d/a.tif"}));
    // A regular expression sees the full path.
    EXPECT_EQ(filterFiles(files, "a\\.png", false), QStringList{});
    EXPECT_EQ(filterFiles(files, ".*/a\\.", false), (QStringList{"/d/a.png", "/d/a.png.bak", "/d/a.tif"}));
    EXPECT_EQ(filterFiles(files, "", false), files);
    EXPECT_THROW(filterFiles(files, "(unclosed", false), std::runtime_error);
}

TEST(FileFilter, CatastrophicPatternsFailFast)
{
    const QStringList files(2000, "/d/" + QString(40, 'a') + "!");
    QElapsedTimer clock;
    clock.start();
    EXPECT_THROW(filterFiles(files, "/d/(a+)+$", false), std::runtime_error);
    EXPECT_LT(clock.elapsed(), 2000);
}

TEST(FileFilter, DisplayNamesKeepTheExtension)
{
    const QString exact = QString(31, 'n') + ".tif";
    EXPECT_EQ(displayName(exact), exact);
    // Cut to 35 characters.
    EXPECT_EQ(displayName(QString(32, 'n') + ".tif"), QString(28, 'n') + "..." + ".tif");
    // An extension longer than the room cuts the stem from its end.
    EXPECT_EQ(displayName("abcdef." + QString(33, 'e')), "abcd..." + QString(".") + QString(33, 'e'));
    EXPECT_EQ(displayName(QString(40, '.')), QString(32, '.') + "...");
}

TEST(PlainPng, ReadsEveryFilterColourTypeAndChunkLayout)
{
    const QStringList names = QDir(sequenceFile("")).entryList({"plain_*.png"});
    ASSERT_EQ(names.size(), 15);
    for (const QString& name : names) {
        const std::optional<NdArray> pixels = decodePlainPng(test::readFile(sequenceFile(name)), NdArray::empty);
        ASSERT_TRUE(pixels) << name.toStdString();
        const QByteArray raw = test::readFile(sequenceFile(QString(name).replace(".png", ".raw")));
        EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(pixels->data()), pixels->nbytes()), raw) << name.toStdString();
        const int colourType = name.split('_')[1].toInt(); // 0 gray, 4 gray and alpha, 2 RGB, 6 RGBA
        EXPECT_EQ(pixels->ndim() == 2 ? 1 : pixels->extent(2), QList<int>({1, 0, 3, 0, 2, 0, 4})[colourType])
            << name.toStdString();
        // The still-image decoder takes the same road.
        EXPECT_EQ(decodeStillImage(sequenceFile(name)).pixels.shape(), pixels->shape()) << name.toStdString();
    }
}

TEST(PlainPng, LeavesOtherFilesToTheGeneralDecoderAndRefusesDamage)
{
    for (const char* name : {"other_trns.png", "other_sbit.png", "other_interlaced.png", "other_palette.png"})
        EXPECT_FALSE(decodePlainPng(test::readFile(sequenceFile(name)), NdArray::empty)) << name;
    EXPECT_FALSE(decodePlainPng("GIF89a", NdArray::empty));
    for (const char* name : {"damaged_crc.png", "damaged_filter.png", "damaged_short.png", "damaged_cut.png"})
        EXPECT_THROW(decodePlainPng(test::readFile(sequenceFile(name)), NdArray::empty), std::runtime_error) << name;
}

const QStringList kTrickyNames = {
    "img10.png", "img2.png", "img1.png", "a01.png", "a1.png", "a001.png", "b.png", "b0.png", "10.png", "9",
    "x99999999999999999999999.png", "x100000000000000000000000.png", "x9.png", QString::fromUtf8("n\u0663.png"),
    QString::fromUtf8("n2.png"), QString::fromUtf8("n\u00b2.png"), "", "2", "02", "a2b10", "a2b9", "a10b1",
};

// Python's sorted with the key the generated function uses is the reference.
TEST(NumberedNames, NaturalOrderIsPythonsKeyOrder)
{
    QStringList ours = kTrickyNames;
    std::sort(ours.begin(), ours.end(), naturalLess);
    const QString python = test::runPython(
        "import json, re, sys\n"
        "names = json.loads(sys.argv[1])\n"
        "key = lambda n: ([int(t) if i % 2 else t for i, t in enumerate(re.split(r'(\\d+)', n))], n)\n"
        "print(json.dumps(sorted(names, key=key)))\n",
        {QString::fromUtf8(QJsonDocument(QJsonArray::fromStringList(kTrickyNames)).toJson(QJsonDocument::Compact))});
    EXPECT_EQ(ours, QVariant(QJsonDocument::fromJson(python.toUtf8()).array().toVariantList()).toStringList());
}

TEST(NumberedNames, TheFirstPlainPairOutOfNumericOrderIsNamed)
{
    // Not the first neighbours out of order (s100, s11).
    EXPECT_EQ(firstNumberedPairOutOfOrder({"s1", "s10", "s100", "s11", "s2"}), (std::pair<QString, QString>{"s10", "s2"}));
    for (const QStringList& agreeing : {QStringList{"a.png", "b.png"}, QStringList{"img01.png", "img02.png"},
                                        QStringList{"a01.png", "a1.png"}, QStringList{}, QStringList{"one"}})
        EXPECT_FALSE(firstNumberedPairOutOfOrder(agreeing)) << agreeing.join(' ').toStdString();
}

TEST(NumberedNames, GapsAreReportedForOneNumberedSeriesOnly)
{
    // The names, and the message about them; none where there is no gap to report.
    const std::pair<QStringList, std::optional<QString>> cases[] = {
        {{"slice_1.png", "slice_2.png", "slice_4.png", "slice_5.png", "slice_7.png"},
         "Missing 2 of 7 numbered files: 3, 6"},
        {{"s0.tif", "s12.tif"}, QString::fromUtf8("Missing 11 of 13 numbered files: 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, \u2026")},
        {{"scan2_001.png", "scan2_003.png"}, "Missing 1 of 3 numbered files: 2"}, // one run varies
        {{"s1.png", "s2.png", "s3.png"}, std::nullopt},                           // complete
        {{"a1b1.png", "a2b3.png"}, std::nullopt},                                 // two runs vary
        {{"a1.png", "b3.png"}, std::nullopt},                                     // other prefix
        {{"a1.png", "a3.tif"}, std::nullopt},                                     // other suffix
        {{"a.png", "b.png"}, std::nullopt},                                       // no numbers
        {{"a1.png"}, std::nullopt},                                               // one file
        {{"x1.png", "x99999999999999999999.png"}, std::nullopt}};                 // beyond 63 bits
    for (const auto& [names, message] : cases) {
        const std::optional<MissingNumbers> gap = missingNumbers(names);
        EXPECT_EQ(gap ? std::optional<QString>(missingNumbersMessage(*gap)) : std::nullopt, message)
            << names.join(' ').toStdString();
    }
}

} // namespace
