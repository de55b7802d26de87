/// \file
/// A quick check for every log line whether any thread is silenced, and the cleanup when a silenced thread ends.
#pragma once

#include <atomic>

#include "core/LibraryState.h"

namespace vorel {

/// True while the table of silenced threads is not empty. Read without the table's lock: a line logged during a change
/// may be written or skipped.
inline constinit std::atomic<bool> AnyThreadLoggingDisabled{false};

namespace detail {

/// Removes a silenced thread from the table when it ends, because the system reuses its id for a later thread, whose
/// messages must be logged. Uses a fiber-local slot, because this compiler's `thread_local` is not reliable at the end
/// of a thread.
class SilencedThreadEnds {
public:
    SilencedThreadEnds() noexcept;
    ~SilencedThreadEnds();

    SilencedThreadEnds(const SilencedThreadEnds&) = delete;
    SilencedThreadEnds& operator=(const SilencedThreadEnds&) = delete;

    /// Starts (`silenced`) or stops watching for the end of the calling thread.
    void watch(bool silenced) const noexcept;

private:
    unsigned long m_slot;
};

inline constinit StateObject<SilencedThreadEnds> silencedThreadEnds;

}  // namespace detail

}  // namespace vorel
