// Still images and other files through the loader's steps: decoding, 8-bit
// stretching, frame shape, placeholders, the worker, and the file filter.
#include "toolboxes/importData/sequence/FileFilter.h"
#include "toolboxes/importData/sequence/FrameShape.h"
#include "toolboxes/importData/sequence/ImageLoaderWorker.h"
#include "toolboxes/importData/sequence/Normalise8Bit.h"
#include "toolboxes/importData/sequence/PlaceholderFrame.h"
#include "toolboxes/importData/sequence/PlaceholderLayout.h"
#include "toolboxes/importData/sequence/StillImageDecoder.h"
#include "toolboxes/importData/sequence/TextHead.h"

#include "../support/TempFiles.h"

#include <QElapsedTimer>

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

QString sequenceFile(const QString& name)
{
    static QTemporaryDir dir;
    [[maybe_unused]] static const QString written = test::runPython(kWriteFiles, {dir.path()});
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
    try {
        decodeStillImage(sequenceFile("claims_huge.png"));
        ADD_FAILURE();
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "the header claims a larger image than the file can hold");
    }
}

template <class T> NdArray row(DType dtype, std::vector<T> values)
{
    NdArray a = NdArray::empty({1, static_cast<int64_t>(values.size())}, dtype);
    std::memcpy(a.mutableData(), values.data(), values.size() * sizeof(T));
    return a;
}

TEST(NormaliseToUInt8, TruncatesEveryStretchedTypeAndFlatOrNanImagesBecomeZero)
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
}

TEST(NormaliseToUInt8, EightBitPassesUnchangedButBilevelStretches)
{
    const NdArray bytes = row<uint8_t>(DType::UInt8, {0, 1, 1});
    const NdArray same = normaliseToUInt8({bytes});
    EXPECT_TRUE(same.sharesStorageWith(bytes));
    EXPECT_EQ(bytesOf(same), (std::vector<int>{0, 1, 1}));
    EXPECT_EQ(bytesOf(normaliseToUInt8({bytes, true})), (std::vector<int>{0, 255, 255}));
}

NdArray counting(const Shape& shape)
{
    NdArray a = NdArray::empty(shape, DType::UInt8);
    std::iota(reinterpret_cast<uint8_t*>(a.mutableData()), reinterpret_cast<uint8_t*>(a.mutableData()) + a.size(), 1);
    return a;
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

QString fileWith(const QByteArray& bytes)
{
    static QTemporaryDir dir;
    static int count = 0;
    return test::writeFile(dir.filePath(QString::number(++count)), bytes);
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
        EXPECT_FALSE(readTextHead(fileWith(bad), 8192)) << bad;
    EXPECT_EQ(readTextHead(fileWith("\xf0\x9f\x98\x80" "ab"), 2), U"\U0001F600a");
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

struct Outcome {
    int ends = 0, progressCount = 0;
    NdArray stack;
    QString error;
};

// Cancelling is the fault injections' (closing the window mid-load), held at each stage.
Outcome load(const QStringList& names)
{
    QStringList paths;
    for (const QString& name : names) paths.append(sequenceFile(name));
    _ImageLoaderWorker worker(7, paths);
    Outcome out;
    QObject::connect(&worker, &_ImageLoaderWorker::progress, [&] { ++out.progressCount; });
    QObject::connect(&worker, &_ImageLoaderWorker::finished, [&](int id, const NdArray& stack) {
        EXPECT_EQ(id, 7);
        ++out.ends, out.stack = stack;
    });
    QObject::connect(&worker, &_ImageLoaderWorker::error, [&](int id, const QString& error) {
        EXPECT_EQ(id, 7);
        ++out.ends, out.error = error;
    });
    worker.run();
    EXPECT_LE(out.ends, 1);
    return out;
}

TEST(ImageLoaderWorker, StacksImagesAndPlaceholdersInOneChannelCount)
{
    const Outcome out = load({"gray8.png", "text.txt", "gray16.png"});
    ASSERT_TRUE(out.ends == 1 && out.error.isEmpty()) << out.error.toStdString();
    EXPECT_EQ(out.stack.shape(), (Shape{3, 4, 5}));
    EXPECT_EQ(out.progressCount, 3);
    // Only unreadable files: placeholders on the default canvas.
    EXPECT_EQ(load({"empty.png", "missing.png"}).stack.shape(), (Shape{2, 256, 256, 3}));
}

TEST(ImageLoaderWorker, MismatchedChannelsAndEmptyListsFail)
{
    EXPECT_FALSE(load({"gray8.png", "gray_alpha.png"}).error.isEmpty());
    const Outcome empty = load({});
    EXPECT_FALSE(empty.error.isEmpty());
    EXPECT_EQ(empty.progressCount, 0);
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

} // namespace
