#include "SequenceFiles.h"

#include "toolboxes/importData/sequence/PlaceholderFrame.h"
#include "toolboxes/importData/sequence/PlaceholderLayout.h"
#include "toolboxes/importData/sequence/TextHead.h"

#include <QTemporaryFile>

#include <gtest/gtest.h>

using namespace torvex;

namespace {

QString fileWith(const QByteArray& bytes)
{
    static std::vector<std::unique_ptr<QTemporaryFile>> files;
    files.push_back(std::make_unique<QTemporaryFile>());
    files.back()->open();
    files.back()->write(bytes);
    files.back()->close();
    return files.back()->fileName();
}

QStringList linesOf(const std::u32string& text) { return wrapLines(splitTextLines(text), 100); }

TEST(PlaceholderText, SplitsAtEveryLineBoundaryAndWrapsByCharacterCount)
{
    EXPECT_EQ(linesOf(U"a\nb\vc\fd\x1c" U"e\x1d" U"f\x1e" U"g\x85h\u2028i\u2029j\rk\r\nl\n"),
              QStringList({"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l"}));
    EXPECT_EQ(linesOf(U"\n\nx"), QStringList({"", "", "x"}));
    EXPECT_EQ(linesOf(U""), QStringList());
    EXPECT_EQ(wrapLines({U"abcdefg", U"", U"abcdef"}, 3), QStringList({"abc", "def", "g", "", "abc", "def"}));
    EXPECT_EQ(wrapLines({U"\U0001F600x"}, 1), QStringList({QString::fromUtf8("\U0001F600"), "x"}));
}

TEST(PlaceholderText, ReadsStrictUtf8WithNewlinesTranslated)
{
    const auto text = readTextHead(sequenceFile("text.txt"), 8192);
    ASSERT_TRUE(text);
    EXPECT_EQ(*text, U"first line\nsecond\nthird\u2028fourth\n");
    // CR LF is one character of the limit.
    EXPECT_EQ(readTextHead(sequenceFile("text.txt"), 13), U"first line\nse");
    for (const char* bad : {"\xed\xa0\x80", "\xc0\xaf", "ok\xc3", "\xf4\x90\x80\x80", "\xff"})
        EXPECT_FALSE(readTextHead(fileWith(bad), 8192)) << bad;
    EXPECT_EQ(readTextHead(fileWith("\xf0\x9f\x98\x80" "ab"), 2), U"\U0001F600a");
}

TEST(PlaceholderText, HexRowsHoldWhatTheWidthAllows)
{
    QByteArray bytes;
    for (int i = 0; i < 20; ++i) bytes.append(char(i + 250));
    EXPECT_EQ(hexDumpRows(bytes, 18).first(), "0000: fa fb fc fd");
    EXPECT_EQ(hexDumpRows(bytes, 18).last(), "0010: 0a 0b 0c 0d");
    EXPECT_EQ(hexDumpRows(bytes, 8).size(), 20); // below 9 characters, one byte a row
}

TEST(PlaceholderText, FallsBackFromTextToHexToUnreadable)
{
    EXPECT_EQ(placeholderContentLines(sequenceFile("empty.png"), 40), QStringList());
    EXPECT_EQ(placeholderContentLines(sequenceFile("text.txt"), 6),
              QStringList({"first ", "line", "second", "third", "fourth"}));
    EXPECT_EQ(placeholderContentLines(sequenceFile("binary.bin"), 40).first(),
              "0000: fa fb fc fd fe ff 00 01 02 03 04");
    EXPECT_EQ(placeholderContentLines(sequenceFile("missing.bin"), 40), QStringList({"<unreadable>"}));
}

TEST(PlaceholderText, EllipsisReplacesLinesBeyondMaxLinesMinusTwo)
{
    EXPECT_EQ(shownContent(3, 5).lineCount, 3);
    EXPECT_FALSE(shownContent(3, 5).ellipsis);
    EXPECT_EQ(shownContent(4, 5).lineCount, 3);
    EXPECT_TRUE(shownContent(4, 5).ellipsis);
    EXPECT_EQ(shownContent(1, 2).lineCount, 0);
    EXPECT_TRUE(shownContent(1, 1).ellipsis);
    EXPECT_FALSE(shownContent(0, 1).ellipsis);
    EXPECT_EQ(placeholderGeometry(256, 256, 7, 13).maxCharsPerLine, 35);
    EXPECT_EQ(placeholderGeometry(256, 256, 7, 13).maxLines, 19);
    EXPECT_EQ(placeholderGeometry(5, 5, 0, 0).maxLines, 1);
}

// The separator runs from x = 4 to the width minus 4 in its colour.
int separatorRow(const NdArray& frame, const std::vector<int>& colour)
{
    const int64_t width = frame.extent(1), channels = colour.size();
    const std::vector<int> px = bytesOf(frame);
    for (int64_t y = 0; y < frame.extent(0); ++y) {
        const auto row = px.begin() + y * width * channels;
        if (std::vector<int>(row + 4 * channels, row + 5 * channels) == colour
            && std::vector<int>(row + (width - 4) * channels, row + (width - 3) * channels) == colour)
            return static_cast<int>(y);
    }
    return -1;
}

TEST(PlaceholderFrame, DrawsInTheColoursOfItsChannelCount)
{
    const NdArray tinted = renderPlaceholderFrame(sequenceFile("text.txt"), 120, 60, 3);
    ASSERT_EQ(tinted.shape(), (Shape{60, 120, 3}));
    const std::vector<int> tintedPx = bytesOf(tinted);
    EXPECT_EQ(std::vector<int>(tintedPx.begin(), tintedPx.begin() + 3), (std::vector<int>{18, 18, 30}));
    EXPECT_GT(separatorRow(tinted, {80, 80, 100}), 8);

    const NdArray gray = renderPlaceholderFrame(sequenceFile("text.txt"), 120, 60, 1);
    ASSERT_EQ(gray.shape(), (Shape{60, 120}));
    EXPECT_EQ(bytesOf(gray).front(), 18);
    EXPECT_EQ(separatorRow(gray, {80}), separatorRow(tinted, {80, 80, 100}));
    const std::vector<int> px = bytesOf(gray);
    EXPECT_NE(std::find(px.begin(), px.end(), 200), px.end()) << "header drawn in its colour";
}

} // namespace
