#pragma once

// The user's part in the dialog of the generated text and the dialogs it opens.
#include "ModalScript.h"

#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTextEdit>

#include <gtest/gtest.h>

#include <functional>

namespace torvex::test {

using Step = ModalScript::Step;

// In the dialog of the generated text: look at its text box, then press the button of that text.
Step pressInFunctionDialog(const QString& button, std::function<void(QTextEdit*)> look = {})
{
    return {[](QWidget* modal) { return modal->windowTitle() == "Generated Load Function"; },
            [button, look](QWidget* dialog) {
                if (look) look(dialog->findChild<QTextEdit*>());
                for (QPushButton* b : dialog->findChildren<QPushButton*>()) {
                    if (b->text().remove('&') == button) {
                        b->click();
                        return;
                    }
                }
                ADD_FAILURE() << "no button " << button.toStdString();
                dialog->close();
            }};
}

// Picks `path` in the save dialog; `before` runs just before the choice is accepted.
Step saveAs(const QString& path, std::function<void()> before = {})
{
    return {[](QWidget* modal) { return qobject_cast<QFileDialog*>(modal) != nullptr; },
            [path, before](QWidget* modal) {
                auto* dialog = static_cast<QFileDialog*>(modal);
                // Qt's own question before replacing a file is not the window's; answer it in advance.
                dialog->setOption(QFileDialog::DontConfirmOverwrite);
                // Typed, as selectFile leaves alone the name field that has the focus.
                dialog->findChild<QLineEdit*>("fileNameEdit")->setText(path);
                if (before) before();
                QMetaObject::invokeMethod(dialog, "accept"); // protected in QFileDialog, a slot all the same
            }};
}

Step cancelSave()
{
    return {[](QWidget* modal) { return qobject_cast<QFileDialog*>(modal) != nullptr; },
            [](QWidget* modal) { static_cast<QFileDialog*>(modal)->reject(); }};
}

// Notes "title|text" of a message box and closes it, after `then`.
Step messageBox(QStringList& noted, std::function<void()> then = {})
{
    return {[](QWidget* modal) { return qobject_cast<QMessageBox*>(modal) != nullptr; },
            [&noted, then](QWidget* modal) {
                noted << modal->windowTitle() + "|" + static_cast<QMessageBox*>(modal)->text();
                if (then) then();
                modal->close();
            }};
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

} // namespace torvex::test
