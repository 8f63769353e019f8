// Import of the current entry into the host's workspace.
#include "toolboxes/importData/ImportData.h"

#include "OutputFormat.h"
#include "host/AppContext.h"
#include "toolboxes/importData/ImportDataForm.h"

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
    QListWidgetItem* item = list->currentItem() ? list->currentItem() : list->item(list->count() - 1);
    const QString name = item->text();
    const QVariant stored = item->data(Qt::UserRole);
    try {
        if (!app_context) throw std::runtime_error("The window has no application context");
        WorkspaceManager* manager = app_context->get_component("workspace_manager");
        if (!manager) {
            qCCritical(importLog) << "Workspace manager not available";
            return;
        }
        std::map<QString, NdArray>& workspace = manager->get_workspace_data();
        QString mode = ui->comboBox_outputType->currentText();
        std::optional<NdArray> data;
        if (stored.canConvert<DataEntry>()) {
            const DataEntry entry = stored.value<DataEntry>();
            mode = entry.mode;
            data = entry.data;
        }
        if (mode == "Volume Data") {
            const std::optional<NdArray> volume = data ? data : transferedData;
            if (!volume) throw std::runtime_error("No volume data to import");
            workspace.insert_or_assign(name, reformatForImport(*volume, ui->comboBox_out_format->currentText(),
                                                               ui->checkBox_keepc->isChecked()));
        } else if (mode == "Image Sequence") {
            const std::optional<NdArray> sequence = data ? data : selectedimageSequence;
            if (!sequence) throw std::runtime_error("No image sequence to import");
            workspace.insert_or_assign(name, *sequence);
        }
        manager->update_workspace_data(workspace);
    } catch (const std::exception& e) {
        // Reported on the host's status bar only; the window itself shows nothing.
        if (auto* statusbar = parentApp ? parentApp->findChild<QStatusBar*>(QString(), Qt::FindDirectChildrenOnly)
                                        : nullptr)
            statusbar->showMessage(QString::fromStdString(e.what()), 5000);
    }
}

} // namespace torvex
