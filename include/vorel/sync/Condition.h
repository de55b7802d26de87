/// \file
/// `Condition`: a condition variable within the process, tied to a lock of the caller's.
///
///     vorel::ForcedCriticalSection lock;
///     vorel::Condition arrived(lock);
///
///     lock.lock(60000, true);                    // the waiter
///     while (letters == 0 && arrived.wait(-1)) {
///     }
///
/// A signal releases one waiter. One that finds none is kept for the next to wait, but no more than one is.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/CriticalSections.h"
#include "vorel/core/KernelHandle.h"

namespace vorel {

/// Thread-safe.
class VOREL_API Condition {
public:
    /// `lock` stays the caller's, and must outlive the condition.
    /// \throws Exception "malloc failed"; "Failed to create condition."
    explicit Condition(ForcedCriticalSection& lock);
    ~Condition() noexcept(false);

    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    /// Releases one waiter, or the next one to come. The caller may hold the lock or not.
    /// \throws Exception "Failed to set event."
    void signal();

    /// Releases the waiters one by one, ten milliseconds apart, until none is left; those that come meanwhile begin to
    /// wait when it is over. Returns at once when nobody waits. The caller may hold the lock or not.
    ///
    /// A thread that has left the lock on its way into `wait`, and does not wait yet, is not reached: whoever waits for
    /// a broadcast waits with a limit, and looks again.
    /// \throws Exception "Failed to set event."
    void broadcast();

    /// Leaves the lock, which the caller holds once, waits for a signal for up to `timeout` milliseconds (-1: without
    /// limit), and takes the lock again, whatever happened. True after a signal, false after the end of the time or a
    /// failure.
    bool wait(int timeout);

private:
    static const wchar_t* const ClassName;

    void createCondition();
    void closeCondition();

    ForcedCriticalSection& m_lock;
    ForcedCriticalSection m_broadcastLock;  ///< held for a whole broadcast; waiters pass through it
    detail::KernelHandle m_event;
    volatile long m_waiters = 0;  ///< changed outside every lock, so only atomically
};

}  // namespace vorel
