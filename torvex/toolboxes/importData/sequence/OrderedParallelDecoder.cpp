#include "OrderedParallelDecoder.h"

#include "ThreadHandOff.h"

#include <QThread>

#include <algorithm>

namespace torvex {

int OrderedParallelDecoder::defaultHelperThreads() { return std::clamp(QThread::idealThreadCount() - 1, 0, 7); }

OrderedParallelDecoder::OrderedParallelDecoder(const QStringList& paths, Decode decode,
                                               const std::atomic<bool>& cancelled, int helperThreads)
    : paths_(paths), decode_(std::move(decode)), cancelled_(cancelled),
      // Enough queued work to keep every helper busy while the caller takes
      // results; none without helpers.
      lookAhead_(helperThreads > 0 ? 2 * (helperThreads + 1) : 0), results_(paths.size()),
      states_(paths.size(), State::Waiting)
{
    pool_.setMaxThreadCount(std::max(helperThreads, 1));
    std::lock_guard lock(mutex_);
    queueUpTo(0);
}

OrderedParallelDecoder::~OrderedParallelDecoder()
{
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    pool_.clear(); // files queued but not started
    pool_.waitForDone();
}

void OrderedParallelDecoder::queueUpTo(int index)
{
    const int end = std::min<int>(static_cast<int>(paths_.size()), index + 1 + lookAhead_);
    for (; lookAhead_ > 0 && !stopping_ && !cancelled_ && queued_ < end; ++queued_) {
        // The pool hands work over under a lock of Qt's, which the thread
        // checker cannot see; these marks tell it what that lock orders.
        markSending();
        pool_.start([this, index = queued_] {
            markReceived();
            decodeQueued(index);
        });
    }
}

void OrderedParallelDecoder::decodeQueued(int index)
{
    std::unique_lock lock(mutex_);
    if (states_[index] == State::Waiting && !stopping_ && !cancelled_) decode(index, lock);
}

void OrderedParallelDecoder::decode(int index, std::unique_lock<std::mutex>& lock)
{
    states_[index] = State::Running;
    lock.unlock();
    std::optional<NdArray> result = decode_(index, paths_[index]);
    lock.lock();
    results_[index] = std::move(result);
    states_[index] = State::Done;
    resultReady_.notify_all();
}

std::optional<NdArray> OrderedParallelDecoder::take(int index)
{
    std::unique_lock lock(mutex_);
    queueUpTo(index);
    while (states_[index] != State::Done) {
        // The caller asks for this file, so a cancel that came since does not
        // stop it.
        if (states_[index] == State::Waiting) {
            decode(index, lock);
            break;
        }
        // Rather than idle while a helper finishes it, decode a later file
        // the pool has not started yet.
        const auto first = states_.begin() + index + 1, last = states_.begin() + queued_;
        const auto waiting = std::find(first, std::max(first, last), State::Waiting);
        if (!cancelled_ && waiting < last) decode(static_cast<int>(waiting - states_.begin()), lock);
        else resultReady_.wait(lock);
    }
    return std::move(results_[index]);
}

} // namespace torvex
