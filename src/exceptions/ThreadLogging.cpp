/// \file
/// The threads whose messages stay out of the error log.

#include <windows.h>

#include "LibraryState.h"
#include "exceptions/ThreadLogging.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/sync/Guard.h"

namespace vorel {

void Exception::DisableThreadErrorLogging(bool disable) noexcept {
    detail::LibraryState* const state = detail::libraryState();
    if (!state) {
        return;
    }
    try {
        const Guard<AutoCriticalSection> held(state->silencedThreadsLock);
        auto& threads = state->silencedThreads;
        const unsigned long thread = GetCurrentThreadId();
        if (!disable) {
            threads.remove(thread, thread);
        } else if (threads.find(thread, thread) == threads.end()) {
            threads.put(thread, thread, true);
        }
        AnyThreadLoggingDisabled.store(threads.size() != 0, std::memory_order_relaxed);
    } catch (...) {
        // Without memory the thread's choice stays as it was.
    }
}

bool Exception::IsThreadErrorLoggingDisabled() noexcept {
    if (!AnyThreadLoggingDisabled.load(std::memory_order_relaxed)) {
        return false;
    }
    detail::LibraryState* const state = detail::libraryState();
    if (!state) {
        return false;
    }
    try {
        const Guard<AutoCriticalSection> held(state->silencedThreadsLock);
        const unsigned long thread = GetCurrentThreadId();
        return !(state->silencedThreads.find(thread, thread) == state->silencedThreads.end());
    } catch (...) {
        return false;
    }
}

}  // namespace vorel
