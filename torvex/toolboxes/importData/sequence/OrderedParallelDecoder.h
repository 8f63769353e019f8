#pragma once

#include "toolboxes/importData/volume/NdArray.h"

#include <QStringList>
#include <QThreadPool>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace torvex {

// Decodes a list of files on a thread pool of its own and on the calling
// thread, and hands the results back strictly in list order. Only a few files
// are decoded ahead of the one asked for, so results never pile up. No file is
// started once `cancelled` is set; a file already started is finished. The
// destructor waits for the pool's threads, so it returns at most one file's
// decoding later, and no thread outlives it.
class OrderedParallelDecoder {
public:
    using Decode = std::function<std::optional<NdArray>(int index, const QString& path)>; // must not throw

    OrderedParallelDecoder(const QStringList& paths, Decode decode, const std::atomic<bool>& cancelled,
                           int helperThreads = defaultHelperThreads());
    ~OrderedParallelDecoder();
    OrderedParallelDecoder(const OrderedParallelDecoder&) = delete;
    OrderedParallelDecoder& operator=(const OrderedParallelDecoder&) = delete;

    // The result of paths[index], waiting for it, and decoding later files
    // meanwhile. Each index is taken once, in increasing order. A file not yet
    // started is decoded on the calling thread, even after a cancel.
    std::optional<NdArray> take(int index);

    // One helper per core beyond the caller's.
    static int defaultHelperThreads();

private:
    enum class State : char { Waiting, Running, Done };

    // Hands files up to `index` + the look-ahead to the pool. Needs the lock.
    void queueUpTo(int index);
    // The pool's part: decodes paths[index] unless the caller has taken it
    // over or a cancel came first.
    void decodeQueued(int index);
    void decode(int index, std::unique_lock<std::mutex>& lock);

    const QStringList paths_;
    const Decode decode_;
    const std::atomic<bool>& cancelled_;
    const int lookAhead_;
    std::mutex mutex_;
    std::condition_variable resultReady_;
    int queued_ = 0; // files handed to the pool: 0..queued_-1
    bool stopping_ = false;
    std::vector<std::optional<NdArray>> results_;
    std::vector<State> states_;
    // Last member: destroyed first, so its threads end before the rest goes.
    QThreadPool pool_;
};

} // namespace torvex
