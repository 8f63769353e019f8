#include "HostWindow.h"

#include "AppContext.h"
#include "WorkspacePanel.h"
#include "toolboxes/importData/ImportData.h"

#include <QDockWidget>
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

    workspacePanel_ = new WorkspacePanel(appContext_->get_component("workspace_manager"));
    auto* dock = new QDockWidget("Workspace", this);
    dock->setObjectName("dock_workspace");
    dock->setWidget(workspacePanel_);
    addDockWidget(Qt::RightDockWidgetArea, dock);
    resize(1500, 820);
}

HostWindow::~HostWindow()
{
    // The tool goes first: it may still talk to the workspace while it closes.
    delete importData_;
}

} // namespace torvex
