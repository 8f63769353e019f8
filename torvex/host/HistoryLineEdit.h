#pragma once

#include <QLineEdit>
#include <QStringList>

namespace torvex {

// An input line that remembers what was entered: Up and Down walk through
// earlier entries, and Down past the newest brings back the unfinished line.
// Ctrl+C without a selection asks to interrupt, as in a terminal.
class HistoryLineEdit : public QLineEdit {
    Q_OBJECT
public:
    using QLineEdit::QLineEdit;

    // Adds the entry (unless it repeats the newest) and starts from the bottom again.
    void remember(const QString& entry);
    const QStringList& history() const { return history_; }

signals:
    void interruptRequested();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void step(int direction);

    QStringList history_;
    qsizetype position_ = 0; // == history_.size() at the unfinished line
    QString draft_;
};

} // namespace torvex
