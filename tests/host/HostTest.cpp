// The stand-in host: its context, its workspace panel and a save that fails.
#include "host/AppContext.h"
#include "host/HostWindow.h"
#include "host/WorkspacePanel.h"

#include "../ui/FunctionDialogSteps.h"

#include <QTableWidget>

#include <gtest/gtest.h>

using namespace torvex;

TEST(Host, ImportedVariablesShowInThePanel)
{
    QTemporaryDir dir;
    HostWindow host(test::writeFile(dir.filePath("v.raw"), QByteArray(3 * 4 * 5 * 2, '\x01')));
    ImportData* tool = host.importData();
    test::setVolumePanel(*tool, {.imgType = "16-bit Unsigned", .width = 5, .height = 4, .frame = 3});
    tool->onImport();
    QTableWidget* table = host.workspacePanel()->table();
    ASSERT_EQ(table->rowCount(), 1);
    EXPECT_EQ(QStringList({table->item(0, 0)->text(), table->item(0, 1)->text(), table->item(0, 2)->text()}),
              QStringList({"cdata", "(3, 4, 5)", "uint16"}));

    // What NumPy reads of a saved variable is the console test's; the imported array is the function dialog test's.
    EXPECT_NE(host.workspacePanel()->saveRow(0, dir.filePath("missing/x.npy")), "");
}
