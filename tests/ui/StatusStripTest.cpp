// The status strip's colour says how its news is: never green for an error,
// nor for a raw file whose bytes do not balance.
#include "toolboxes/importData/ImportData.h"

#include "../support/TempFiles.h"
#include "../support/VolumePanel.h"

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
        {[&] { test::editVolumePanel(w, [](VolumeParams& p) { p.layout.frame = 1000; }); }, red},
        {[&] { test::editVolumePanel(w, [](VolumeParams& p) { p.layout.frame = 1; }); }, amber}, // "+5" left over
        {[&] { test::editVolumePanel(w, [](VolumeParams& p) { p.layout.width = 0; }); }, amber},
        {[&] { w.ui->pushButton_guess->click(); }, amber}, // "Cannot guess: ..." on a constant file
        // Text the window did not send (a tip, the host's) is plain news, whatever it says.
        {[&] { strip->showMessage("Error: from elsewhere"); }, slate},
        {[&] { strip->clearMessage(); }, slate},
    };
    for (size_t i = 0; i < cases.size(); ++i) {
        cases[i].first();
        EXPECT_TRUE(strip->styleSheet().contains(cases[i].second)) << i << ": " << strip->currentMessage().toStdString();
    }
}
