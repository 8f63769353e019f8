#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QWidget>

#include <deque>
#include <functional>
#include <vector>

namespace torvex::test {

// Plays the user's part in the modal dialogs that a call opens: one step per
// dialog, in the order in which the dialogs must come up. A step waits until
// the active modal widget is one it expects; its action then runs from the
// event loop, so that it may open a nested modal dialog of its own. A modal
// widget that no step takes is closed after a while and listed in
// `unexpected`, so that a wrong dialog fails the test instead of hanging it.
class ModalScript {
public:
    struct Step {
        std::function<bool(QWidget*)> expects;
        std::function<void(QWidget*)> act;
    };

    explicit ModalScript(std::vector<Step> steps) : steps_(steps.begin(), steps.end())
    {
        timer_.setInterval(10);
        QObject::connect(&timer_, &QTimer::timeout, [this] { poll(); });
        timer_.start();
    }

    int pendingSteps() const { return static_cast<int>(steps_.size()); }

    QStringList unexpected;

private:
    static constexpr int kPatienceMs = 10000; // generous: sanitizer builds open dialogs slowly

    void poll()
    {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal) return;
        if (modal != seen_) {
            seen_ = modal;
            since_.start();
        }
        // A widget just acted on may not have reacted yet; the next step waits for the next dialog.
        if (modal != actedOn_ && !steps_.empty() && steps_.front().expects(modal)) {
            const auto act = steps_.front().act;
            steps_.pop_front();
            actedOn_ = modal;
            since_.start();
            QTimer::singleShot(0, modal, [act, modal] { act(modal); });
            return;
        }
        if (since_.elapsed() > kPatienceMs) {
            const auto* box = qobject_cast<QMessageBox*>(modal);
            unexpected << QString("%1 \"%2\" %3").arg(modal->metaObject()->className(), modal->windowTitle(),
                                                      box ? box->text() : QString());
            modal->close();
            since_.start();
        }
    }

    std::deque<Step> steps_;
    QTimer timer_;
    QPointer<QWidget> seen_;
    QPointer<QWidget> actedOn_;
    QElapsedTimer since_;
};

} // namespace torvex::test
