#include "WorkspacePanel.h"

#include "AppContext.h"
#include "toolboxes/importData/model/ImportNotice.h"
#include "toolboxes/importData/ui/ProgressRun.h"

#include <QFileDialog>
#include <QHeaderView>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace torvex {

WorkspacePanel::WorkspacePanel(WorkspaceManager* manager, QWidget* parent)
    : QWidget(parent), manager_(manager), table_(new QTableWidget(0, 4, this)),
      saveButton_(new QPushButton("Save as .npy…", this))
{
    table_->setHorizontalHeaderLabels({"Name", "Shape", "Type", "Bytes"});
    // Shapes and byte counts whole, the name takes what is left; a narrow column scrolls.
    table_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    table_->verticalHeader()->hide();
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    saveButton_->setToolTip("Write the selected variable to a file that NumPy loads with numpy.load");
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(table_);
    layout->addWidget(saveButton_);
    connect(saveButton_, &QPushButton::clicked, this, &WorkspacePanel::onSave);
    connect(manager_, &WorkspaceManager::workspaceChanged, this, &WorkspacePanel::refresh);
    refresh();
}

void WorkspacePanel::refresh()
{
    const auto& data = manager_->get_workspace_data();
    table_->setRowCount(static_cast<int>(data.size()));
    int row = 0;
    for (const auto& [name, array] : data) {
        const QStringList cells = {name, pythonShapeText(array.shape()),
                                   QString::fromStdString(dtypeName(array.dtype())),
                                   QLocale().toString(static_cast<qlonglong>(array.nbytes()))};
        for (int column = 0; column < cells.size(); ++column)
            table_->setItem(row, column, new QTableWidgetItem(cells[column]));
        ++row;
    }
    saveButton_->setEnabled(!data.empty());
}

QString WorkspacePanel::saveRow(int row, const QString& path)
{
    const QTableWidgetItem* nameItem = table_->item(row, 0);
    if (!nameItem) return "No variable in that row";
    const auto& data = manager_->get_workspace_data();
    const auto found = data.find(nameItem->text());
    if (found == data.end()) return "The variable " + nameItem->text() + " is no longer in the workspace";
    try {
        saveNpy(found->second, path);
    } catch (const std::exception& e) {
        return QString::fromStdString(e.what());
    }
    return {};
}

void WorkspacePanel::onSave()
{
    const int row = table_->currentRow() >= 0 ? table_->currentRow() : 0;
    const QTableWidgetItem* nameItem = table_->item(row, 0);
    if (!nameItem) return;
    const QString path = QFileDialog::getSaveFileName(this, "Save Variable", nameItem->text() + ".npy",
                                                      "NumPy Files (*.npy);;All Files (*)");
    if (path.isEmpty()) return;
    const auto& data = manager_->get_workspace_data();
    const auto found = data.find(nameItem->text());
    QString failure = found == data.end() ? saveRow(row, path) : QString();
    try {
        // Off the window's thread, with Cancel; a cancelled save leaves no file.
        if (found != data.end() && !runWithProgress(this, "Saving " + nameItem->text() + "…",
                                                    [array = found->second, &path](const Progress& progress) {
                                                        saveNpy(array, path, progress);
                                                    }))
            return;
    } catch (const std::exception& e) {
        failure = QString::fromStdString(e.what());
    }
    if (failure.isEmpty()) QMessageBox::information(this, "Saved", nameItem->text() + " saved to " + path);
    else QMessageBox::critical(this, "Error", "Failed to save: " + failure);
}

} // namespace torvex
