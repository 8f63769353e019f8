#pragma once

#include <QWidget>

class QPushButton;
class QTableWidget;

namespace torvex {

class WorkspaceManager;

// The host's view of its workspace: one row per variable (name, shape,
// element type, bytes), and a way to save a variable as a NumPy .npy file.
class WorkspacePanel : public QWidget {
    Q_OBJECT
public:
    explicit WorkspacePanel(WorkspaceManager* manager, QWidget* parent = nullptr);

    void refresh();
    // Saves the variable of that row to path; returns the failure text, or empty.
    QString saveRow(int row, const QString& path);
    QTableWidget* table() const { return table_; }

private:
    void onSave();

    WorkspaceManager* manager_;
    QTableWidget* table_;
    QPushButton* saveButton_;
};

} // namespace torvex
