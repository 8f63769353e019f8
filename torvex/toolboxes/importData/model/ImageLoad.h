#pragma once

#include "toolboxes/importData/sequence/ImageLoaderWorker.h"

#include <QObject>
#include <QPointer>
#include <QStringList>

class QThread;

namespace torvex {

// The life cycle of background image loads: one worker on its own thread per
// load; a new load supersedes the last, whose results then count for nothing.
// Every load thread has ended before this object goes.
class ImageLoad : public QObject {
    Q_OBJECT
public:
    explicit ImageLoad(QObject* parent = nullptr);
    ~ImageLoad() override;

    // Thread and worker of the running or last load, and its number.
    QThread* _loader_thread = nullptr;
    QPointer<_ImageLoaderWorker> _loader_worker;
    int _load_id = 0;

    bool running() const;
    // Stops the running load, then starts one of `files` under a new number.
    void start(const QStringList& files, SequenceReading reading = {}, const QList<FramePage>& pages = {});
    // Asks the running load to stop and waits a little for it; a worker still
    // busy after that runs out on its own and is ignored.
    void stop();
    // Stops the running load, if any, and voids whatever it still sends.
    // Returns whether a load was running.
    bool cancel();

signals:
    // The worker's own signals, passed on from the GUI thread.
    void progress(int done, int total);
    void frameDecoded(int load_id, int index, const torvex::NdArray& frame);
    void placeholders(int load_id, const QMap<int, QString>& reasons);
    void finished(int load_id, const torvex::NdArray& image_sequence);
    void error(int load_id, const QString& msg);
};

} // namespace torvex
