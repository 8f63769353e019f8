#pragma once

#include "toolboxes/importData/volume/NdArray.h"

#include <QStringList>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace torvex {

// Decodes a list of files on the calling thread and on helper threads, and
// hands the results back strictly in list order. No file is started once
// `cancelled` is set; a file already started is finished. The destructor
// waits for the helpers, so it returns at most one file's decoding later.
class OrderedParallelDecoder {
public:
    using Decode = std::function<std::optional<NdArray>(int index, const QString& path)>; // must not throw

    OrderedParallelDecoder(const QStringList& paths, Decode decode, const std::atomic<bool>& cancelled,
                           int helperThreads = defaultHelperThreads());
    ~OrderedParallelDecoder();
    OrderedParallelDecoder(const OrderedParallelDecoder&) = delete;
    OrderedParallelDecoder& operator=(const OrderedParallelDecoder&) = delete;

    // The result of paths[index], waiting for it, and decoding later files
    // meanwhile. Each index is taken once, in increasing order.
    std::optional<NdArray> take(int index);

    // One helper per core beyond the caller's.
    static int defaultHelperThreads();

private:
    // Claims and decodes the next file not yet started; false when none is
    // left or a cancel forbids starting it.
    bool decodeNext(std::unique_lock<std::mutex>& lock, bool evenIfCancelled = false);
    void helperLoop();

    const QStringList paths_;
    const Decode decode_;
    const std::atomic<bool>& cancelled_;
    std::mutex mutex_;
    std::condition_variable resultReady_;
    int nextToStart_ = 0;
    bool stopping_ = false;
    std::vector<std::optional<NdArray>> results_;
    std::vector<bool> done_;
    std::vector<std::thread> helpers_;
};

} // namespace torvex
