#include "SequenceFiles.h"

#include "toolboxes/importData/sequence/PlaceholderFrame.h"
#include "toolboxes/importData/sequence/PlaceholderLayout.h"
#include "toolboxes/importData/sequence/TextHead.h"

#include "../support/TempFiles.h"

#include <gtest/gtest.h>

using namespace torvex;

static QString fileWith(const QByteArray& bytes)
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
static int separatorRow(const NdArray& frame, const std::vector<int>& colour)
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
