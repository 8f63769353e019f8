#pragma once

#include <QFileDialog>
#include <QString>
#include <QStringList>

#include <functional>

namespace torvex {

// The open dialogs of the window, one per kind, held as functions so that a
// stand-in can take their place where no user answers a dialog.
struct FileDialogs {
    std::function<QString(QWidget* parent, const QString& caption, const QString& folder, const QString& filter)>
        openFile = [](QWidget* parent, const QString& caption, const QString& folder, const QString& filter) {
            return QFileDialog::getOpenFileName(parent, caption, folder, filter);
        };
    std::function<QStringList(QWidget* parent, const QString& caption, const QString& folder, const QString& filter)>
        openFiles = [](QWidget* parent, const QString& caption, const QString& folder, const QString& filter) {
            return QFileDialog::getOpenFileNames(parent, caption, folder, filter);
        };
    std::function<QString(QWidget* parent, const QString& caption, const QString& folder)> openFolder =
        [](QWidget* parent, const QString& caption, const QString& folder) {
            return QFileDialog::getExistingDirectory(parent, caption, folder);
        };
};

} // namespace torvex
