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

AppContext::AppContext() : workspaceManager_(std::make_unique<WorkspaceManager>()) {}
AppContext::~AppContext() = default;

WorkspaceManager* AppContext::get_component(const QString& name)
{
    return name == QLatin1String("workspace_manager") ? workspaceManager_.get() : nullptr;
}

} // namespace torvex
