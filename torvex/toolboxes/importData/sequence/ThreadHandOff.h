#pragma once

// A queued signal carries the loader's results to the GUI thread under Qt's
// own lock, and Qt is not built for ThreadSanitizer, which therefore cannot
// see that everything the worker did before sending happens before what the
// receiving slot does. These two marks say so; in other builds they are empty.

#if defined(__SANITIZE_THREAD__)
#define TORVEX_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define TORVEX_THREAD_SANITIZER 1
#endif
#endif

#ifdef TORVEX_THREAD_SANITIZER
extern "C" void __tsan_acquire(void* addr);
extern "C" void __tsan_release(void* addr);
#endif

namespace torvex {

namespace threadhandoff {
inline char token;
}

// In the sending thread, just before the signal.
inline void markSending()
{
#ifdef TORVEX_THREAD_SANITIZER
    __tsan_release(&threadhandoff::token);
#endif
}

// In the receiving slot, before it touches what the signal brought.
inline void markReceived()
{
#ifdef TORVEX_THREAD_SANITIZER
    __tsan_acquire(&threadhandoff::token);
#endif
}

} // namespace torvex
