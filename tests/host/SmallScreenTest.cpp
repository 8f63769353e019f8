// On a 1366 x 768 screen under a desktop panel, the host's window shows every control a first use
// needs without scrolling, in both modes.
#include "host/HostWindow.h"

#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/ui/VolumePanelBindings.h"

#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace torvex;

TEST(SmallScreen, FirstUseControlsAreInViewInBothModes)
{
    QTemporaryDir dir;
    QFile raw(dir.filePath("scan.raw"));
    ASSERT_TRUE(raw.open(QIODevice::WriteOnly) && raw.resize(400 * 640));
    for (const bool folderMode : {false, true}) {
        HostWindow host(folderMode ? dir.path() : raw.fileName(), folderMode);
        host.resize(QSize(1366, 740) * 0.9); // what the host takes of the screen
        host.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&host));
        const Ui::ImportData& ui = *host.importData()->ui;
        // The top of the column is always in view; what comes last in it is what scrolls away.
        QList<QWidget*> needed = {ui.pushButton_guess, ui.toolButton_guessAlternatives, ui.listWidget_imageList,
                                  ui.listWidget_data, ui.pushButton_import, ui.pushButton_generate_function};
        for (const VolumePanelBinding& row : volumePanelBindings())
            needed << host.importData()->findChild<QWidget*>(row.widget);
        for (QWidget* w : needed)
            if (w->isVisible()) EXPECT_EQ(w->visibleRegion().boundingRect(), w->rect()) << w->objectName().toStdString();
        const QRect preview(ui.stackedWidget_preview->mapTo(&host, QPoint()), ui.stackedWidget_preview->size());
        EXPECT_TRUE(host.rect().contains(preview) && preview.height() > host.height() / 2) << folderMode;
    }
}
