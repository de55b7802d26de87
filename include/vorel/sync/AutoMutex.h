/// \file
/// `AutoMutex`: a recursive lock with a name, which all processes of the machine share, whatever user they run under.
///
///     vorel::AutoMutex ledger(L"TalvenorLedger", false, false);
///     const vorel::Guard held(ledger);
///
/// | state       | handle | count | owner  | left by                                              |
/// |-------------|--------|-------|--------|------------------------------------------------------|
/// | unnamed     | none   | 0     | none   | `initialize`                                         |
/// | initialised | open   | 0     | none   | `lock`, `tryLock`; the end of the object             |
/// | held        | open   | ≥ 1   | thread | as many `unlock` of the owner as there were locks    |
///
/// The mutex of the operating system is taken and released once for each hold; the object keeps count of its own holds.
/// When a thread ends, or its process is killed, without giving a mutex back, the next one to take it gets it, with a
/// warning in the error log.
///
/// The system reports an abandoned mutex once, to one object. If that is not the object through which the ended thread
/// held the mutex, that object keeps the thread's id and its holds. This has the following effects:
///
/// - `lock` and `tryLock` of every other thread throw "Mutex …: Trying to increment lock count …" and give the mutex
///   back; no other object is affected. `unlock` does nothing.
/// - `initialize` with another name throws. So does the destructor, which closes the mutex all the same.
/// - The system may give the id to a new thread. The object takes that thread for the owner: its locks succeed, and one
///   `unlock` more than there were locks throws "AutoMutex::unlock: Failed to release mutex …" instead of doing
///   nothing. The destructor throws the same on this thread.
/// - The record is cleared only if the mutex is abandoned again and the system reports it to this object.
///
/// A program whose lock fails in this way destroys the object, catches what the destructor throws, and creates a new
/// one. It is avoided by threads that end only after they gave the mutex back.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/BaseString.h"
#include "vorel/core/CriticalSections.h"
#include "vorel/core/KernelHandle.h"

namespace vorel {

namespace detail {
struct MutexAccess;
}

/// Thread-safe, but for `initialize` and the destructor, while the thread-safety switch is on.
class VOREL_API AutoMutex {
public:
    /// Opens the mutex `name`, and takes it if `lockNow` is set, waiting for up to a minute. A null `name` makes an
    /// object without a mutex. `flag` is kept and not looked at.
    /// \throws Exception "malloc failed"; "AutoMutex: Failed to create mutex …"; what `lock` throws.
    AutoMutex(const wchar_t* name, bool lockNow, bool flag);

    /// Gives back every hold of the object and closes the mutex. When another thread holds it, waits for up to a
    /// minute. \throws Exception, unless another exception unwinds the stack.
    virtual ~AutoMutex() noexcept(false);

    AutoMutex(const AutoMutex&) = delete;
    AutoMutex& operator=(const AutoMutex&) = delete;

    /// Opens the mutex "Global\" + `name`; names differ by case. Does nothing when the object has that mutex already,
    /// and closes the one that it has under another name first. `flag` is kept and not looked at.
    ///
    /// \returns whether there is a mutex now; if not, a warning in the error log says why, and the call may be
    /// repeated.
    ///
    /// \throws Exception "AutoMutex::initialize: Name required for mutex" for a null name; and when the mutex of
    /// another name cannot be closed, or another thread does not give it back within a minute.
    virtual bool initialize(const wchar_t* name, bool flag);

    /// Waits for the mutex for up to `timeout` milliseconds (0xFFFFFFFF: without limit) and says whether it is held. A
    /// mutex that its owner left behind counts as taken, with a warning.
    ///
    /// A failure, the end of the time included, is told in this order: as an exception, if `throwOnFailure` is set; in
    /// `errorText`, if that is not null; and, if `timeout` is not 0, as a warning.
    ///
    /// \throws Exception "AutoMutex::lock: Mutex not initialized"; "AutoMutex::lock: Failed to lock mutex …"; and
    /// "Mutex …: Trying to increment lock count from a thread that does not own the mutex. …", where the object still
    /// records a thread that ended with the mutex held, because the system reported it to another object: the mutex is
    /// then given back.
    bool lock(unsigned int timeout, bool throwOnFailure, BaseString<wchar_t>* errorText = nullptr);

    /// Takes the mutex if that needs no waiting, and says whether it did.
    /// \throws Exception "AutoMutex::lock: Mutex not initialized"; and for a recorded thread that has ended, like
    /// `lock`.
    bool tryLock();

    /// Gives one hold back. Does nothing when nothing is held, or when another thread is the owner.
    /// \throws Exception "AutoMutex::unlock: Mutex not initialized"; "AutoMutex::unlock: Failed to release mutex …",
    /// and then the hold is still there.
    void unlock();

    /// Null: the reasons of a failing `initialize` stand in the error log.
    [[nodiscard]] const wchar_t* getInitializeError() const noexcept { return m_initializeError.c_str(); }

    /// Kept, and not looked at on this platform.
    void SetUseFcntlTimeout(bool useFcntlTimeout) noexcept { m_useFcntlTimeout = useFcntlTimeout; }

private:
    friend struct detail::MutexAccess;

    static const wchar_t* const ClassName;

    [[nodiscard]] const wchar_t* name() const noexcept { return m_name.view().data(); }
    void requireMutex(const wchar_t* message) const;
    unsigned long waitFor(unsigned int timeout);
    void countTaken();
    void takeFromOtherThread();
    void changeOwner(const wchar_t* change, long long owner);

    void terminate();
    int GetLockCount();
    void SetLockCount(bool increment);
    long long GetLockingThreadID();
    void SetLockingThreadID();
    void ResetLockingThreadID();

    detail::KernelHandle m_mutex;
    BaseString<wchar_t> m_name;
    BaseString<wchar_t> m_initializeError;
    AutoCriticalSection m_bookkeeping;  ///< guards the two that follow
    int m_lockCount = 0;
    long long m_lockingThreadId = 0;  ///< 0: nobody
    bool m_flag = false;
    bool m_useFcntlTimeout = false;
};

}  // namespace vorel
