#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QTimer>

namespace torvex::test {

// Closes every modal dialog that opens while it lives and keeps "title|text"
// of the message boxes, so that a test can run code that reports through one.
class ModalWatcher {
public:
    ModalWatcher()
    {
        QObject::connect(&timer_, &QTimer::timeout, [this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (auto* box = qobject_cast<QMessageBox*>(modal)) texts << box->windowTitle() + "|" + box->text();
            if (modal) modal->close();
        });
        timer_.start(20);
    }

    QStringList texts;

private:
    QTimer timer_;
};

} // namespace torvex::test
