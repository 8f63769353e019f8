// The Guess button fills the raw-volume panel as a hand edit would, or leaves it alone.
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/ui/ImportDataForm.h"

#include "../support/TempFiles.h"

#include <QLabel>
#include <QMenu>
#include <QStatusBar>
#include <QtEndian>

#include <cmath>
#include <random>

using namespace torvex;

TEST(GuessWindow, FillsThePanelSoThatAllBytesMatchOrLeavesItAlone)
{
    // Three 96 x 64 frames of a smooth bump with noise, 16-bit big-endian.
    QByteArray bytes;
    std::mt19937 noise(3);
    for (int f = 0; f < 3; ++f)
        for (int y = 0; y < 64; ++y)
            for (int x = 0; x < 96; ++x) {
                const double value = 4000 + 300 * std::hypot(x - 40, y - 35) + 900 * f + noise() % 60;
                const quint16 big = qToBigEndian(static_cast<quint16>(value));
                bytes.append(reinterpret_cast<const char*>(&big), 2);
            }
    QTemporaryDir dir;
    ImportData w(nullptr, nullptr, {}, test::writeFile(dir.filePath("scan.raw"), bytes));
    w.ui->pushButton_guess->click();
    EXPECT_EQ(w.ui->statusbar->currentMessage(),
              "Guessed 16-bit Unsigned, 96 x 64 x 3, big endian, from the file size and the data");
    EXPECT_EQ(w._captureVolumeParams(),
              (VolumeParams{.layout = {.imgType = "16-bit Unsigned", .width = 96, .height = 64, .frame = 3,
                                       .byteOrder = ByteOrder::Big, .readOrder = "C"}}));
    EXPECT_EQ(w._bytes_badge->text(), QString::fromUtf8("\u2714\u00a0All bytes matched"));
    ASSERT_TRUE(w.transferedData);
    EXPECT_EQ(w.transferedData->shape(), (Shape{3, 64, 96, 1}));
    ASSERT_EQ(w.ui->listWidget_data->count(), 1);
    EXPECT_EQ(w.ui->listWidget_data->item(0)->data(Qt::UserRole).value<DataEntry>().params->layout.width, 96);

    // The alternatives, best first; picking one fills the panel with it.
    ASSERT_TRUE(w.ui->toolButton_guessAlternatives->isEnabled());
    const QList<QAction*> alternatives = w.ui->toolButton_guessAlternatives->menu()->actions();
    ASSERT_GE(alternatives.size(), 2);
    EXPECT_EQ(alternatives[0]->text(), "16-bit Unsigned, 96 x 64 x 3, big endian");
    alternatives[1]->trigger();
    const QStringList sizes = alternatives[1]->text().section(", ", 1, 1).split(" x ");
    EXPECT_EQ(w._captureVolumeParams().layout.width, sizes[0].toInt());
    EXPECT_EQ(w._captureVolumeParams().layout.frame, sizes[2].toInt());
    EXPECT_TRUE(w.ui->statusbar->currentMessage().contains(sizes.join(" x "))) << qPrintable(alternatives[1]->text());

    // Noise, and no file at all: a reason, and the panel as it was.
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(noise()); });
    ImportData noisy(nullptr, nullptr, {}, test::writeFile(dir.filePath("noise.raw"), bytes));
    ImportData empty;
    for (ImportData* window : {&noisy, &empty}) {
        window->ui->pushButton_guess->click();
        EXPECT_TRUE(window->ui->statusbar->currentMessage().startsWith("Cannot guess: "));
        EXPECT_FALSE(window->ui->toolButton_guessAlternatives->isEnabled());
        EXPECT_EQ(window->_captureVolumeParams(), VolumeParams::resetValues());
    }
}
