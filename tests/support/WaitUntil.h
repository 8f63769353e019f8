#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>

#include <functional>

namespace torvex::test {

// Lets events arrive until `done` holds; false after a minute without it.
inline bool waitUntil(const std::function<bool()>& done)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 60000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        if (done()) return true;
    }
    return false;
}

} // namespace torvex::test
