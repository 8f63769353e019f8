#include "toolboxes/importData/sequence/FileFilter.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

using namespace torvex;

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
