// The stand-in host: its context, its workspace panel and saving a variable for Python.
#include "host/AppContext.h"
#include "host/HostWindow.h"
#include "host/WorkspacePanel.h"

#include "../ui/FunctionDialogSteps.h"

#include <QTableWidget>

#include <gtest/gtest.h>

using namespace torvex;

TEST(Host, ImportedVariablesShowInThePanelAndSaveForNumPy)
{
    QTemporaryDir dir;
    QByteArray bytes(3 * 4 * 5 * 2, Qt::Uninitialized);
    for (qsizetype i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i);
    const QString raw = test::writeFile(dir.filePath("v.raw"), bytes);

    HostWindow host(raw);
    ImportData* tool = host.importData();
    test::setVolumePanel(*tool, {.imgType = "16-bit Unsigned", .width = 5, .height = 4, .frame = 3, .readOrder = "C",
                                 .vflip = true});
    tool->onImport();
    QTableWidget* table = host.workspacePanel()->table();
    ASSERT_EQ(table->rowCount(), 1);
    EXPECT_EQ(QStringList({table->item(0, 0)->text(), table->item(0, 1)->text(), table->item(0, 2)->text()}),
              QStringList({"cdata", "(3, 4, 5)", "uint16"}));

    // NumPy reads what the window showed: rows of each frame upside down.
    EXPECT_EQ(host.workspacePanel()->saveRow(0, dir.filePath("cdata.npy")), "");
    EXPECT_EQ(test::runPython("import numpy, sys\n"
                              "a = numpy.load(sys.argv[1])\n"
                              "raw = numpy.fromfile(sys.argv[2], dtype='<u2').reshape(3, 4, 5)[:, ::-1, :]\n"
                              "print(a.shape, a.dtype, bool((a == raw).all()))",
                              {dir.filePath("cdata.npy"), raw}),
              "(3, 4, 5) uint16 True");
    EXPECT_NE(host.workspacePanel()->saveRow(0, dir.filePath("missing/x.npy")), "");
}
