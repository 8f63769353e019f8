#include "toolboxes/importData/model/ImageLoad.h"

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
    connect(worker, &_ImageLoaderWorker::frameDecoded, this, &ImageLoad::frameDecoded);
    connect(worker, &_ImageLoaderWorker::placeholders, this, &ImageLoad::placeholders);
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
