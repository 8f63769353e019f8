// Opening raw files, folders and lists of images.
#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/sequence/PythonPath.h"
#include "toolboxes/importData/volume/FileNameText.h"

#include <QFileInfo>
#include <QMessageBox>

namespace torvex {

void ImportData::_showFrameSlider(bool visible)
{
    ui->label_26->setVisible(visible);
    ui->horizontalSlider_frame->setVisible(visible);
    ui->spinBox_frame->setVisible(visible);
    ui->label_totalFrame->setVisible(visible);
}

void ImportData::onOpenFiles()
{
    const QStringList picked = fileDialogs.openFiles(this, "Open Files", currentSourceFolder(), "All Files (*.*)");
    if (picked.isEmpty()) return;
    _session.resetSource();
    ui->comboBox_outputType->setCurrentIndex(1);
    openFileList(picked);
}

void ImportData::onOpenFolder()
{
    const QString folder = fileDialogs.openFolder(this, "Open Folder", currentSourceFolder());
    if (folder.isEmpty()) return;
    _session.resetSource();
    ui->comboBox_outputType->setCurrentIndex(1);
    openFile(folder);
}

void ImportData::onOpenRawFile()
{
    const QString path = fileDialogs.openFile(this, "Open Raw File", currentSourceFolder(), "All Files (*)");
    if (path.isEmpty()) return;
    _session.resetSource();
    _openRawFile(path);
}

void ImportData::_openRawFile(const QString& path)
{
    ui->comboBox_outputType->setCurrentIndex(0);
    _showStatus(StatusTone::Info, "Loading file: " + QFileInfo(path).fileName(), 3000);
    openFile(path);
}

QString ImportData::currentSourceFolder() const
{
    const QString source = ui->lineEdit_files_folder->text();
    if (source.isEmpty()) return {};
    const QFileInfo info(source);
    return info.isDir() ? info.absoluteFilePath() : info.absolutePath();
}

void ImportData::openFile(const QString& fileName)
{
    if (_session.load.cancel()) _setLoadingState(false); // whatever the old worker still sends is void
    try {
        if (QFileInfo(fileName).isDir()) {
            _session.openFolder(fileName);
            ui->lineEdit_files_folder->setText(fileName);
            onFilterChanged();
            _showStatus(StatusTone::Success, QString::number(fileList->size()) + " files found in the folder", 5000);
            return;
        }
        _session.openRawFile(fileName);
        ui->lineEdit_files_folder->setText(fileName);
        _resetVolumeParams();
        setWindowTitle("Import Data - " + printablePath(fileName));
        onParametersChanged();
        _showStatus(StatusTone::Success, "File loaded successfully!", 5000);
    } catch (const std::exception& e) {
        QMessageBox::critical(this, "Error", "Error reading file:\n" + QString::fromStdString(e.what()));
    }
}

void ImportData::openFileList(const QStringList& paths)
{
    try {
        _session.openFileList(paths);
        if (fileList->isEmpty()) {
            _showStatus(StatusTone::Warning, "No valid files to load", 5000);
            return;
        }
        ui->lineEdit_files_folder->setText(pythonDirname(fileList->first()));
        onFilterChanged();
        _showStatus(StatusTone::Success, QString::number(fileList->size()) + " files loaded successfully", 5000);
        setWindowTitle("Import Data - " + QString::number(fileList->size()) + " files");
    } catch (const std::exception& e) {
        fileList.reset();
        const QString message = "Error loading files: " + QString::fromStdString(e.what());
        _showStatus(StatusTone::Error, message, 5000);
        QMessageBox::critical(this, "Error", message);
    }
}

} // namespace torvex
