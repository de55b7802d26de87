/// \file
/// Threads whose messages are not written to the error log.

#include <bit>
#include <cstdint>

#include <windows.h>

#include "exceptions/LogState.h"
#include "exceptions/ThreadLogging.h"
#include "vorel/core/Guard.h"
#include "vorel/exceptions/Exception.h"

namespace vorel {

namespace {

/// When the calling thread was created, in the system's units of 100 ns.
std::uint64_t creationTime() noexcept {
    FILETIME times[4] = {};
    GetThreadTimes(GetCurrentThread(), &times[0], &times[1], &times[2], &times[3]);
    return std::bit_cast<std::uint64_t>(times[0]);
}

/// Adds the calling thread to the table of silenced threads, or removes it. An earlier thread with the same id may
/// still be in the table.
void setSilenced(detail::LogState& state, unsigned long thread, bool silenced) noexcept {
    try {
        const Guard<AutoCriticalSection> held(state.silencedThreadsLock);
        auto& threads = state.silencedThreads;
        if (!silenced) {
            threads.remove(thread, thread);
        } else if (const auto found = threads.find(thread, thread); found == threads.end()) {
            threads.put(thread, thread, creationTime());
        } else {
            found.value() = creationTime();
        }
        AnyThreadLoggingDisabled.store(threads.size() != 0, std::memory_order_relaxed);
    } catch (...) {
        // If memory runs out, the thread's setting is unchanged.
    }
}

/// The callback of the fiber-local slot, in which a silenced thread stores its id. The system calls this function with
/// the id when the thread ends, and when the slot is freed. If the thread has become a fiber, the stored id belongs to
/// this fiber, and the system also calls the function when the fiber is deleted. The thread may continue after that, so
/// calls on a fiber are ignored. For this reason, a thread that ends as a fiber stays in the table.
void CALLBACK endThread(void* id) {
    const auto thread = static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(id));
    detail::LogState* const state = detail::logState.get();
    if (state && thread == GetCurrentThreadId() && !IsThreadAFiber()) {
        setSilenced(*state, thread, false);
    }
}

}  // namespace

detail::SilencedThreadEnds::SilencedThreadEnds() noexcept : m_slot(FlsAlloc(&endThread)) {}

detail::SilencedThreadEnds::~SilencedThreadEnds() {
    if (m_slot != FLS_OUT_OF_INDEXES) {
        FlsFree(m_slot);
    }
}

void detail::SilencedThreadEnds::watch(bool silenced) const noexcept {
    if (m_slot != FLS_OUT_OF_INDEXES) {
        FlsSetValue(m_slot, silenced ? reinterpret_cast<void*>(std::uintptr_t{GetCurrentThreadId()}) : nullptr);
    }
}

void Exception::DisableThreadErrorLogging(bool disable) noexcept {
    if (detail::LogState* const state = detail::logState.get()) {
        setSilenced(*state, GetCurrentThreadId(), disable);
    }
    if (const detail::SilencedThreadEnds* const ends = detail::silencedThreadEnds.get()) {
        // A value that a fiber stores belongs to the fiber and not to the thread. When the fiber is deleted, the system
        // would call `endThread` although the thread continues.
        if (!disable || !IsThreadAFiber()) {
            ends->watch(disable);
        }
    }
}

bool Exception::IsThreadErrorLoggingDisabled() noexcept {
    if (!AnyThreadLoggingDisabled.load(std::memory_order_relaxed)) {
        return false;
    }
    detail::LogState* const state = detail::logState.get();
    if (!state) {
        return false;
    }
    try {
        const Guard<AutoCriticalSection> held(state->silencedThreadsLock);
        const unsigned long thread = GetCurrentThreadId();
        const auto found = state->silencedThreads.find(thread, thread);
        return !(found == state->silencedThreads.end()) && found.value() == creationTime();
    } catch (...) {
        return false;
    }
}

}  // namespace vorel
