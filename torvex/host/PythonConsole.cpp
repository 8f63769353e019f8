#include "PythonConsole.h"

#include "HistoryLineEdit.h"
#include "PythonWorkspaceManager.h"

#include <QApplication>
#include <QFile>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

namespace torvex {

PythonConsole::PythonConsole(PythonWorkspaceManager* manager, QWidget* parent)
    : QWidget(parent), manager_(manager), output_(new QPlainTextEdit(this)), input_(new HistoryLineEdit(this)),
      runButton_(new QPushButton("Run", this)), busyLabel_(new QLabel("Running…", this))
{
    const QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    output_->setObjectName("console_output");
    output_->setReadOnly(true);
    output_->setFont(fixed);
    output_->setMaximumBlockCount(20000); // a print loop must not eat the memory
    output_->setPlaceholderText("Python output. The workspace's arrays are NumPy arrays under their names; np is NumPy.");
    input_->setObjectName("console_input");
    input_->setFont(fixed);
    input_->setPlaceholderText(">>> Python statement; Enter runs it, Up/Down recall earlier ones");

    auto* line = new QHBoxLayout;
    line->addWidget(input_, 1);
    line->addWidget(busyLabel_);
    line->addWidget(runButton_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(output_, 1);
    layout->addLayout(line);

    // The pane follows its newest line while it is scrolled to the bottom, through new output and
    // through a smaller pane alike; scrolled up, it stays where the user reads.
    QScrollBar* bar = output_->verticalScrollBar();
    connect(bar, &QScrollBar::valueChanged, this, [this, bar](int value) { followNewest_ = value == bar->maximum(); });
    connect(bar, &QScrollBar::rangeChanged, this, [this, bar] {
        if (followNewest_) bar->setValue(bar->maximum());
    });
    connect(input_, &QLineEdit::returnPressed, this, [this] { submit(input_->text()); });
    connect(input_, &HistoryLineEdit::interruptRequested, manager_, &PythonWorkspaceManager::interrupt);
    connect(runButton_, &QPushButton::clicked, this, [this] {
        if (manager_->isRunning()) manager_->interrupt();
        else submit(input_->text());
    });
    connect(manager_, &PythonWorkspaceManager::output, this, &PythonConsole::append);
    connect(manager_, &PythonWorkspaceManager::started, this, [this] { setBusy(true); });
    connect(manager_, &PythonWorkspaceManager::finished, this, [this] { setBusy(false); });
    setBusy(false);

    if (!manager_->unavailableReason().isEmpty()) {
        append(manager_->unavailableReason() + "\nThe console is off; the rest of Torvex works without it.\n");
        input_->setEnabled(false);
        runButton_->setEnabled(false);
    }
}

void PythonConsole::submit(const QString& statement)
{
    if (statement.trimmed().isEmpty() || manager_->isRunning()) return;
    input_->remember(statement);
    input_->clear();
    append(">>> " + statement + "\n");
    manager_->start(statement);
}

QString PythonConsole::runScript(const QString& path)
{
    QFile file(path);
    QString failure;
    if (!file.open(QIODevice::ReadOnly)) {
        failure = "Cannot read the script " + path + ": " + file.errorString();
    } else {
        append("# script " + path + "\n");
        if (!manager_->start(QString::fromUtf8(file.readAll()), path, false))
            failure = "The script did not run: " + (manager_->unavailableReason().isEmpty()
                                                         ? "a statement is running"
                                                         : manager_->unavailableReason());
    }
    if (!failure.isEmpty()) append(failure + "\n");
    return failure;
}

void PythonConsole::append(const QString& text)
{
    QTextCursor end(output_->document());
    end.movePosition(QTextCursor::End);
    end.insertText(text);
}

void PythonConsole::setBusy(bool busy)
{
    busyLabel_->setVisible(busy);
    runButton_->setText(busy ? "Stop" : "Run");
    runButton_->setToolTip(busy ? "Interrupt the running statement (Ctrl+C in the input line)" : "Run the statement (Enter)");
    input_->setReadOnly(busy);
    setCursor(busy ? Qt::BusyCursor : Qt::ArrowCursor);
    // After Stop the button has the focus; typing goes on in the input line.
    if (!busy && isAncestorOf(QApplication::focusWidget())) input_->setFocus();
}

} // namespace torvex
