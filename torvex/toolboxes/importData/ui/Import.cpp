// Import of the current entry into the host's workspace.
#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/model/AppContext.h"
#include "toolboxes/importData/model/ImportNotice.h"
#include "toolboxes/importData/ui/BusyCursor.h"

#include <QLoggingCategory>
#include <QMessageBox>
#include <QStatusBar>

namespace torvex {

namespace {
Q_LOGGING_CATEGORY(importLog, "torvex.toolboxes.importData.ImportData", QtInfoMsg)
}

void ImportData::onImport()
{
    QListWidget* list = ui->listWidget_data;
    if (list->count() == 0) {
        QMessageBox::critical(this, "Error", "No data to import");
        return;
    }
    const int row = list->currentItem() ? list->currentRow() : list->count() - 1;
    // A large volume is copied here, on the GUI thread.
    const BusyCursor busy;
    try {
        if (!app_context) throw std::runtime_error("The window has no application context");
        WorkspaceManager* manager = app_context->get_component("workspace_manager");
        if (!manager) {
            qCCritical(importLog) << "Workspace manager not available";
            return;
        }
        const QString name = list->item(row)->text();
        _session.importEntry(row, name, _mode().value_or(Mode::VolumeData), *manager,
                             ui->comboBox_out_format->currentText(), ui->checkBox_keepc->isChecked());
        const auto& variables = manager->get_workspace_data();
        if (const auto imported = variables.find(name); imported != variables.end())
            emit manager->variableImported(importNotice(name, imported->second));
    } catch (const std::exception& e) {
        // Reported on the host's status bar only; the window itself shows nothing.
        if (auto* statusbar = parentApp ? parentApp->findChild<QStatusBar*>(QString(), Qt::FindDirectChildrenOnly)
                                        : nullptr)
            statusbar->showMessage(QString::fromStdString(e.what()), 5000);
    }
}

} // namespace torvex
