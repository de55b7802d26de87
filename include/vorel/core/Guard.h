/// \file
/// Scoped guards for every lock of the library.
///
///     vorel::ForcedCriticalSection lock;
///     {
///         const vorel::Guard held(lock);          // locked ...
///         { const vorel::UnGuard left(lock); }    // ... except in here ...
///     }                                           // ... and released.
///
/// If unlocking or locking fails at the end of a scope, the failure is recorded. It is rethrown unless another
/// exception is already unwinding the stack.
#pragma once

#include "vorel/core/Protocol.h"

namespace vorel {

/// Holds a lock during a block.
template <class Lock>
class Guard {
public:
    /// Locks `lock`, which must outlive the guard. An `AutoMutex` waits up to a minute and then throws; a critical
    /// section waits without limit.
    /// \throws the exceptions of `lock.lock`.
    explicit Guard(Lock& lock) : m_lock(&lock), m_held(lock.lock(kTimeoutMs, true)) {}

    /// Unlocks the lock. A failure is recorded, and thrown unless another exception unwinds the stack.
    ~Guard() noexcept(false) {
        detail::runDestructor(L"Guard", [this] {
            if (m_held) {
                m_held = false;
                m_lock->unlock();
            }
        });
    }

    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    static constexpr unsigned int kTimeoutMs = 60000;

    Lock* m_lock;
    bool m_held;
};

/// Releases a held lock during a block, and locks it again at the end.
template <class Lock>
class UnGuard {
public:
    /// Unlocks `lock` once; `lock` must outlive the guard. If the thread has locked `lock` several times, the thread
    /// still holds it during the block. If unlocking fails, the exception of `unlock` leaves the constructor, and no
    /// `UnGuard` exists that would lock again.
    explicit UnGuard(Lock& lock) : m_lock(&lock), m_held(false) { lock.unlock(); }

    /// Locks the lock again. An `AutoMutex` waits up to a minute; a critical section waits without limit. A failure,
    /// such as a timeout, is recorded, and thrown unless another exception unwinds the stack.
    ~UnGuard() noexcept(false) {
        detail::runDestructor(L"UnGuard", [this] { m_held = m_lock->lock(kTimeoutMs, true); });
    }

    UnGuard(const UnGuard&) = delete;
    UnGuard& operator=(const UnGuard&) = delete;

private:
    static constexpr unsigned int kTimeoutMs = 60000;

    Lock* m_lock;
    bool m_held;
};

}  // namespace vorel
