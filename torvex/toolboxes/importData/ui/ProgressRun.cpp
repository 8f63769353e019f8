#include "toolboxes/importData/ui/ProgressRun.h"

#include <QEventLoop>
#include <QProgressDialog>
#include <QSemaphore>
#include <QTimer>
#include <QtConcurrent/QtConcurrentRun>

#include <atomic>
#include <exception>

namespace torvex {

bool runWithProgress(QWidget* parent, const QString& label, const std::function<void(const Progress&)>& work)
{
    std::atomic<int64_t> done{0}, total{0};
    std::atomic<bool> cancelled{false};
    std::exception_ptr failure;
    QSemaphore finished;
    QEventLoop loop;
    QFuture<void> future = QtConcurrent::run([&] {
        try {
            work([&](int64_t d, int64_t t) {
                done = d;
                total = t;
                return !cancelled.load();
            });
        } catch (...) {
            failure = std::current_exception();
        }
        finished.release();
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    // Short work ends here, before any event can reach the window in between.
    if (!finished.tryAcquire(1, 300)) {
        QProgressDialog dialog(label, "Cancel", 0, 1000, parent);
        dialog.setWindowModality(Qt::WindowModal);
        dialog.setMinimumDuration(0);
        dialog.setValue(0);
        QObject::connect(&dialog, &QProgressDialog::canceled, [&] {
            cancelled = true;
            dialog.setLabelText("Cancelling…");
        });
        QTimer tick;
        QObject::connect(&tick, &QTimer::timeout, [&] {
            if (total > 0 && !cancelled) dialog.setValue(static_cast<int>(1000 * done / total));
        });
        tick.start(100);
        while (!finished.tryAcquire(1, 0)) loop.exec();
    }
    future.waitForFinished();
    if (failure) {
        try {
            std::rethrow_exception(failure);
        } catch (const Cancelled&) {
            return false;
        }
    }
    return true; // finished, even if Cancel came too late to stop it
}

} // namespace torvex
