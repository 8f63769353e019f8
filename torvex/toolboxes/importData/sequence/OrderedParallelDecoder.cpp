#include "OrderedParallelDecoder.h"

#include <algorithm>

namespace torvex {

int OrderedParallelDecoder::defaultHelperThreads()
{
    return std::clamp(static_cast<int>(std::thread::hardware_concurrency()) - 1, 0, 7);
}

OrderedParallelDecoder::OrderedParallelDecoder(const QStringList& paths, Decode decode,
                                               const std::atomic<bool>& cancelled, int helperThreads)
    : paths_(paths), decode_(std::move(decode)), cancelled_(cancelled), results_(paths.size()),
      done_(paths.size(), false)
{
    const int helpers = std::min<int>(helperThreads, static_cast<int>(paths.size()) - 1);
    for (int i = 0; i < helpers; ++i) helpers_.emplace_back([this] { helperLoop(); });
}

OrderedParallelDecoder::~OrderedParallelDecoder()
{
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    for (std::thread& helper : helpers_) helper.join();
}

bool OrderedParallelDecoder::decodeNext(std::unique_lock<std::mutex>& lock, bool evenIfCancelled)
{
    if (stopping_ || (cancelled_ && !evenIfCancelled) || nextToStart_ >= paths_.size()) return false;
    const int index = nextToStart_++;
    lock.unlock();
    std::optional<NdArray> result = decode_(index, paths_[index]);
    lock.lock();
    results_[index] = std::move(result);
    done_[index] = true;
    resultReady_.notify_all();
    return true;
}

void OrderedParallelDecoder::helperLoop()
{
    std::unique_lock lock(mutex_);
    while (decodeNext(lock)) {
    }
}

std::optional<NdArray> OrderedParallelDecoder::take(int index)
{
    std::unique_lock lock(mutex_);
    while (!done_[index]) {
        // The caller asks for this file, so a cancel that came since does not
        // stop it. Rather than idle, decode ahead; wait only when nothing is
        // left to start.
        const bool wanted = nextToStart_ <= index;
        if (!decodeNext(lock, wanted)) resultReady_.wait(lock, [&] { return done_[index]; });
    }
    return std::move(results_[index]);
}

} // namespace torvex
