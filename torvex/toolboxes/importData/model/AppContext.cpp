#include "toolboxes/importData/model/AppContext.h"

namespace torvex {

WorkspaceManager::WorkspaceManager(QObject* parent) : QObject(parent) {}
WorkspaceManager::~WorkspaceManager() = default;

std::map<QString, NdArray>& WorkspaceManager::get_workspace_data() { return data_; }

void WorkspaceManager::update_workspace_data(std::map<QString, NdArray>& workspace_data)
{
    if (&workspace_data != &data_) data_ = workspace_data;
    emit workspaceChanged();
}

QString WorkspaceManager::run_python(const QString&)
{
    return "There is no Python in this host: the workspace keeps its arrays without an interpreter.\n";
}

namespace {
AppContext::WorkspaceFactory workspaceFactory = nullptr;
}

void AppContext::setWorkspaceFactory(WorkspaceFactory factory) { workspaceFactory = factory; }

AppContext::AppContext()
    : workspaceManager_(workspaceFactory ? workspaceFactory() : std::make_unique<WorkspaceManager>())
{
}
AppContext::~AppContext() = default;

WorkspaceManager* AppContext::get_component(const QString& name)
{
    return name == QLatin1String("workspace_manager") ? workspaceManager_.get() : nullptr;
}

} // namespace torvex
