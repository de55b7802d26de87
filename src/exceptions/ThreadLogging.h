/// \file
/// A quick check for every log line whether any thread is silenced, and the cleanup when a silenced thread ends.
#pragma once

#include <atomic>

#include "core/LibraryState.h"

namespace vorel {

/// True while the table of silenced threads is not empty. It is read without the table's lock, so a line that is logged
/// during a change may or may not be written.
inline constinit std::atomic<bool> AnyThreadLoggingDisabled{false};

namespace detail {

/// Removes a silenced thread from the table when the thread ends. A thread that is terminated, that silenced itself as
/// a fiber, or that ends as a fiber, is not removed. The system may reuse the id of such a thread for a later thread.
/// The old entry has no effect on the later thread, because the creation times of the two threads differ. The class
/// uses a fiber-local slot, because the compiler's `thread_local` is not reliable at the end of a thread. If the system
/// has no free slot, no thread is removed.
class SilencedThreadEnds {
public:
    SilencedThreadEnds() noexcept;
    ~SilencedThreadEnds();

    SilencedThreadEnds(const SilencedThreadEnds&) = delete;
    SilencedThreadEnds& operator=(const SilencedThreadEnds&) = delete;

    /// Starts to watch for the end of the calling thread if `silenced` is true; otherwise stops.
    void watch(bool silenced) const noexcept;

private:
    unsigned long m_slot;
};

inline constinit StateObject<SilencedThreadEnds> silencedThreadEnds;

}  // namespace detail

}  // namespace vorel
