#pragma once

#include <QWidget>

class QPushButton;
class QTableWidget;

namespace torvex {

class PythonWorkspaceManager;

// The host's view of its workspace: one row per NumPy array (name, shape,
// element type, size), those made in the console included, and a way to
// save one as a NumPy .npy file.
class WorkspacePanel : public QWidget {
    Q_OBJECT
public:
    explicit WorkspacePanel(PythonWorkspaceManager* manager, QWidget* parent = nullptr);

    void refresh();
    // Saves the variable of that row to path; returns the failure text, or empty.
    QString saveRow(int row, const QString& path);
    QTableWidget* table() const { return table_; }

private:
    void onSave();

    PythonWorkspaceManager* manager_;
    QTableWidget* table_;
    QPushButton* saveButton_;
};

} // namespace torvex
