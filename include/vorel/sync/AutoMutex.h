/// \file
/// `AutoMutex`: a named recursive lock, shared by the processes of all users on the machine.
///
///     vorel::AutoMutex ledger(L"TalvenorLedger", false, false);   // or "TalvenorLedger", in UTF-8
///     const vorel::Guard held(ledger);
///
/// | state       | handle | count | owner  | left by                                                             |
/// |-------------|--------|-------|--------|---------------------------------------------------------------------|
/// | unnamed     | none   | 0     | none   | `initialize`                                                        |
/// | initialised | open   | 0     | none   | `lock`, `tryLock`; destruction                                      |
/// | held        | open   | >= 1  | thread | `unlock` for each hold; `initialize` with another name; destruction |
///
/// Each successful `lock` or `tryLock` locks the system's mutex once, and each `unlock` of the owner unlocks it once;
/// the object counts its own holds. If a thread ends while it holds a mutex, or its process is killed, the next thread
/// that locks the mutex acquires it, with a warning in the error log.
///
/// A mutex whose owner has ended is called abandoned. The system reports an abandoned mutex only once: to the object
/// that locks the mutex next. For example, a thread ends while it holds the mutex through object X, and object Y locks
/// the mutex next. Only Y gets the report. X still records the id of the ended thread and its number of holds. This has
/// the following effects on X, but not on Y and other objects:
///
/// - On every thread with another id, `lock` and `tryLock` throw "Mutex ...: Trying to increment lock count ..." and
///   release the mutex, and `unlock` does nothing.
/// - `initialize` with another name throws. The destructor throws too, but it still closes the mutex.
/// - The system may reuse the id for a new thread. X treats the new thread as the owner: its locks succeed. If the new
///   thread calls `unlock` without holding the mutex, the call throws "AutoMutex::unlock: Failed to release mutex ..."
///   instead of doing nothing. On the new thread, the destructor throws the same exception.
/// - The recorded owner is cleared only if the mutex is abandoned again and the system reports that to X.
///
/// A program should then destroy X, catch the destructor's exception, and create a new object. If every thread releases
/// the mutex before it ends, the problem cannot occur.
#pragma once

#include <concepts>

#include "vorel/Attributes.h"
#include "vorel/Export.h"
#include "vorel/core/BaseString.h"
#include "vorel/core/CriticalSections.h"
#include "vorel/core/KernelHandle.h"
#include "vorel/sync/NarrowName.h"

namespace vorel {

namespace detail {
struct MutexAccess;
}

/// A named recursive lock. Thread-safe while the thread-safety switch is on, except `initialize` and the destructor.
class VOREL_API AutoMutex {
public:
    /// Opens the mutex `name`. If `lockNow` is true, locks it, waiting up to a minute. With a null `name` the object
    /// has no mutex. `flag` is stored and ignored.
    /// \throws Exception "malloc failed"; "AutoMutex: Failed to create mutex ..."; MemoryException; the exceptions of
    ///         `lock`.
    AutoMutex(const wchar_t* name, bool lockNow, bool flag);

    /// The same with a name in UTF-8, which is converted to UTF-16. The constructor is a template, so that
    /// `AutoMutex(nullptr, ...)` is not ambiguous.
    /// \throws Exception with the message "Failed to convert utf8 text to String: ..." if a byte of `name` should
    ///         start a sequence but cannot (see vorel/text/Unicode.h); MemoryException; the exceptions of the
    ///         constructor for wide names.
    template <std::same_as<char> Narrow>
    AutoMutex(const Narrow* name, bool lockNow, bool flag)
        : AutoMutex(detail::NarrowName(name).wide(), lockNow, flag) {}

    /// Releases every hold of the object and closes the mutex. If another thread holds the mutex through this object,
    /// waits up to a minute.
    /// \throws Exception if the mutex cannot be released or closed, or if the other thread does not release it within
    ///         that minute. While another exception unwinds the stack, the failure is recorded and swallowed.
    virtual ~AutoMutex() noexcept(false);

    AutoMutex(const AutoMutex&) = delete;
    AutoMutex& operator=(const AutoMutex&) = delete;

    /// Opens the mutex "Global\" + `name`; names are case-sensitive. Creates the mutex if it does not exist. Does
    /// nothing if the object already has that mutex. If the object has a mutex with another name, first releases every
    /// hold and closes that mutex, like the destructor. If the new mutex can be neither created nor opened, tries again
    /// for a second. `flag` is stored and ignored.
    ///
    /// \returns whether the object has a mutex. If it has none, a warning in the error log gives the reason, and the
    ///         call may be repeated.
    ///
    /// \throws Exception "AutoMutex::initialize: Name required for mutex" for a null name; another Exception if the
    ///         previous mutex cannot be closed, or if another thread does not release it within a minute;
    ///         MemoryException if the name cannot be stored. In the last case the object has no mutex.
    virtual bool initialize(const wchar_t* name, bool flag);

    /// The same with a name in UTF-8.
    /// \throws Exception with the message "Failed to convert utf8 text to String: ..." if a byte of `name` should
    ///         start a sequence but cannot (see vorel/text/Unicode.h), or MemoryException if memory for the conversion
    ///         runs out: the object is then unchanged. The exceptions of the overload for wide names.
    template <std::same_as<char> Narrow>
    bool initialize(const Narrow* name, bool flag) {
        return initialize(detail::NarrowName(name).wide(), flag);
    }

    /// Waits up to `timeout` milliseconds for the mutex (0xFFFFFFFF: without limit). Returns whether the calling thread
    /// holds the mutex. An abandoned mutex is acquired, with a warning in the error log.
    ///
    /// If the wait fails or times out, the function throws if `throwOnFailure` is true. Otherwise it describes the
    /// failure in `errorText` unless `errorText` is null, and logs a warning unless `timeout` is 0.
    ///
    /// \throws Exception "AutoMutex::lock: Mutex not initialized"; "AutoMutex::lock: Failed to lock mutex ..."; and
    ///         "Mutex ...: Trying to increment lock count from a thread that does not own the mutex. ..." if the object
    ///         still records a thread that has ended (see above). The mutex is then released. MemoryException if the
    ///         description of a failure cannot be stored.
    bool lock(unsigned int timeout, bool throwOnFailure, BaseString<wchar_t>* errorText = nullptr);

    /// Locks the mutex if that is possible without waiting. Returns whether the calling thread holds the mutex.
    /// \throws Exception "AutoMutex::lock: Mutex not initialized"; the same exception as `lock` if the object still
    ///         records a thread that has ended.
    bool tryLock();

    /// Releases one hold. Does nothing if nothing is held, or if another thread is the owner.
    /// \throws Exception "AutoMutex::unlock: Mutex not initialized"; "AutoMutex::unlock: Failed to release mutex ...":
    ///         the hold is then kept.
    void unlock();

    /// Always null. The error log has the reason why `initialize` failed.
    [[nodiscard]] const wchar_t* getInitializeError() const noexcept { return m_initializeError.c_str(); }

    /// Stores the flag, which has no effect on this platform.
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

    VOREL_BEGIN_OWN_MEMBERS
    detail::KernelHandle m_mutex;
    BaseString<wchar_t> m_name;
    BaseString<wchar_t> m_initializeError;
    AutoCriticalSection m_bookkeeping;  ///< guards the next two members
    int m_lockCount = 0;
    long long m_lockingThreadId = 0;  ///< 0: no thread
    bool m_flag = false;
    bool m_useFcntlTimeout = false;
    VOREL_END_OWN_MEMBERS
};

}  // namespace vorel
