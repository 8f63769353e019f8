#include "HistoryLineEdit.h"

#include <QKeyEvent>

namespace torvex {

void HistoryLineEdit::remember(const QString& entry)
{
    if (history_.isEmpty() || history_.last() != entry) history_ << entry;
    position_ = history_.size();
    draft_.clear();
}

void HistoryLineEdit::step(int direction)
{
    const qsizetype next = position_ + direction;
    if (next < 0 || next > history_.size()) return;
    if (position_ == history_.size()) draft_ = text();
    position_ = next;
    setText(position_ == history_.size() ? draft_ : history_[position_]);
}

void HistoryLineEdit::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Up) return step(-1);
    if (event->key() == Qt::Key_Down) return step(+1);
    if (event->matches(QKeySequence::Copy) && !hasSelectedText()) return emit interruptRequested();
    QLineEdit::keyPressEvent(event);
}

} // namespace torvex
