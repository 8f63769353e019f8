// The tool's menus in the host: every shortcut from the keyboard, the raw-file
// dialog's road, the title that names the source, and an import's notice and
// row in the workspace panel (whose save into a missing folder fails).
#include "host/AppContext.h"
#include "host/HostWindow.h"
#include "host/WorkspacePanel.h"
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/ui/PreviewPlot.h"
#include "toolboxes/importData/ui/PreviewSurface.h"

#include "../support/TempFiles.h"

#include <QDir>
#include <QMessageBox>
#include <QStatusBar>
#include <QTableWidget>
#include <QTest>
#include <QTimer>

using namespace torvex;

TEST(HostMenus, EachShortcutDoesItsWorkAndTheHostTellsOfIt)
{
    QTemporaryDir dir;
    const QString first = test::writeFile(dir.filePath("first.raw"), QByteArray(400 * 640, '\x07'));
    ASSERT_TRUE(QDir(dir.path()).mkdir("other"));
    const QString second = test::writeFile(dir.filePath("other/second.raw"), QByteArray(400 * 640, '\x09'));
    EXPECT_EQ(HostWindow().windowTitle(), "Torvex - Import Data");
    HostWindow host(first);
    ImportData* tool = host.importData();
    EXPECT_EQ(host.windowTitle(), "Torvex - Import Data - " + first);

    // Dialog stand-ins note where each started; only the raw-file one picks a file.
    QStringList asked;
    tool->fileDialogs.openFile = [&](QWidget*, const QString&, const QString& folder, const QString&) {
        asked << "raw in " + folder;
        return second;
    };
    tool->fileDialogs.openFiles = [&](QWidget*, const QString&, const QString& folder, const QString&) {
        asked << "files in " + folder;
        return QStringList();
    };
    tool->fileDialogs.openFolder = [&](QWidget*, const QString&, const QString& folder) {
        asked << "folder in " + folder;
        return QString();
    };
    std::optional<Qt::CursorShape> cursorWhileImporting;
    QObject::connect(host.appContext()->get_component("workspace_manager"), &WorkspaceManager::workspaceChanged,
                     [&] { cursorWhileImporting = QApplication::overrideCursor()->shape(); });
    QStringList modals;
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [&] {
        if (QWidget* modal = QApplication::activeModalWidget()) modals << modal->windowTitle(), modal->close();
    });
    closer.start(20);
    host.show();
    QApplication::setActiveWindow(&host);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&host));
    tool->ui->comboBox_outputType->setCurrentIndex(1); // the raw-file road must bring Volume Data back

    const std::vector<std::pair<const char*, std::function<void()>>> cases = {
        {"Ctrl+O", [&] { EXPECT_EQ(asked.value(0), "files in " + dir.path()); }},
        {"Ctrl+Shift+F", [&] { EXPECT_EQ(asked.value(1), "folder in " + dir.path()); }},
        {"Ctrl+Shift+O",
         [&] {
             EXPECT_EQ(asked.value(2), "raw in " + dir.path());
             EXPECT_EQ(tool->ui->comboBox_outputType->currentText(), "Volume Data");
             EXPECT_EQ(tool->readedBinary.value_or("").count('\x09'), 400 * 640);
             EXPECT_EQ(host.windowTitle(), "Torvex - Import Data - " + second);
         }},
        {"Ctrl+I",
         [&] {
             EXPECT_EQ(cursorWhileImporting, Qt::WaitCursor);
             EXPECT_FALSE(QApplication::overrideCursor());
             EXPECT_EQ(host.statusBar()->currentMessage(),
                       "Imported cdata_1 ((1, 640, 400), uint8, 250.0 KiB) into the workspace");
             const QTableWidget* table = host.workspacePanel()->table();
             ASSERT_EQ(table->rowCount(), 1);
             EXPECT_EQ(QStringList({table->item(0, 0)->text(), table->item(0, 1)->text(), table->item(0, 2)->text()}),
                       QStringList({"cdata_1", "(1, 640, 400)", "uint8"}));
             EXPECT_NE(host.workspacePanel()->saveRow(0, dir.filePath("missing/x.npy")), "");
         }},
        {"Ctrl+G", [&] { EXPECT_EQ(modals, QStringList{"Generated Load Function"}); }},
        {"Ctrl+0",
         [&] {
             EXPECT_EQ(tool->_preview_plot->sceneBoundingRect().size(), tool->preview_layoutWin->viewport()->size());
         }},
        {"F1", [&] { EXPECT_TRUE(tool->findChild<QMessageBox*>("helpGuide")->isVisible()); }},
        {"Ctrl+Q", [&] { EXPECT_FALSE(host.isVisible()); }},
    };
    for (const auto& [keys, check] : cases) {
        SCOPED_TRACE(keys);
        QApplication::setActiveWindow(&host); // again after a closed dialog
        QTest::keySequence(&host, QKeySequence(keys));
        check();
    }
}
