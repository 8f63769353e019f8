// Import of the current entry into the host's workspace.
#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/model/AppContext.h"
#include "toolboxes/importData/model/ImportNotice.h"
#include "toolboxes/importData/ui/BusyCursor.h"
#include "toolboxes/importData/ui/ProgressRun.h"

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
    // A large import takes a while, even with its progress dialog up.
    const BusyCursor busy;
    try {
        if (!app_context) throw std::runtime_error("The window has no application context");
        WorkspaceManager* manager = app_context->get_component("workspace_manager");
        if (!manager) {
            qCCritical(importLog) << "Workspace manager not available";
            return;
        }
        const ImportSession::ImportSource source = _session.importSource(row, _mode().value_or(Mode::VolumeData));
        const QString format = ui->comboBox_out_format->currentText();
        const bool keepChannel = ui->checkBox_keepc->isChecked();
        NdArray array;
        const QString name = list->item(row)->text();
        // A cancelled import hands nothing over: the workspace stays as it was.
        if (!runWithProgress(this, "Importing " + name + "…", [&](const Progress& progress) {
                array = ImportSession::importArray(source, format, keepChannel, progress);
            })) {
            _showStatus(StatusTone::Info, "Import cancelled", 5000);
            return;
        }
        ImportSession::handOver(*manager, name, array);
        emit manager->variableImported(importNotice(name, array));
        if (const std::optional<QString> notice = _session.placeholderNotice(row))
            _showStatus(StatusTone::Warning, *notice, 5000);
    } catch (const std::exception& e) {
        // Reported on the host's status bar only; the window itself shows nothing.
        if (auto* statusbar = parentApp ? parentApp->findChild<QStatusBar*>(QString(), Qt::FindDirectChildrenOnly)
                                        : nullptr)
            statusbar->showMessage(QString::fromStdString(e.what()), 5000);
    }
}

} // namespace torvex
