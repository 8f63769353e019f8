// The status strip's colour says how its news is: never green for an error,
// nor for a raw file whose bytes do not balance.
#include "toolboxes/importData/ImportData.h"

#include "../support/TempFiles.h"

#include <QStatusBar>

using namespace torvex;

TEST(StatusStrip, TakesTheColourOfWhatItSays)
{
    const QString red = "#c42b1c", amber = "#a85d00", green = "#16825d", slate = "#37556f";
    QTemporaryDir dir;
    const QString exact = test::writeFile(dir.filePath("exact.raw"), QByteArray(400 * 640, '\x07'));
    const QString longer = test::writeFile(dir.filePath("longer.raw"), QByteArray(400 * 640 + 5, '\x07'));
    ImportData w;
    QStatusBar* strip = w.ui->statusbar;
    const std::vector<std::pair<std::function<void()>, QString>> cases = {
        {[&] { w.openFile(exact); }, green},
        {[&] { w.openFile(longer); }, amber}, // "File loaded successfully!" beside an amber badge
        {[&] { w.ui->spinBox_totalFrame->setValue(1000); }, red},
        {[&] { w.ui->spinBox_width->setValue(0); }, amber},
        {[&] { strip->showMessage("Error loading images: broken.png"); }, red},
        {[&] { strip->showMessage("Missing 2 of 5 numbered files: 3, 4"); }, amber},
        {[&] { strip->showMessage("Numbered names out of order: a10.png sorts before a2.png"); }, amber},
        {[&] { strip->showMessage("Remaining bytes (unread): +0"); }, green},
        {[&] { strip->showMessage("3 image(s) loaded"); }, green},
        {[&] { w.onGuessLayout(); }, amber}, // "Cannot guess: ..." on a constant file
        {[&] { strip->showMessage("Guessed 8-bit, 400 x 640 x 1, little endian, from the file size"); }, green},
        {[&] { strip->showMessage("The file changed on disk while open (...): a.raw"); }, amber},
        {[&] { strip->showMessage("Loading file: a.raw"); }, slate},
        {[&] { strip->clearMessage(); }, slate},
    };
    for (size_t i = 0; i < cases.size(); ++i) {
        cases[i].first();
        const QString message = strip->currentMessage();
        EXPECT_TRUE(strip->styleSheet().contains(cases[i].second)) << i << ": " << message.toStdString();
    }
}
