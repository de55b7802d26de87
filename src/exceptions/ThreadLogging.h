/// \file
/// The fast answer for every log line, whether any thread is silenced at all; and the end of silenced threads.
#pragma once

#include <atomic>

#include "core/LibraryState.h"

namespace vorel {

/// True while the table of silenced threads holds at least one. Read outside the table's lock: during a change a line
/// may at worst be written or skipped once.
inline constinit std::atomic<bool> AnyThreadLoggingDisabled{false};

namespace detail {

/// Removes a silenced thread from the table when it ends: the system gives its id to a later thread, which has to be
/// heard. Uses a slot of the system, because this compiler's `thread_local` is not reliable at the end of a thread.
class SilencedThreadEnds {
public:
    SilencedThreadEnds() noexcept;
    ~SilencedThreadEnds();

    SilencedThreadEnds(const SilencedThreadEnds&) = delete;
    SilencedThreadEnds& operator=(const SilencedThreadEnds&) = delete;

    /// Watches for the end of the calling thread, or no longer.
    void watch(bool silenced) const noexcept;

private:
    unsigned long m_slot;
};

inline constinit StateObject<SilencedThreadEnds> silencedThreadEnds;

}  // namespace detail

}  // namespace vorel
