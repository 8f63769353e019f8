#include "toolboxes/importData/entries/OutputFormat.h"
#include "toolboxes/importData/entries/VariableNames.h"
#include "toolboxes/importData/entries/VolumeParams.h"

#include <gtest/gtest.h>

using namespace torvex;

TEST(VariableNames, TypedTextsBecomeUsablePythonNames)
{
    const std::vector<std::pair<QString, QString>> cases = {
        {"", "cdata"},        {"   ", "cdata"},     {"my data", "my_data"}, {" x ", "x"},
        {"1abc", "cdata"},    {"a-b", "cdata"},     {"\u00e9t\u00e9", "cdata"}, {"a\tb", "cdata"},
        {"ab\t", "ab"},       {"\x1c" "ab", "ab"},  {"class", "cdata"},     {"None", "cdata"},
        {"none", "none"},     {"match", "match"},   {"_", "_"},             {"__x9", "__x9"},
    };
    for (const auto& [typed, expected] : cases) EXPECT_EQ(validVariableName(typed), expected) << typed.toStdString();
    EXPECT_EQ(uniqueVariableName("cdata", {"cdata", "cdata_1"}), "cdata_2");
    EXPECT_EQ(uniqueVariableName("cdata", {"cdata_2"}), "cdata");
}

TEST(VolumeParams, MissingFieldsTakeTheRestoreFallbacks)
{
    EXPECT_TRUE(VolumeParams{}.isEmpty());
    const VolumeParams partial = VolumeParams{.width = 7, .height = 9}.withFallbacks();
    EXPECT_EQ(partial.width, 7);
    EXPECT_EQ(partial.imgType, "8-bit");
    EXPECT_EQ(VolumeParams{.gap = 1}.withFallbacks().width, 0); // not the 400 of a reset
    EXPECT_EQ(VolumeParams::resetValues().height, 640);
}

TEST(OutputFormat, OnlyDhwcCopies)
{
    NdArray gray = NdArray::zeros({2, 3, 4, 1}, DType::UInt16);
    const NdArray dhwc = reformatForImport(gray, "DHWC", false);
    EXPECT_EQ(dhwc.shape(), (Shape{2, 3, 4}));
    EXPECT_FALSE(dhwc.sharesStorageWith(gray));
    EXPECT_EQ(reformatForImport(gray, "DHWC", true).shape(), (Shape{2, 3, 4, 1}));
    const NdArray hwcd = reformatForImport(gray, "HWCD", false);
    EXPECT_EQ(hwcd.shape(), (Shape{3, 4, 2}));
    EXPECT_TRUE(hwcd.sharesStorageWith(gray));
    // A single frame keeps its frame axis; only the channel axis goes.
    EXPECT_EQ(reformatForImport(NdArray::zeros({1, 3, 4, 1}, DType::UInt8), "HWCD", false).shape(), (Shape{3, 4, 1}));
    EXPECT_EQ(reformatForImport(NdArray::zeros({2, 3, 4, 3}, DType::UInt8), "HWCD", false).shape(),
              (Shape{3, 4, 3, 2}));
    EXPECT_TRUE(reformatForImport(gray, "other", false).sharesStorageWith(gray));
}
