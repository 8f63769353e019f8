#include "toolboxes/importData/entries/VariableNames.h"

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
