#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QStringList>
#include <QTimer>

namespace torvex::test {

// Closes every modal dialog that opens while it lives and keeps the texts of
// the message boxes, so a test can run code that reports through one.
class ModalWatcher {
public:
    ModalWatcher()
    {
        timer_.setInterval(20);
        QObject::connect(&timer_, &QTimer::timeout, [this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (!modal) return;
            if (auto* box = qobject_cast<QMessageBox*>(modal)) texts << box->windowTitle() + "|" + box->text();
            modal->close();
        });
        timer_.start();
    }

    QStringList texts;

private:
    QTimer timer_;
};

} // namespace torvex::test
