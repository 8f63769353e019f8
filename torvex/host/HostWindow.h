#pragma once

#include <QMainWindow>

#include <memory>

namespace torvex {

class AppContext;
class ImportData;
class PythonConsole;
class WorkspacePanel;

// The stand-in host: the Import Data tool beside the workspace it fills.
class HostWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit HostWindow(const QString& filePath = {}, bool folderMode = false);
    ~HostWindow() override;

    ImportData* importData() const { return importData_; }
    WorkspacePanel* workspacePanel() const { return workspacePanel_; }
    PythonConsole* pythonConsole() const { return pythonConsole_; }
    AppContext* appContext() const { return appContext_.get(); }

private:
    // The title names the tool's source.
    void showSource(const QString& source);
    // The default size and place, from the screen's free area.
    void fitToScreen();

    std::unique_ptr<AppContext> appContext_;
    ImportData* importData_;
    WorkspacePanel* workspacePanel_;
    PythonConsole* pythonConsole_;
};

} // namespace torvex
