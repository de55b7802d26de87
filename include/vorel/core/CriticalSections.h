/// \file
/// The locks within a process: three classes with the same interface, so a template can take its lock as a parameter.
///
/// | class                   | locks                                         |
/// |-------------------------|-----------------------------------------------|
/// | `AutoCriticalSection`   | while the thread-safety switch is on          |
/// | `ForcedCriticalSection` | always                                        |
/// | `NoLock`                | never                                         |
///
/// The locks are recursive: the owner may lock again, and must call `unlock` once for each `lock` or `tryLock` that
/// succeeded. `lock` takes a time limit and a flag, like every lock of the library. A critical section distinguishes
/// two limits only: 0 tries once, every other value waits without limit. So `lock(60000, true)` waits without limit by
/// design.
#pragma once

#include "vorel/Export.h"

namespace vorel {

/// A critical section that locks only while `ThreadSafetyEnabledCount` is not 0.
class VOREL_API AutoCriticalSection {
public:
    /// \throws Exception "malloc failed" if the critical section cannot be allocated.
    AutoCriticalSection();
    ~AutoCriticalSection();

    AutoCriticalSection(const AutoCriticalSection&) = delete;
    AutoCriticalSection& operator=(const AutoCriticalSection&) = delete;

    /// Waits for the lock, or only tries to lock if `timeout` is 0. Returns whether the calling thread holds the lock.
    /// While the switch is off, does not lock and returns true immediately. The second argument is ignored.
    bool lock(unsigned int timeout, bool);

    /// Locks if that is possible without waiting. Returns whether the calling thread holds the lock. While the switch
    /// is off, does not lock and returns true.
    bool tryLock();

    /// Unlocks; does nothing while the switch is off.
    void unlock();

    /// The operating system's critical section; owned by the lock.
    [[nodiscard]] void* getHandle() const noexcept { return m_handle; }

protected:
    /// `lock` and `unlock`, independent of the switch.
    bool lockImpl(unsigned int timeout, bool);
    void unlockImpl();

private:
    void* m_handle;
};

/// A critical section that always locks.
class VOREL_API ForcedCriticalSection {
public:
    /// \throws Exception "malloc failed" if the critical section cannot be allocated.
    ForcedCriticalSection();
    ~ForcedCriticalSection();

    ForcedCriticalSection(const ForcedCriticalSection&) = delete;
    ForcedCriticalSection& operator=(const ForcedCriticalSection&) = delete;

    /// Waits for the lock, or only tries to lock if `timeout` is 0. Returns whether the calling thread holds the lock.
    /// The second argument is ignored. `tryLock` is the same as `lock` with the time limit 0.
    bool lock(unsigned int timeout, bool);
    bool tryLock();
    void unlock();
    [[nodiscard]] void* getHandle() const noexcept { return m_handle; }

private:
    void* m_handle;
};

/// A lock that does nothing.
class NoLock {
public:
    /// Does nothing and returns true.
    bool lock(unsigned int, bool) noexcept { return true; }
    bool tryLock() noexcept { return true; }
    void unlock() noexcept {}

    /// Always null.
    [[nodiscard]] void* getHandle() const noexcept { return nullptr; }
};

}  // namespace vorel
