#pragma once

#include <QWidget>

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace torvex {

class HistoryLineEdit;
class PythonWorkspaceManager;

// The host's Python prompt on its workspace: an output pane above an input
// line. Enter runs the line; while it runs the Run button turns into Stop.
class PythonConsole : public QWidget {
    Q_OBJECT
public:
    explicit PythonConsole(PythonWorkspaceManager* manager, QWidget* parent = nullptr);

    // Runs the statement as if typed in the input line.
    void submit(const QString& statement);
    // Starts a Python file in the workspace, as `python FILE` would; why it
    // could not start, or empty.
    QString runScript(const QString& path);

    HistoryLineEdit* input() const { return input_; }
    QPlainTextEdit* outputPane() const { return output_; }
    QPushButton* runButton() const { return runButton_; }

private:
    void append(const QString& text);
    void setBusy(bool busy);

    PythonWorkspaceManager* manager_;
    QPlainTextEdit* output_;
    HistoryLineEdit* input_;
    QPushButton* runButton_;
    QLabel* busyLabel_;
    bool followNewest_ = true;
};

} // namespace torvex
