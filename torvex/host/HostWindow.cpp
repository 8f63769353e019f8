#include "HostWindow.h"

#include "AppContext.h"
#include "PythonConsole.h"
#include "PythonWorkspaceManager.h"
#include "WorkspacePanel.h"
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/volume/FileNameText.h"

#include <QDockWidget>
#include <QFileInfo>
#include <QMenuBar>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QStyle>

namespace torvex {

HostWindow::HostWindow(const QString& filePath, bool folderMode) : appContext_(std::make_unique<AppContext>())
{
    // Timed like any notice, so it never stands for a state long gone.
    statusBar()->showMessage("Workspace ready", 5000);
    // A folder opens as a dropped one does, as an Image Sequence, even without folder mode.
    const bool plainFolder = !folderMode && QFileInfo(filePath).isDir();
    importData_ = new ImportData(this, appContext_.get(), {}, plainFolder ? QString() : filePath, folderMode);
    if (plainFolder) {
        importData_->ui->comboBox_outputType->setCurrentIndex(1);
        importData_->openFile(filePath);
    }
    // The tool builds itself as a top-level window; the host embeds it.
    importData_->setParent(this, Qt::Widget);
    setCentralWidget(importData_);
    for (QMenu* menu : importData_->menus()) menuBar()->addMenu(menu);
    showSource(importData_->ui->lineEdit_files_folder->text());
    connect(importData_, &ImportData::sourceChanged, this, &HostWindow::showSource);
    connect(appContext_->get_component("workspace_manager"), &WorkspaceManager::variableImported, this,
            [this](const QString& notice) { statusBar()->showMessage(notice, 5000); });

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
    fitToScreen();
}

void HostWindow::showSource(const QString& source)
{
    setWindowTitle(source.isEmpty() ? "Torvex - Import Data" : "Torvex - Import Data - " + printablePath(source));
}

void HostWindow::fitToScreen()
{
    // Most of the screen it opens on, room left for the desktop's panels and the frame;
    // on very large screens a size that still reads as one window.
    const QRect available = screen()->availableGeometry();
    const QSize size = (available.size() * 0.9).boundedTo(QSize(2560, 1600));
    setGeometry(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size, available));
    // The workspace column takes a quarter, no more than some sixty characters; the tool the rest.
    const int workspaceWidth = std::min(size.width() / 4, 60 * fontMetrics().averageCharWidth());
    resizeDocks({findChild<QDockWidget*>("dock_workspace")}, {workspaceWidth}, Qt::Horizontal);
}

HostWindow::~HostWindow()
{
    // The tool goes first: it may still talk to the workspace while it closes.
    delete importData_;
}

} // namespace torvex
