/// \file
/// Scoped guards over any lock of the library.
///
///     vorel::ForcedCriticalSection lock;
///     {
///         const vorel::Guard held(lock);          // locked …
///         { const vorel::UnGuard left(lock); }    // … except in here …
///     }                                           // … and released.
///
/// A failure at the end of a scope is reported under the rules of a destructor that may throw: only recorded while
/// another exception unwinds the stack, recorded and thrown on otherwise.
#pragma once

#include "vorel/core/Protocol.h"

namespace vorel {

/// Holds a lock for the length of a block.
template <class Lock>
class Guard {
public:
    /// Takes `lock`, which has to outlive the guard. It is asked to wait for up to a minute, which an `AutoMutex` does;
    /// a critical section waits as long as it takes.
    explicit Guard(Lock& lock) : m_lock(&lock), m_held(lock.lock(kTimeoutMs, true)) {}

    ~Guard() noexcept(false) {
        detail::guardedDestructor(L"Guard", [this] {
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

/// Leaves a held lock for the length of a block, and takes it again at its end.
template <class Lock>
class UnGuard {
public:
    /// Leaves `lock`, which has to outlive the guard.
    explicit UnGuard(Lock& lock) : m_lock(&lock), m_held(true) {
        lock.unlock();
        m_held = false;
    }

    ~UnGuard() noexcept(false) {
        detail::guardedDestructor(L"UnGuard", [this] { m_held = m_lock->lock(kTimeoutMs, true); });
    }

    UnGuard(const UnGuard&) = delete;
    UnGuard& operator=(const UnGuard&) = delete;

private:
    static constexpr unsigned int kTimeoutMs = 60000;

    Lock* m_lock;
    bool m_held;
};

}  // namespace vorel
