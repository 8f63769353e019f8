#include "toolboxes/importData/loadfunction/ImageSequenceLoadFunction.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace torvex;

TEST(ImageSequenceLoadFunctionText, UsageCommentShowsFolderOfFirstFile)
{
    const auto usageComment = [](const QStringList& fileList) {
        const QStringList lines = imageSequenceLoadFunctionText(fileList, "*.png", false).split(u'\n');
        return lines.at(lines.size() - 2); // the text ends with a line feed
    };
    EXPECT_EQ(usageComment({"/data/shots/a.png", "/other/b.png"}), "# imgs = load_image_sequence(r\"/data/shots\")");
    EXPECT_EQ(usageComment({"a.png"}), "# imgs = load_image_sequence(r\"path/to/folder\")");
    EXPECT_EQ(usageComment({""}), "# imgs = load_image_sequence(r\"path/to/folder\")");
    EXPECT_EQ(usageComment({"C:\\x\"y/a.png"}), "# imgs = load_image_sequence(r\"C:\\x\"y\")"); // no escaping
    // A line end would end the comment: such a name is written as a literal.
    EXPECT_EQ(usageComment({"/x\ny/a.png"}), "# imgs = load_image_sequence('/x\\ny')");
    EXPECT_THROW(imageSequenceLoadFunctionText({}, "*.png", false), std::runtime_error);
}
