#include "toolboxes/importData/model/ImageLoad.h"

#include "toolboxes/importData/sequence/ThreadHandOff.h"

#include <QThread>

namespace torvex {

ImageLoad::ImageLoad(QObject* parent) : QObject(parent) {}

ImageLoad::~ImageLoad()
{
    // Load threads are children of this object: each must have ended before it goes.
    if (_loader_worker) _loader_worker->cancel();
    for (QThread* thread : findChildren<QThread*>(QString(), Qt::FindDirectChildrenOnly)) {
        thread->quit();
        thread->wait();
    }
}

bool ImageLoad::running() const { return _loader_thread && _loader_thread->isRunning(); }

void ImageLoad::stop()
{
    if (!running()) return;
    if (_loader_worker) _loader_worker->cancel();
    _loader_thread->quit();
    _loader_thread->wait(500);
}

bool ImageLoad::cancel()
{
    if (!running()) return false;
    stop();
    ++_load_id;
    return true;
}

void ImageLoad::start(const QStringList& files, SequenceReading reading, const QList<FramePage>& pages)
{
    stop();
    ++_load_id;
    auto* worker = new _ImageLoaderWorker(_load_id, files, reading, pages);
    auto* thread = new QThread(this);
    worker->moveToThread(thread);
    connect(worker, &_ImageLoaderWorker::progress, this, &ImageLoad::progress);
    // Frames and reasons were made on other threads: received here, before
    // anyone (or the queued event's own clean-up) touches them.
    connect(worker, &_ImageLoaderWorker::frameDecoded, this, [this](int load_id, int index, const NdArray& frame) {
        markReceived();
        emit frameDecoded(load_id, index, frame);
    });
    connect(worker, &_ImageLoaderWorker::placeholders, this, [this](int load_id, const QMap<int, QString>& reasons) {
        markReceived();
        emit placeholders(load_id, reasons);
    });
    connect(worker, &_ImageLoaderWorker::finished, this, &ImageLoad::finished);
    connect(worker, &_ImageLoaderWorker::error, this, &ImageLoad::error);
    connect(thread, &QThread::started, worker, &_ImageLoaderWorker::run);
    connect(worker, &_ImageLoaderWorker::finished, thread, &QThread::quit);
    connect(worker, &_ImageLoaderWorker::error, thread, &QThread::quit);
    connect(thread, &QThread::finished, worker, &QObject::deleteLater);
    _loader_thread = thread;
    _loader_worker = worker;
    thread->start();
}

} // namespace torvex
