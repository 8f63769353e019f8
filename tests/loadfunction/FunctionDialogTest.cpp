// Generate Function in the real window: the dialog with the generated text,
// the failures that open none, and saving the text to a file.
#include "FunctionDialogSteps.h"
#include "VolumePanel.h"
#include "toolboxes/importData/ImportData.h"

#include "../support/TempFiles.h"

#include <QTextEdit>

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <csignal>

namespace torvex {
namespace {

using namespace test;

// A disk that takes no more than a few bytes per file, for as long as this
// lives. Stands in for an unwritable target also for root, whom folder
// permissions do not stop.
class FileSizeLimit {
public:
    FileSizeLimit() : oldHandler_(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &old_);
        rlimit tiny = old_;
        tiny.rlim_cur = 16;
        setrlimit(RLIMIT_FSIZE, &tiny);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &old_);
        std::signal(SIGXFSZ, oldHandler_);
    }

private:
    void (*oldHandler_)(int);
    rlimit old_{};
};

class FunctionDialog : public ::testing::Test {
protected:
    ImportData w;
    QTemporaryDir dir;
    QString target = dir.filePath("load.py");
    QStringList boxes;

    void play(std::vector<Step> steps)
    {
        test::ModalScript script(std::move(steps));
        w.onGenerateFunction();
        EXPECT_EQ(script.pendingSteps(), 0);
        EXPECT_EQ(script.unexpected.join('\n').toStdString(), "");
    }
};

TEST_F(FunctionDialog, ShowsTheTextOfThePanel)
{
    // Every setting away from its start value and distinct, so that a field read from the wrong widget shows.
    const LoadFunctionParams panel{.imgType = "32-bit ABGR", .offset = 11, .gap = 13, .width = 17, .height = 19,
                                   .frame = 23, .littleEndian = true, .readOrder = "C", .colorOrder = "ABCABC",
                                   .permute = "2,1,0", .hflip = true, .vflip = true, .data_format = "HWCD",
                                   .keep_c_on_gray = true};
    test::setVolumePanel(w, panel);
    QString shown;
    play({pressInFunctionDialog("OK", [&](QTextEdit* text) { shown = text->toPlainText(); })});
    EXPECT_EQ(shown.toStdString(), w._gen_function(panel).toStdString());
}

TEST_F(FunctionDialog, FailedGenerationIsReportedAndOpensNoDialog)
{
    w.ui->comboBox_imgType->setEditable(true);
    w.ui->comboBox_imgType->setCurrentText("12-bit Packed");
    play({messageBox(boxes)});
    EXPECT_EQ(boxes.join('\n').toStdString(),
              "Error|Failed to generate function: Unsupported image type: 12-bit Packed");

    // An image sequence needs an entry to name its folder.
    w.ui->comboBox_outputType->setCurrentText("Image Sequence");
    play({messageBox(boxes)});
    ASSERT_EQ(boxes.size(), 2);
    EXPECT_TRUE(boxes[1].startsWith("Error|Failed to generate function: ")) << boxes[1].toStdString();
}

TEST_F(FunctionDialog, SavingWritesTheGeneratedTextAsUtf8AndReplacesTheFileEachTime)
{
    w._addDataEntry("data_imgs", "Image Sequence", std::nullopt, QStringList{"/data/shots/a.png"});
    w.ui->comboBox_outputType->setCurrentText("Image Sequence");
    QString generated;
    play({
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
                       test::writeFile(target, QByteArray(10000, 'x')); // longer, so a leftover tail would show
                   }),
        pressInFunctionDialog("Save to File"),
        saveAs(target),
        messageBox(boxes),
        // A cancelled choice says nothing and keeps the dialog open.
        pressInFunctionDialog("Save to File"),
        cancelSave(),
        pressInFunctionDialog("OK"),
    });
    EXPECT_EQ(boxes.join('\n').toStdString(),
              "Success|Function saved successfully.\nSuccess|Function saved successfully.");
    EXPECT_TRUE(generated.contains(QChar(0xD7)));
    EXPECT_EQ(contentOf(target), generated.toUtf8());
}

TEST_F(FunctionDialog, AFailedSaveKeepsTheEarlierFileAndTheDialogForAnotherTry)
{
    const LoadFunctionParams panel{.imgType = "8-bit", .width = 4, .height = 4, .frame = 1};
    test::setVolumePanel(w, panel);
    test::writeFile(target, "earlier");
    std::optional<FileSizeLimit> fullDisk;
    play({
        pressInFunctionDialog("Save to File"),
        saveAs(target, [&] { fullDisk.emplace(); }),
        messageBox(boxes,
                   [&] {
                       fullDisk.reset();
                       EXPECT_EQ(contentOf(target), "earlier");
                   }),
        pressInFunctionDialog("Save to File"),
        saveAs(target),
        messageBox(boxes),
        pressInFunctionDialog("OK"),
    });
    ASSERT_EQ(boxes.size(), 2);
    EXPECT_TRUE(boxes[0].startsWith("Error|Failed to save function: ")) << boxes[0].toStdString();
    EXPECT_EQ(boxes[1].toStdString(), "Success|Function saved successfully.");
    EXPECT_EQ(contentOf(target), w._gen_function(panel).toUtf8());
}

} // namespace
} // namespace torvex
