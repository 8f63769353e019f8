#pragma once

#include "toolboxes/importData/sequence/FramePages.h"
#include "toolboxes/importData/sequence/SequenceReading.h"
#include "toolboxes/importData/volume/NdArray.h"

#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>

#include <atomic>

namespace torvex {

// Loads a list of files into one uint8 stack of shape (N, H, W) or
// (N, H, W, 3), one frame per path in list order, off the GUI thread. A file
// that is no image becomes a placeholder frame showing its name and content.
// Every image is stretched to 8 bits on its own (or, with `keepDepth`, keeps
// its stored values in the stack's one widened type), brought to one channel
// count and centred on the largest height and width with zeros.
//
// Meant to be moved to its own QThread and started by its `started` signal.
// A run ends with `finished`, with `error`, or, once cancelled, silently.
class _ImageLoaderWorker : public QObject {
    Q_OBJECT
public:
    // `pages`: the page of each path to read (see everyPage); none, the first.
    _ImageLoaderWorker(int load_id, const QStringList& filtered_list, SequenceReading reading = {},
                       const QList<FramePage>& pages = {});

    // Called from another thread while run() works: the run stops at its next
    // check and sends neither `finished` nor `error`.
    void cancel();

    const int _load_id;
    const QStringList _filtered_list;
    const SequenceReading _reading;
    const QList<FramePage> _pages;
    std::atomic<bool> _cancelled{false};

public slots:
    void run();

signals:
    void progress(int done, int total);
    // An image of the list decoded in the first pass, as decoded (before the
    // stack's channel count and size), so it can be looked at during the load.
    void frameDecoded(int load_id, int index, torvex::NdArray frame);
    // Sent just before `finished` when frames of the stack are placeholders:
    // their rows, and why each file could not be read as an image.
    void placeholders(int load_id, QMap<int, QString> reasons);
    void finished(int load_id, torvex::NdArray image_sequence);
    void error(int load_id, QString msg);
};

} // namespace torvex
