/// \file
/// `Condition`: a condition variable within the process, tied to a lock of the caller.
///
///     vorel::ForcedCriticalSection lock;
///     vorel::Condition arrived(lock);
///
///     lock.lock(60000, true);                    // the waiter
///     while (letters == 0 && arrived.wait(-1)) {
///     }
///
/// A signal releases one waiter. If no thread waits, one signal is kept for the next waiter; further signals are lost.
#pragma once

#include "vorel/Attributes.h"
#include "vorel/Export.h"
#include "vorel/core/CriticalSections.h"
#include "vorel/core/KernelHandle.h"

namespace vorel {

/// A condition variable. Thread-safe.
class VOREL_API Condition {
public:
    /// The condition uses `lock` but does not own it; `lock` must outlive the condition.
    /// \throws Exception "malloc failed"; "Failed to create condition."
    explicit Condition(ForcedCriticalSection& lock);

    /// Closes the condition. No thread may be waiting on it.
    ~Condition() noexcept(false);

    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    /// Releases one waiter. If no thread waits, the next waiter is released at once. The caller may hold the lock, but
    /// need not.
    /// \throws Exception "Failed to set event."
    void signal();

    /// Releases one waiter every ten milliseconds until none is left. A thread that calls `wait` during the broadcast
    /// starts to wait after the broadcast. Returns at once if no thread waits. The caller may hold the lock, but need
    /// not. One signal may be left after the broadcast, for example if the time limit of a waiter ended during the
    /// broadcast. This signal releases the next waiter.
    ///
    /// A broadcast may miss a thread that has called `wait` and released the lock, but does not wait yet. So threads
    /// that expect a broadcast should wait with a time limit and then check their condition again.
    /// \throws Exception "Failed to set event."
    void broadcast();

    /// Releases the lock, waits up to `timeout` milliseconds for a signal (-1: without limit), and always locks again.
    /// The caller must hold the lock exactly once. Returns true after a signal, and false after a timeout or a failure.
    bool wait(int timeout);

private:
    static const wchar_t* const ClassName;

    void createCondition();
    void closeCondition();

    ForcedCriticalSection& m_lock;
    VOREL_BEGIN_OWN_MEMBERS
    ForcedCriticalSection m_broadcastLock;  ///< held for a whole broadcast; `wait` locks it briefly before it waits
    detail::KernelHandle m_event;
    volatile long m_waiters = 0;  ///< changed without a lock, so only atomically
    VOREL_END_OWN_MEMBERS
};

}  // namespace vorel
