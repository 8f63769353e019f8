#include "HostWindow.h"

#include "AppContext.h"
#include "PythonConsole.h"
#include "PythonWorkspaceManager.h"
#include "WorkspacePanel.h"
#include "toolboxes/importData/ImportData.h"

#include <QDockWidget>
#include <QSplitter>
#include <QStatusBar>

namespace torvex {

HostWindow::HostWindow(const QString& filePath, bool folderMode) : appContext_(std::make_unique<AppContext>())
{
    setWindowTitle("Torvex");
    statusBar()->showMessage("Workspace ready");
    importData_ = new ImportData(this, appContext_.get(), {}, filePath, folderMode);
    // The tool builds itself as a top-level window; the host embeds it.
    importData_->setParent(this, Qt::Widget);
    setCentralWidget(importData_);

    // The host's own context keeps the workspace in Python (see AppContext.h).
    auto* workspace = qobject_cast<PythonWorkspaceManager*>(appContext_->get_component("workspace_manager"));
    workspacePanel_ = new WorkspacePanel(workspace);
    pythonConsole_ = new PythonConsole(workspace);
    // The console sits under the table in the same column: the window gets no wider.
    auto* column = new QSplitter(Qt::Vertical);
    column->addWidget(workspacePanel_);
    column->addWidget(pythonConsole_);
    column->setStretchFactor(1, 1);
    auto* dock = new QDockWidget("Workspace", this);
    dock->setObjectName("dock_workspace");
    dock->setWidget(column);
    addDockWidget(Qt::RightDockWidgetArea, dock);
    resize(1500, 820);
}

HostWindow::~HostWindow()
{
    // The tool goes first: it may still talk to the workspace while it closes.
    delete importData_;
}

} // namespace torvex
