// The workspace as a Python namespace: a chosen part of a sequence as NumPy reads
// its files (imported volumes of every type are the function dialog test's),
// statements that fail, and the console's long statements.
#include "host/AppContext.h"
#include "host/HistoryLineEdit.h"
#include "host/HostWindow.h"
#include "host/PythonConsole.h"
#include "host/PythonWorkspaceManager.h"
#include "host/WorkspacePanel.h"

#include "../support/WaitUntil.h"
#include "../ui/FunctionDialogSteps.h"

#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTableWidget>

#include <gtest/gtest.h>

using namespace torvex;

namespace {

PythonWorkspaceManager* workspaceOf(HostWindow& host)
{
    return qobject_cast<PythonWorkspaceManager*>(host.appContext()->get_component("workspace_manager"));
}

// What both sides print of an array `a`: NumPy's reading and the workspace's.
constexpr const char* kDescribe = "print(a.shape, a.dtype.name, repr(float(a.sum(dtype='f8'))), a.ravel()[[0, 11, -1]].tolist())";

} // namespace

TEST(PythonWorkspace, AChosenPartOfASequenceIsGatheredAsTheImagesRead)
{
    QTemporaryDir folder;
    for (int i : {0, 1, 2}) test::writeGrayImage(folder.filePath(QString("img%1.png").arg(i)), 6, 4, 40 * i + 7);
    HostWindow host;
    ImportData& tool = *host.importData();
    tool.ui->comboBox_outputType->setCurrentIndex(1);
    tool.openFile(folder.path());
    ASSERT_TRUE(test::waitUntil([&] { return tool.imageSequence && !tool.session().load.running(); }));
    tool.ui->listWidget_imageList->item(0)->setCheckState(Qt::Unchecked);
    tool.onImport();
    const QString name = tool.ui->listWidget_data->item(0)->text();
    EXPECT_EQ(workspaceOf(host)->run_python("a = " + name + "\n" + kDescribe).trimmed(),
              test::runPython(QString("import numpy, sys\nfrom PIL import Image\n"
                                      "a = numpy.stack([numpy.asarray(Image.open(p)) for p in sys.argv[1:]])\n")
                                  + kDescribe,
                              {folder.filePath("img1.png"), folder.filePath("img2.png")}));
}

TEST(PythonWorkspace, FailingStatementsAreReportedAndTheWorkspaceStaysConsistent)
{
    struct Case {
        const char* code;
        const char* printed; // a part of what it prints
        const char* cdataType; // the workspace's cdata afterwards, "" when gone
        const char* names; // the namespace's names afterwards
    };
    const char* kept = "['cdata', 'np']\n";
    const std::vector<Case> cases = {
        {"1/0", "ZeroDivisionError: division by zero", "uint16", kept},
        {"def f(:", "SyntaxError: invalid syntax", "uint16", kept},
        {"import sys; sys.exit(3)", "SystemExit(3): the console stays open", "uint16", "['cdata', 'np', 'sys']\n"},
        {"input()", "EOFError", "uint16", kept},
        {"cdata[0, 0] = 1", "ValueError: assignment destination is read-only", "uint16", kept},
        {"cdata", "array([[ 258,  772, 1286]], dtype=uint16)", "uint16", kept},
        {"cdata = cdata.astype('>f4')", "", "float32", kept},
        {"del cdata", "cdata was deleted in the console, so it has left the workspace", "", "['np']\n"},
        {"cdata = cdata.astype(int)", "cdata is now ndarray of int64, which the workspace cannot hold", "", kept},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.code);
        PythonWorkspaceManager workspace;
        std::map<QString, NdArray> data{
            {"cdata", NdArray::wrap(QByteArray("\x02\x01\x04\x03\x06\x05", 6), 0, 6, DType::UInt16, ByteOrder::Little)
                          .reshape({1, 3})}};
        workspace.update_workspace_data(data);
        const QString printed = workspace.run_python(c.code);
        EXPECT_TRUE(printed.contains(c.printed)) << printed.toStdString();
        const auto& after = workspace.get_workspace_data();
        EXPECT_EQ(after.count("cdata") ? dtypeName(after.at("cdata").dtype()) : "", c.cdataType);
        EXPECT_EQ(workspace.run_python("print(sorted(k for k in globals() if not k.startswith('_')))"), c.names);
    }

    // A name the console already uses is kept aside when the tool imports under it.
    PythonWorkspaceManager workspace;
    workspace.run_python("cdata = 'mine'");
    std::map<QString, NdArray> data{{"cdata", NdArray::zeros({2}, DType::UInt8)}};
    QSignalSpy notes(&workspace, &PythonWorkspaceManager::output);
    workspace.update_workspace_data(data);
    EXPECT_EQ(workspace.run_python("cdata_old, cdata"), "('mine', array([0, 0], dtype=uint8))\n");
    EXPECT_EQ(notes.size(), 1);

    // A stream kept from one statement is still safe to write to in the next.
    workspace.run_python("import sys; kept = sys.stdout");
    EXPECT_EQ(workspace.run_python("kept.write('late')"), "4\n");
}

TEST(PythonWorkspace, TheConsoleRunsLongStatementsThatStopOnRequestOrWhenTheWindowCloses)
{
    auto host = std::make_unique<HostWindow>();
    PythonConsole* console = host->pythonConsole();
    PythonWorkspaceManager* workspace = workspaceOf(*host);
    console->submit("big = np.lib.stride_tricks.as_strided(np.zeros(1, 'u1'), (2**31, 3), (0, 0))");
    ASSERT_TRUE(test::waitUntil([&] { return !workspace->isRunning(); }));
    QTableWidget* table = host->workspacePanel()->table();
    ASSERT_EQ(table->rowCount(), 1);
    EXPECT_EQ(table->item(0, 1)->text(), "(2147483648, 3)");
    EXPECT_EQ(table->item(0, 3)->text() + " / " + table->item(0, 3)->toolTip(), "6.0 GiB / 6,442,450,944 bytes");

    console->submit("while True: pass");
    EXPECT_TRUE(workspace->isRunning());
    EXPECT_TRUE(workspace->run_python("1").contains("still running"));
    QTest::keyClick(console->input(), Qt::Key_C, Qt::ControlModifier);
    // The traceback reaches the pane through the event loop, after the statement ends.
    EXPECT_TRUE(test::waitUntil([&] {
        return !workspace->isRunning() && console->outputPane()->toPlainText().endsWith("KeyboardInterrupt\n");
    })) << console->outputPane()->toPlainText().right(200).toStdString();
    QTest::keyClick(console->input(), Qt::Key_Up);
    EXPECT_EQ(console->input()->text(), "while True: pass");

    // Saving a console array goes through NumPy.
    QTemporaryDir dir;
    workspace->run_python("small = np.arange(6, dtype='>i8').reshape(2, 3)[:, ::-1]");
    EXPECT_EQ(host->workspacePanel()->saveRow(1, dir.filePath("small.npy")), "");
    EXPECT_EQ(test::runPython("import numpy, sys; print(numpy.load(sys.argv[1]).tolist())", {dir.filePath("small.npy")}),
              "[[2, 1, 0], [5, 4, 3]]");

    console->submit("while True: pass");
    QElapsedTimer closing;
    closing.start();
    host.reset();
    EXPECT_LT(closing.elapsed(), 3000);
}

TEST(PythonWorkspace, TheConsoleFollowsItsNewestOutputUnlessScrolledUp)
{
    HostWindow host;
    host.resize(900, 500);
    host.show();
    QPlainTextEdit* pane = host.pythonConsole()->outputPane();
    const auto run = [&](const QString& statement) {
        host.pythonConsole()->submit(statement);
        EXPECT_TRUE(test::waitUntil([&] { return !workspaceOf(host)->isRunning(); }));
        QTest::qWait(50);
    };
    const auto newestInView = [pane] {
        QTextCursor end(pane->document());
        end.setPosition(pane->document()->characterCount() - 2); // the end of the last line printed
        return pane->viewport()->rect().contains(pane->cursorRect(end));
    };
    run("for i in range(300): print('line', i)\nprint('w' * 4000 + ' last')");
    EXPECT_TRUE(newestInView());
    host.resize(900, 320); // a smaller pane too
    QTest::qWait(50);
    EXPECT_TRUE(newestInView());
    // Scrolled up, the pane stays on the line the user reads.
    pane->verticalScrollBar()->setValue(100);
    const auto topLine = [pane] { return pane->cursorForPosition(QPoint(1, 1)).blockNumber(); };
    const int reading = topLine();
    run("print('more')");
    EXPECT_EQ(topLine(), reading);
}
