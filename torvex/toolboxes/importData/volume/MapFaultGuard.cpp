#include "toolboxes/importData/volume/MapFaultGuard.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <mutex>

#include <sys/mman.h>
#include <unistd.h>

namespace torvex::MapFaultGuard {

namespace {

// Why a signal handler: a file may be cut by another program at any time, and
// every reader of the map (decoders, display, copies on worker threads) would
// otherwise need to check before each page. The handler only reads lock-free
// slots and makes one system call, mmap, which is safe to call there on Linux.
// Replacing the cut page by an anonymous zero page lets the faulting read finish;
// the slot remembers it, so the tool reports the change instead of dying.
struct Slot {
    std::atomic<uintptr_t> begin{0};
    std::atomic<uintptr_t> end{0};
    std::atomic<bool> faulted{false};
};

constexpr int kSlots = 256;
std::array<Slot, kSlots> slots;
std::mutex claiming;
struct sigaction previous {};

void chainToPrevious(int signal, siginfo_t* info, void* context)
{
    if (previous.sa_flags & SA_SIGINFO) {
        if (previous.sa_sigaction) previous.sa_sigaction(signal, info, context);
        return;
    }
    if (previous.sa_handler == SIG_IGN) return;
    if (previous.sa_handler != SIG_DFL) {
        previous.sa_handler(signal);
        return;
    }
    // The default action: returning re-runs the faulting access, which now dies.
    ::signal(signal, SIG_DFL);
}

void onBusError(int signal, siginfo_t* info, void* context)
{
    const auto address = reinterpret_cast<uintptr_t>(info->si_addr);
    for (Slot& slot : slots) {
        if (address < slot.begin.load(std::memory_order_acquire) || address >= slot.end.load(std::memory_order_acquire))
            continue;
        const uintptr_t page = static_cast<uintptr_t>(::sysconf(_SC_PAGESIZE));
        void* at = reinterpret_cast<void*>(address & ~(page - 1));
        if (::mmap(at, page, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) == MAP_FAILED) break;
        slot.faulted.store(true, std::memory_order_release);
        return;
    }
    chainToPrevious(signal, info, context);
}

void installOnce()
{
    static std::once_flag installed;
    std::call_once(installed, [] {
        struct sigaction action {};
        action.sa_sigaction = onBusError;
        action.sa_flags = SA_SIGINFO | SA_NODEFER;
        sigemptyset(&action.sa_mask);
        ::sigaction(SIGBUS, &action, &previous);
    });
}

} // namespace

int watch(const void* begin, size_t length)
{
    installOnce();
    const std::lock_guard lock(claiming);
    for (int i = 0; i < kSlots; ++i) {
        Slot& slot = slots[static_cast<size_t>(i)];
        if (slot.end.load() != 0) continue;
        slot.faulted.store(false);
        slot.begin.store(reinterpret_cast<uintptr_t>(begin), std::memory_order_release);
        slot.end.store(reinterpret_cast<uintptr_t>(begin) + length, std::memory_order_release);
        return i;
    }
    return -1;
}

void unwatch(int slot)
{
    if (slot < 0) return;
    const std::lock_guard lock(claiming);
    slots[static_cast<size_t>(slot)].end.store(0, std::memory_order_release);
    slots[static_cast<size_t>(slot)].begin.store(0, std::memory_order_release);
}

bool faulted(int slot) { return slot >= 0 && slots[static_cast<size_t>(slot)].faulted.load(std::memory_order_acquire); }

} // namespace torvex::MapFaultGuard
