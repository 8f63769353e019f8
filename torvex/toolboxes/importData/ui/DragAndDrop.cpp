#include "toolboxes/importData/ui/ImportData.h"

#include "toolboxes/importData/sequence/PythonPath.h"

#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QSet>
#include <QUrl>

namespace torvex {

namespace {

const QSet<QString>& imageExtensions()
{
    static const QSet<QString> extensions = {".jpg", ".jpeg", ".png", ".tif", ".tiff", ".bmp", ".gif", ".webp",
                                             ".ppm", ".pgm", ".pbm", ".psd", ".ico", ".heic", ".heif"};
    return extensions;
}

bool isExistingLocal(const QUrl& url) { return url.isLocalFile() && QFileInfo::exists(url.toLocalFile()); }

} // namespace

void ImportData::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls()) {
        for (const QUrl& url : event->mimeData()->urls()) {
            if (isExistingLocal(url)) {
                event->acceptProposedAction();
                _showStatus(StatusTone::Info, "Drop to load file/folder...", 2000);
                return;
            }
        }
    }
    event->ignore();
}

void ImportData::dragMoveEvent(QDragMoveEvent* event)
{
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
    else event->ignore();
}

void ImportData::dragLeaveEvent(QDragLeaveEvent*) { _showStatus(StatusTone::Info, "Ready", 2000); }

void ImportData::dropEvent(QDropEvent* event)
{
    try {
        if (!event->mimeData()->hasUrls()) {
            _showStatus(StatusTone::Error, "Error: No valid file data", 5000);
            event->ignore();
            return;
        }
        const QList<QUrl> urls = event->mimeData()->urls();
        if (urls.isEmpty()) {
            _showStatus(StatusTone::Error, "Error: No files dropped", 5000);
            event->ignore();
            return;
        }
        QStringList filePaths, folderPaths;
        for (const QUrl& url : urls) {
            if (!isExistingLocal(url)) continue;
            const QString path = url.toLocalFile();
            (QFileInfo(path).isDir() ? folderPaths : filePaths) << path;
        }
        if (filePaths.isEmpty() && folderPaths.isEmpty()) {
            _showStatus(StatusTone::Error, "Error: No valid files or folders", 5000);
            event->ignore();
            return;
        }

        _session.resetSource();
        if (filePaths.isEmpty()) {
            ui->comboBox_outputType->setCurrentIndex(1);
            _showStatus(StatusTone::Info, "Loading folder: " + folderPaths.first(), 3000);
            openFile(folderPaths.first());
        } else if (filePaths.size() == 1 && folderPaths.isEmpty()) {
            // One still image goes to the image list, so it never reaches the raw decoder.
            const QString baseName = QFileInfo(filePaths.first()).fileName();
            if (imageExtensions().contains(pythonExtension(filePaths.first()).toLower())) {
                ui->comboBox_outputType->setCurrentIndex(1);
                _showStatus(StatusTone::Info, "Loading image: " + baseName, 3000);
                openFileList(filePaths);
            } else {
                _openRawFile(filePaths.first());
            }
        } else {
            ui->comboBox_outputType->setCurrentIndex(1);
            _showStatus(StatusTone::Info, "Loading " + QString::number(filePaths.size()) + " files...", 3000);
            openFileList(filePaths);
        }
        event->acceptProposedAction();
    } catch (const std::exception& e) {
        _showStatus(StatusTone::Error, "Error loading dropped item: " + QString::fromStdString(e.what()), 5000);
        event->ignore();
    }
}

} // namespace torvex
