// The window's side of a background image load: start, supersede, lock, take over.
#include "toolboxes/importData/sequence/ImageLoaderWorker.h"
#include "toolboxes/importData/ImportData.h"
#include "toolboxes/importData/sequence/ThreadHandOff.h"

#include "toolboxes/importData/ImportDataForm.h"

#include <QThread>

namespace torvex {

void ImportData::_stopLoad()
{
    if (!_loader_thread || !_loader_thread->isRunning()) return;
    if (_loader_worker) _loader_worker->cancel();
    _loader_thread->quit();
    _loader_thread->wait(500); // a worker still busy after that runs out on its own
}

void ImportData::_readImageSequence()
{
    _stopLoad();
    imageSequence.reset();
    selectedimageSequence.reset();
    ++_load_id;
    auto* worker = new _ImageLoaderWorker(_load_id, filteredList.value_or(QStringList()));
    auto* thread = new QThread(this);
    worker->moveToThread(thread);
    connect(worker, &_ImageLoaderWorker::progress, this, &ImportData::_onLoadProgress);
    connect(worker, &_ImageLoaderWorker::finished, this, &ImportData::_onLoadFinished);
    connect(worker, &_ImageLoaderWorker::error, this, &ImportData::_onLoadError);
    connect(thread, &QThread::started, worker, &_ImageLoaderWorker::run);
    connect(worker, &_ImageLoaderWorker::finished, thread, &QThread::quit);
    connect(worker, &_ImageLoaderWorker::error, thread, &QThread::quit);
    connect(thread, &QThread::finished, worker, &QObject::deleteLater);
    _loader_thread = thread;
    _loader_worker = worker;
    _setLoadingState(true);
    ui->statusbar->showMessage("Loading " + QString::number(filteredList.value_or(QStringList()).size()) +
                                   " image(s)\u2026",
                               0);
    thread->start();
}

void ImportData::_setLoadingState(bool loading)
{
    const bool enabled = !loading;
    for (QWidget* w : std::initializer_list<QWidget*>{
             ui->pushButton_allSelection, ui->spinBox_rg1, ui->spinBox_rg2, ui->pushButton_import,
             ui->pushButton_generate_function, ui->lineEdit_filter, ui->radioButton_filter, ui->radioButton_regex,
             ui->listWidget_data})
        w->setEnabled(enabled);
    ui->listWidget_imageList->blockSignals(loading);
}

void ImportData::_onLoadProgress(int done, int total)
{
    ui->statusbar->showMessage("Loading image " + QString::number(done) + "/" + QString::number(total) + "\u2026", 0);
}

void ImportData::_onLoadFinished(int load_id, const NdArray& image_sequence)
{
    if (load_id != _load_id) return; // a superseded load
    markReceived();
    imageSequence = image_sequence;
    selectedimageSequence = image_sequence;
    _setLoadingState(false);
    ui->statusbar->showMessage(QString::number(image_sequence.extent(0)) + " image(s) loaded", 5000);
    _refreshPreview();
}

void ImportData::_onLoadError(int load_id, const QString& msg)
{
    if (load_id != _load_id) return;
    _setLoadingState(false);
    ui->statusbar->showMessage("Error loading images: " + msg, 5000);
}

} // namespace torvex
