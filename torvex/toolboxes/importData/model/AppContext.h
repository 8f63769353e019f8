#pragma once

#include "toolboxes/importData/volume/NdArray.h"

#include <QObject>
#include <QString>

#include <map>
#include <memory>

namespace torvex {

// What the tool needs of its host, owned by the tool so that the host builds
// on it and not the other way round. A host may derive from both classes; the
// plain ones keep the workspace in memory.

// The host's workspace: named arrays that the user's scripts and tools share.
class WorkspaceManager : public QObject {
    Q_OBJECT
public:
    explicit WorkspaceManager(QObject* parent = nullptr);
    ~WorkspaceManager() override;

    virtual std::map<QString, NdArray>& get_workspace_data();
    // Takes the whole map back and tells the host's views that it changed.
    virtual void update_workspace_data(std::map<QString, NdArray>& workspace_data);
    // Runs Python code in the workspace and returns what it printed; this
    // plain manager has no interpreter and says so.
    virtual QString run_python(const QString& code);

signals:
    void workspaceChanged();
    // A tool brought a variable in; the notice names it with its shape, type and size.
    void variableImported(const QString& notice);

private:
    std::map<QString, NdArray> data_;
};

// The host's context handed to each tool: the gate to its components.
class AppContext {
public:
    AppContext();
    virtual ~AppContext();

    // How a host that keeps its workspace elsewhere (an embedded interpreter)
    // makes its manager; contexts made afterwards own one of those.
    using WorkspaceFactory = std::unique_ptr<WorkspaceManager> (*)();
    static void setWorkspaceFactory(WorkspaceFactory factory);

    // The workspace manager for "workspace_manager", nullptr for any other name.
    virtual WorkspaceManager* get_component(const QString& name);

private:
    std::unique_ptr<WorkspaceManager> workspaceManager_;
};

} // namespace torvex
