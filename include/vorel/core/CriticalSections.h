/// \file
/// The in-process locks: three policies of one shape, so that a template can take its lock as a parameter.
///
/// | policy                  | locks                                         |
/// |-------------------------|-----------------------------------------------|
/// | `AutoCriticalSection`   | while the thread-safety switch is on          |
/// | `ForcedCriticalSection` | always                                        |
/// | `NoLock`                | never                                         |
///
/// The locks are recursive: the owner may enter again and must leave as often. `lock` takes a time limit and a flag
/// because every lock of the library does; a critical section knows just two limits: 0 tries once, and any other value
/// waits as long as it takes. That is meant: `lock(60000, true)` waits without limit.
#pragma once

#include "vorel/Export.h"

namespace vorel {

/// A critical section that locks only while `ThreadSafetyEnabledCount` is not 0.
class VOREL_API AutoCriticalSection {
public:
    /// \throws Exception "malloc failed" when the critical section cannot be allocated.
    AutoCriticalSection();
    ~AutoCriticalSection();

    AutoCriticalSection(const AutoCriticalSection&) = delete;
    AutoCriticalSection& operator=(const AutoCriticalSection&) = delete;

    /// Locks (`timeout` other than 0), or tries to (0), and says whether the lock is held; true at once while the
    /// switch is off. The second argument is not looked at.
    bool lock(unsigned int timeout, bool);

    /// Takes the lock if that needs no waiting, and says whether it did; true while the switch is off.
    bool tryLock();

    /// Leaves the lock; does nothing while the switch is off.
    void unlock();

    /// The operating system's critical section; owned by the lock.
    [[nodiscard]] void* getHandle() const noexcept { return m_handle; }

protected:
    /// `lock` and `unlock` whatever the switch says.
    bool lockImpl(unsigned int timeout, bool);
    void unlockImpl();

private:
    void* m_handle;
};

/// A critical section that locks always.
class VOREL_API ForcedCriticalSection {
public:
    /// \throws Exception "malloc failed" when the critical section cannot be allocated.
    ForcedCriticalSection();
    ~ForcedCriticalSection();

    ForcedCriticalSection(const ForcedCriticalSection&) = delete;
    ForcedCriticalSection& operator=(const ForcedCriticalSection&) = delete;

    /// Locks (`timeout` other than 0), or tries to (0), and says whether the lock is held.
    bool lock(unsigned int timeout, bool);
    bool tryLock();
    void unlock();
    [[nodiscard]] void* getHandle() const noexcept { return m_handle; }

private:
    void* m_handle;
};

/// No lock in the shape of one.
class NoLock {
public:
    /// Nothing happens, and every lock is had at once.
    bool lock(unsigned int, bool) noexcept { return true; }
    bool tryLock() noexcept { return true; }
    void unlock() noexcept {}

    /// Null: there is no critical section.
    [[nodiscard]] void* getHandle() const noexcept { return nullptr; }
};

}  // namespace vorel
