// Generate Function in the real window: the dialog with the generated text,
// the failures that open none, and saving the text. Saves that fail are the
// fault-injection tests'.
#include "FunctionDialogSteps.h"
#include "VolumePanel.h"

#include "../support/TempFiles.h"

namespace torvex {
namespace {

using namespace test;

TEST(FunctionDialog, ShowsTheTextOfThePanel)
{
    ImportData w;
    // Every setting away from its start value and distinct, so that a field read from the wrong widget shows.
    const LoadFunctionParams panel{.imgType = "32-bit ABGR", .offset = 11, .gap = 13, .width = 17, .height = 19,
                                   .frame = 23, .littleEndian = true, .readOrder = "C", .colorOrder = "ABCABC",
                                   .permute = "2,1,0", .hflip = true, .vflip = true, .data_format = "HWCD",
                                   .keep_c_on_gray = true};
    setVolumePanel(w, panel);
    QString shown;
    play(w, {pressInFunctionDialog("OK", [&](QTextEdit* text) { shown = text->toPlainText(); })});
    EXPECT_EQ(shown.toStdString(), w._gen_function(panel).toStdString());
}

TEST(FunctionDialog, FailedGenerationIsReportedAndOpensNoDialog)
{
    ImportData w;
    QStringList boxes;
    w.ui->comboBox_imgType->setEditable(true);
    w.ui->comboBox_imgType->setCurrentText("12-bit Packed");
    play(w, {messageBox(boxes)});
    // An image sequence needs an entry to name its folder.
    w.ui->comboBox_outputType->setCurrentText("Image Sequence");
    play(w, {messageBox(boxes)});
    ASSERT_EQ(boxes.size(), 2);
    EXPECT_EQ(boxes[0], "Error|Failed to generate function: Unsupported image type: 12-bit Packed");
    EXPECT_TRUE(boxes[1].startsWith("Error|Failed to generate function: ")) << boxes[1].toStdString();
}

TEST(FunctionDialog, SavingWritesTheGeneratedTextAsUtf8AndReplacesTheFileEachTime)
{
    ImportData w;
    QTemporaryDir dir;
    const QString target = dir.filePath("load.py");
    w._addDataEntry("data_imgs", "Image Sequence", std::nullopt, QStringList{"/data/shots/a.png"});
    w.ui->comboBox_outputType->setCurrentText("Image Sequence");
    QString generated;
    QStringList boxes;
    play(w, {
        // What is saved is the generated text, not what the text box shows.
        pressInFunctionDialog("Save to File",
                              [&](QTextEdit* text) {
                                  generated = text->toPlainText();
                                  text->setPlainText("changed on screen");
                              }),
        saveAs(target),
        messageBox(boxes,
                   [&] {
                       EXPECT_EQ(contentOf(target), generated.toUtf8());
                       writeFile(target, QByteArray(10000, 'x')); // longer, so that a leftover tail would show
                   }),
        pressInFunctionDialog("Save to File"),
        saveAs(target),
        messageBox(boxes),
        // A cancelled choice says nothing and keeps the dialog open.
        pressInFunctionDialog("Save to File"),
        cancelSave(),
        pressInFunctionDialog("OK"),
    });
    EXPECT_EQ(boxes, QStringList(2, "Success|Function saved successfully."));
    EXPECT_TRUE(generated.contains(QChar(0xD7)));
    EXPECT_EQ(contentOf(target), generated.toUtf8());
}

} // namespace
} // namespace torvex
