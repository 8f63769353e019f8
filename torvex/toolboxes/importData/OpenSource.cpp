#include "ImportData.h"

#include "toolboxes/importData/ImportDataForm.h"
#include "toolboxes/importData/sequence/PythonPath.h"
#include "volume/RawFile.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QThread>

#include <algorithm>

namespace torvex {

namespace {

// Regular files of a folder, in the file system's own order, as folder + "/" + name.
QStringList regularFilesIn(const QString& folder)
{
    QStringList files;
    const QDir dir(folder);
    for (const QString& name : dir.entryList(QDir::Files | QDir::Hidden, QDir::Unsorted))
        files << folder + "/" + name;
    return files;
}

} // namespace

void ImportData::_showFrameSlider(bool visible)
{
    ui->label_26->setVisible(visible);
    ui->horizontalSlider_frame->setVisible(visible);
    ui->spinBox_frame->setVisible(visible);
    ui->label_totalFrame->setVisible(visible);
}

void ImportData::onOpenFiles()
{
    const QStringList picked = QFileDialog::getOpenFileNames(this, "Open Files", "", "All Files (*.*)");
    if (picked.isEmpty()) return;
    _resetSource();
    ui->comboBox_outputType->setCurrentIndex(1);
    openFileList(picked);
}

void ImportData::onOpenFolder()
{
    const QString folder = QFileDialog::getExistingDirectory(this, "Open Folder", "");
    if (folder.isEmpty()) return;
    _resetSource();
    ui->comboBox_outputType->setCurrentIndex(1);
    openFile(folder);
}

void ImportData::openFile(const QString& fileName)
{
    if (_loader_thread && _loader_thread->isRunning()) {
        _stopLoad();
        ++_load_id; // whatever the old worker still sends is void
        _setLoadingState(false);
    }
    try {
        if (QFileInfo(fileName).isDir()) {
            fileList = regularFilesIn(fileName);
            ui->lineEdit_files_folder->setText(fileName);
            _pending_add_entry = true;
            onFilterChanged();
            ui->statusbar->showMessage(QString::number(fileList->size()) + " files found in the folder", 5000);
            return;
        }
        readedBinary = readWholeFile(fileName);
        _current_file_path = fileName;
        ui->lineEdit_files_folder->setText(fileName);
        _resetVolumeParams();
        _pending_add_entry = true;
        setWindowTitle("Import Data - " + fileName);
        onParametersChanged();
        ui->statusbar->showMessage("File loaded successfully!", 5000);
    } catch (const std::exception& e) {
        readedBinary.reset();
        QMessageBox::critical(this, "Error", "Error reading file:\n" + QString::fromStdString(e.what()));
    }
}

void ImportData::openFileList(const QStringList& paths)
{
    try {
        QStringList files;
        std::copy_if(paths.begin(), paths.end(), std::back_inserter(files),
                     [](const QString& path) { return QFileInfo(path).isFile(); });
        fileList = files;
        if (files.isEmpty()) {
            ui->statusbar->showMessage("No valid files to load", 5000);
            return;
        }
        // Plain code-point order of the whole path texts.
        std::sort(fileList->begin(), fileList->end(),
                  [](const QString& a, const QString& b) { return a.toUcs4() < b.toUcs4(); });
        ui->lineEdit_files_folder->setText(pythonDirname(fileList->first()));
        _pending_add_entry = true;
        onFilterChanged();
        ui->statusbar->showMessage(QString::number(fileList->size()) + " files loaded successfully", 5000);
        setWindowTitle("Import Data - " + QString::number(fileList->size()) + " files");
    } catch (const std::exception& e) {
        fileList.reset();
        const QString message = "Error loading files: " + QString::fromStdString(e.what());
        ui->statusbar->showMessage(message, 5000);
        QMessageBox::critical(this, "Error", message);
    }
}

} // namespace torvex
