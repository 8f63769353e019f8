#pragma once

// The user's part in the window: the raw-volume panel, and Generate Function's
// dialog and the dialogs it opens.
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/ui/ImportDataForm.h"

#include "../support/TempFiles.h"
#include "../support/VolumePanel.h"

#include <QElapsedTimer>
#include <QFileDialog>
#include <QMessageBox>
#include <QPointer>
#include <QTextEdit>
#include <QTimer>

namespace torvex::test {

// Sets the raw-volume panel widget by widget, as a user would.
inline void setVolumePanel(ImportData& w, const LoadFunctionParams& p)
{
    enterVolumePanel(w, {.layout = {.imgType = p.imgType, .offset = p.offset, .gap = p.gap, .width = p.width,
                                    .height = p.height, .frame = p.frame, .byteOrder = p.byteOrder(),
                                    .readOrder = p.readOrder, .colorOrder = p.colorOrder},
                         .transfer = p.transfer()});
    w.ui->comboBox_out_format->setCurrentText(p.data_format);
    w.ui->checkBox_keepc->setChecked(p.keep_c_on_gray);
}

// A modal dialog of the class named and what the user does there.
struct Step { const char* dialogClass; std::function<void(QWidget*)> act; };

// Runs Generate Function while the steps take the dialogs in order, each from
// the event loop, so that it may open a dialog of its own. A dialog that no
// step takes (for a while: it may be on its way out) is noted and closed.
inline void play(ImportData& w, const std::vector<Step>& steps)
{
    size_t next = 0;
    QStringList unexpected;
    QPointer<QWidget> seen, actedOn;
    QElapsedTimer since;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        QWidget* modal = QApplication::activeModalWidget();
        if (modal != seen) since.start();
        seen = modal;
        if (!modal) return;
        const QString kind = modal->metaObject()->className();
        if (modal != actedOn && next < steps.size() && kind == steps[next].dialogClass) {
            QTimer::singleShot(0, modal, [act = steps[next++].act, modal] { act(modal); });
            actedOn = modal;
            since.start();
        } else if (since.elapsed() > 10000) { // generous: sanitizer builds open dialogs slowly
            unexpected << kind + " " + modal->windowTitle();
            modal->close();
        }
    });
    timer.start(10);
    w.onGenerateFunction();
    EXPECT_EQ(next, steps.size());
    EXPECT_EQ(unexpected, QStringList());
}

// In the dialog of the generated text: look at its text box, then press the button of that text.
inline Step press(const QString& button, std::function<void(QTextEdit*)> look = {})
{
    return {"QDialog", [=](QWidget* dialog) {
                EXPECT_EQ(dialog->windowTitle(), "Generated Load Function");
                if (look) look(dialog->findChild<QTextEdit*>());
                for (QPushButton* b : dialog->findChildren<QPushButton*>())
                    if (b->text().remove('&') == button) return b->click();
                ADD_FAILURE() << "no button " << button.toStdString();
                dialog->close();
            }};
}

// Picks `path` in the save dialog; `before` runs just before the choice is accepted.
inline Step saveAs(const QString& path, std::function<void()> before = {})
{
    return {"QFileDialog", [=](QWidget* dialog) {
                // Qt's own question before replacing a file is not the window's; answer it in advance.
                static_cast<QFileDialog*>(dialog)->setOption(QFileDialog::DontConfirmOverwrite);
                // Typed, as selectFile leaves alone the name field that has the focus.
                dialog->findChild<QLineEdit*>("fileNameEdit")->setText(path);
                if (before) before();
                QMetaObject::invokeMethod(dialog, "accept"); // protected in QFileDialog, a slot all the same
            }};
}

inline Step cancelSave() { return {"QFileDialog", [](QWidget* d) { static_cast<QDialog*>(d)->reject(); }}; }

// Notes "title|text" of a message box and closes it, after `then`.
inline Step messageBox(QStringList& noted, std::function<void()> then = {})
{
    return {"QMessageBox", [&noted, then](QWidget* box) {
                noted << box->windowTitle() + "|" + static_cast<QMessageBox*>(box)->text();
                if (then) then();
                box->close();
            }};
}

} // namespace torvex::test
