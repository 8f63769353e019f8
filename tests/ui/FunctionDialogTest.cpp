// Generate Function in the real window: failures that open no dialog, and
// saving the text. The text itself is checked by running it against the window,
// failed saves among the fault injections.
#include "FunctionDialogSteps.h"

namespace torvex {
namespace {

using namespace test;

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
    // What is saved is the generated text, not what the text box shows. The
    // file is made longer in between, so that a leftover tail would show; a
    // cancelled choice says nothing and keeps the dialog open.
    const auto look = [&](QTextEdit* text) {
        generated = text->toPlainText();
        text->setPlainText("changed on screen");
    };
    const auto lengthen = [&] {
        EXPECT_EQ(contentOf(target), generated.toUtf8());
        writeFile(target, QByteArray(10000, 'x'));
    };
    play(w, {press("Save to File", look), saveAs(target), messageBox(boxes, lengthen),
             press("Save to File"), saveAs(target), messageBox(boxes),
             press("Save to File"), cancelSave(), press("OK")});
    EXPECT_EQ(boxes, QStringList(2, "Success|Function saved successfully."));
    EXPECT_TRUE(generated.contains(QChar(0xD7)));
    EXPECT_EQ(contentOf(target), generated.toUtf8());
}

} // namespace
} // namespace torvex
