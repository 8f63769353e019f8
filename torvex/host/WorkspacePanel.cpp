#include "WorkspacePanel.h"

#include "PythonWorkspaceManager.h"
#include "toolboxes/importData/model/ImportNotice.h"
#include "toolboxes/importData/ui/ProgressRun.h"

#include <QFileDialog>
#include <QHeaderView>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QTableWidget>
#include <QVBoxLayout>

namespace torvex {

namespace {

QTableWidgetItem* cell(const QString& text, const QString& toolTip)
{
    auto* item = new QTableWidgetItem(text);
    item->setToolTip(toolTip);
    return item;
}

} // namespace

WorkspacePanel::WorkspacePanel(PythonWorkspaceManager* manager, QWidget* parent)
    : QWidget(parent), manager_(manager), table_(new QTableWidget(0, 4, this)),
      saveButton_(new QPushButton("Save as .npy…", this))
{
    table_->setHorizontalHeaderLabels({"Name", "Shape", "Type", "Size"});
    // Each column as wide as its longest value, so that none is cut.
    table_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
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
    const std::vector<WorkspaceVariable>& variables = manager_->variables();
    const QLocale locale;
    table_->setRowCount(static_cast<int>(variables.size()));
    int row = 0;
    for (const WorkspaceVariable& v : variables) {
        const QString elements = locale.toString(static_cast<qlonglong>(elementCount(v.shape)));
        table_->setItem(row, 0, cell(v.name, v.name));
        table_->setItem(row, 1, cell(pythonShapeText(v.shape), elements + " elements"));
        table_->setItem(row, 2, cell(v.type, "NumPy dtype " + v.type));
        table_->setItem(row, 3, cell(locale.formattedDataSize(v.bytes, 1, QLocale::DataSizeIecFormat),
                                     locale.toString(static_cast<qlonglong>(v.bytes)) + " bytes"));
        ++row;
    }
    saveButton_->setEnabled(!variables.empty());
    // Wide enough for every column whole, up to a width that still leaves the
    // tool its room on a 1366 px screen; beyond that the table scrolls.
    constexpr int widestTable = 420;
    const QAbstractItemView* view = table_; // where sizeHintForColumn is public
    int needed = 2 * table_->frameWidth() + table_->verticalScrollBar()->sizeHint().width(); // room for many rows
    for (int column = 0; column < table_->columnCount(); ++column)
        needed += std::max(view->sizeHintForColumn(column), table_->horizontalHeader()->sectionSizeHint(column));
    table_->setMinimumWidth(std::min(needed, widestTable));
}

QString WorkspacePanel::saveRow(int row, const QString& path)
{
    const QTableWidgetItem* nameItem = table_->item(row, 0);
    if (!nameItem) return "No variable in that row";
    return manager_->saveVariable(nameItem->text(), path);
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
