// On a 1366 x 768 screen, with room left for a desktop panel, the host's default window shows every
// control a first use needs without scrolling, in both modes.
#include "host/HostWindow.h"

#include "toolboxes/importData/ImportData.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace torvex;

TEST(SmallScreen, FirstUseControlsAreInViewInBothModes)
{
    QTemporaryDir dir;
    QFile raw(dir.filePath("scan.raw"));
    ASSERT_TRUE(raw.open(QIODevice::WriteOnly) && raw.write(QByteArray(400 * 640, '\x40')) == 400 * 640);
    raw.close();
    // What the host takes of a 1366 x 768 screen under a 28-pixel panel.
    const QSize window = (QSize(1366, 740) * 0.9);
    for (const bool folderMode : {false, true}) {
        HostWindow host(folderMode ? dir.path() : raw.fileName(), folderMode);
        host.resize(window);
        host.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&host));
        QTest::qWait(50);
        const Ui::ImportData& ui = *host.importData()->ui;
        QList<QWidget*> needed = {ui.comboBox_outputType, ui.lineEdit_files_folder, ui.listWidget_data,
                                  ui.pushButton_import, ui.pushButton_generate_function};
        if (folderMode) needed << ui.lineEdit_filter << ui.pushButton_allSelection << ui.listWidget_imageList;
        else needed << ui.comboBox_imgType << ui.spinBox_width << ui.spinBox_height << ui.spinBox_totalFrame
                    << ui.pushButton_guess;
        for (QWidget* w : needed)
            EXPECT_EQ(w->visibleRegion().boundingRect(), w->rect()) << w->objectName().toStdString() << " folder " << folderMode;
        const QRect preview(ui.stackedWidget_preview->mapTo(&host, QPoint()), ui.stackedWidget_preview->size());
        EXPECT_TRUE(host.rect().contains(preview) && preview.height() > window.height() / 2) << folderMode;
    }
}
