#pragma once

#include <QApplication>

namespace torvex {

// The wait cursor over the whole application for the life of the object:
// for work that holds the GUI thread, so the user sees why it does not answer.
class BusyCursor {
public:
    BusyCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~BusyCursor() { QApplication::restoreOverrideCursor(); }
    BusyCursor(const BusyCursor&) = delete;
    BusyCursor& operator=(const BusyCursor&) = delete;
};

} // namespace torvex
