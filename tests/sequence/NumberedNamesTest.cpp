// Natural order, the out-of-order notice and missing numbers of file names.
#include "toolboxes/importData/sequence/NumberedNames.h"

#include "../support/TempFiles.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <algorithm>

using namespace torvex;

namespace {

const QStringList kTrickyNames = {
    "img10.png", "img2.png", "img1.png", "a01.png", "a1.png", "a001.png", "b.png", "b0.png", "10.png", "9",
    "x99999999999999999999999.png", "x100000000000000000000000.png", "x9.png", QString::fromUtf8("n\u0663.png"),
    QString::fromUtf8("n2.png"), QString::fromUtf8("n\u00b2.png"), "", "2", "02", "a2b10", "a2b9", "a10b1",
};

} // namespace

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
    QStringList expected;
    for (const QJsonValue& v : QJsonDocument::fromJson(python.toUtf8()).array()) expected << v.toString();
    EXPECT_EQ(ours, expected);
}

TEST(NumberedNames, TheFirstPlainPairOutOfNumericOrderIsNamed)
{
    EXPECT_EQ(firstNumberedPairOutOfOrder({"img1.png", "img10.png", "img2.png"}),
              (std::pair<QString, QString>{"img10.png", "img2.png"}));
    EXPECT_EQ(firstNumberedPairOutOfOrder({"s1", "s10", "s100", "s11", "s2"}), (std::pair<QString, QString>{"s10", "s2"}));
    for (const QStringList& agreeing : {QStringList{"a.png", "b.png"}, QStringList{"img01.png", "img02.png"},
                                        QStringList{"a01.png", "a1.png"}, QStringList{}, QStringList{"one"}})
        EXPECT_FALSE(firstNumberedPairOutOfOrder(agreeing)) << agreeing.join(' ').toStdString();
}

struct SeriesCase {
    QStringList names;
    std::optional<QString> message;
};

class MissingSeries : public ::testing::TestWithParam<SeriesCase> {};

TEST_P(MissingSeries, ReportsGapsOfOneNumberedSeriesOnly)
{
    const std::optional<MissingNumbers> gap = missingNumbers(GetParam().names);
    ASSERT_EQ(gap.has_value(), GetParam().message.has_value());
    if (gap) EXPECT_EQ(missingNumbersMessage(*gap), *GetParam().message);
}

QStringList numbered(const QString& prefix, std::initializer_list<int> numbers, const QString& suffix)
{
    QStringList names;
    for (int n : numbers) names << prefix + QString::number(n) + suffix;
    return names;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MissingSeries,
    ::testing::Values(
        SeriesCase{numbered("slice_", {1, 2, 4, 5, 7}, ".png"), "Missing 2 of 7 numbered files: 3, 6"},
        SeriesCase{numbered("s", {0, 12}, ".tif"),
                   QString::fromUtf8("Missing 11 of 13 numbered files: 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, \u2026")},
        SeriesCase{{"scan2_001.png", "scan2_003.png"}, "Missing 1 of 3 numbered files: 2"}, // one run varies
        SeriesCase{numbered("s", {1, 2, 3}, ".png"), std::nullopt},                      // complete
        SeriesCase{{"a1b1.png", "a2b3.png"}, std::nullopt},                              // two runs vary
        SeriesCase{{"a1.png", "b3.png"}, std::nullopt},                                  // other prefix
        SeriesCase{{"a1.png", "a3.tif"}, std::nullopt},                                  // other suffix
        SeriesCase{{"a.png", "b.png"}, std::nullopt},                                    // no numbers
        SeriesCase{{"a1.png"}, std::nullopt},                                            // one file
        SeriesCase{{"x1.png", "x99999999999999999999.png"}, std::nullopt}));             // beyond 63 bits
