#include "vorel/sync/AutoMutex.h"

#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

#include <windows.h>

#include "sync/MutexAccess.h"
#include "vorel/core/Guard.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/secure/SecuredObjects.h"
#include "vorel/system/ErrorText.h"

namespace vorel {

namespace {

constexpr unsigned int kLockTimeoutMs = 60000;

using Bookkeeping = Guard<AutoCriticalSection>;

long long currentThread() noexcept {
    return static_cast<long long>(GetCurrentThreadId());
}

/// Converts a thread id to a signed 32-bit number, because the messages contain thread ids in this form.
int asInt32(long long threadId) noexcept {
    return static_cast<int>(threadId);
}

/// "Global\" followed by a name. The text is on the stack, or on the heap if it is longer than the system's documented
/// limit for names.
class FullName {
public:
    /// \throws MemoryException
    explicit FullName(const wchar_t* name) {
        constexpr std::wstring_view kNamespace = L"Global\\";
        const std::size_t length = std::char_traits<wchar_t>::length(name);
        if (length < std::size(m_short) - kNamespace.size()) {
            wchar_t* const end = m_short + kNamespace.copy(m_short, kNamespace.size());
            std::memcpy(end, name, length * sizeof(wchar_t));
            end[length] = 0;  // not copied, because the name may have grown since its length was read
        } else {
            m_long = kNamespace.data();
            m_long += name;
        }
    }

    [[nodiscard]] const wchar_t* text() const noexcept { return m_long.empty() ? m_short : m_long.c_str(); }

private:
    BaseString<wchar_t> m_long;
    wchar_t m_short[MAX_PATH + 1];
};

/// The text for a failed wait or a failed release.
class Reason {
public:
    explicit Reason(DWORD waitResult) {
        if (waitResult == WAIT_TIMEOUT) {
            m_text = L"Timed out";
        } else {
            util::GetLastErrorMsg(m_text);
        }
    }

    [[nodiscard]] const wchar_t* text() const noexcept { return m_text.view().data(); }

private:
    BaseString<wchar_t> m_text;
};

}  // namespace

const wchar_t* const AutoMutex::ClassName = L"AutoMutex";

AutoMutex::AutoMutex(const wchar_t* name, bool lockNow, bool flag) try : m_flag(flag) {
    if (!name) {
        return;
    }
    if (!AutoMutex::initialize(name, flag)) {
        throw Exception(L"AutoMutex: Failed to create mutex %ls: %ls", name, m_initializeError.view().data());
    }
    if (lockNow) {
        lock(kLockTimeoutMs, true);
    }
} catch (...) {
    detail::rethrowWithRecord(ClassName, L"AutoMutex()");
}

AutoMutex::~AutoMutex() noexcept(false) {
    detail::runDestructor(ClassName, [this] { terminate(); });
}

bool AutoMutex::initialize(const wchar_t* name, bool flag) {
    return detail::runRethrowing(ClassName, L"initialize", [&] {
        if (!name) {
            throw Exception(L"AutoMutex::initialize: Name required for mutex");
        }
        if (m_mutex && m_name == name) {
            return true;
        }
        terminate();
        constexpr int kRetries = 10;
        constexpr int kSleepMs = 100;
        const FullName fullName(name);
        m_name = name;
        m_flag = flag;
        m_mutex = detail::KernelHandle(ObtainAccessableMutex(0, fullName.text(), kRetries, kSleepMs, nullptr));
        return static_cast<bool>(m_mutex);
    });
}

bool AutoMutex::lock(unsigned int timeout, bool throwOnFailure, BaseString<wchar_t>* errorText) {
    return detail::runRethrowing(ClassName, L"lock", [&] {
        requireMutex(L"AutoMutex::lock: Mutex not initialized");
        const DWORD result = waitFor(timeout);
        if (result == WAIT_OBJECT_0) {
            countTaken();
            return true;
        }
        if (!throwOnFailure && !errorText && timeout == 0) {
            return false;
        }
        const DWORD error = GetLastError();
        const Reason reason(result);
        if (throwOnFailure) {
            throw Exception(L"AutoMutex::lock: Failed to lock mutex %ls: %ls", name(), reason.text());
        }
        if (errorText) {
            errorText->format(L"Failed to lock mutex %ls: %ls", name(), reason.text());
        }
        if (timeout != 0) {
            Exception::warn(L"AutoMutex::lock: Failed to lock mutex %ls: %ls", name(), reason.text());
        }
        // After a timeout, the last error is the same as before the call. So a caller that first sets it to 0 can
        // distinguish a timeout from a failed wait.
        SetLastError(error);
        return false;
    });
}

bool AutoMutex::tryLock() {
    return detail::runRethrowing(ClassName, L"tryLock", [this] {
        requireMutex(L"AutoMutex::lock: Mutex not initialized");
        if (waitFor(0) != WAIT_OBJECT_0) {
            return false;
        }
        countTaken();
        return true;
    });
}

void AutoMutex::unlock() {
    detail::runRethrowing(ClassName, L"unlock", [this] {
        requireMutex(L"AutoMutex::unlock: Mutex not initialized");
        if (!detail::MutexAccess::isHeldByCaller(*this)) {
            return;
        }
        SetLockCount(false);  // before the release, because another thread may count its lock right after the release
        if (!ReleaseMutex(m_mutex.get())) {
            const DWORD error = GetLastError();
            SetLockCount(true);  // before the system's text is fetched, because fetching may throw
            SetLastError(error);
            const Reason reason(WAIT_FAILED);
            throw Exception(L"AutoMutex::unlock: Failed to release mutex %ls: %ls", name(), reason.text());
        }
    });
}

void AutoMutex::requireMutex(const wchar_t* message) const {
    if (!m_mutex) {
        detail::throwFailure(message);
    }
}

/// Waits for the mutex. Acquiring an abandoned mutex is a success, because the caller then owns the mutex. In this
/// case, the lock count and the id of the thread that ended are cleared.
unsigned long AutoMutex::waitFor(unsigned int timeout) {
    const DWORD result = WaitForSingleObject(m_mutex.get(), timeout);
    if (result != WAIT_ABANDONED) {
        return result;
    }
    Exception::warn(
        L"AutoMutex::lock: WAIT_ABANDONED: Mutex %ls was not released by the owning thread before it exited", name());
    const Bookkeeping held(m_bookkeeping);
    m_lockCount = 0;
    m_lockingThreadId = 0;
    return WAIT_OBJECT_0;
}

/// Counts a lock that the system has granted. Releases the mutex if the lock cannot be counted.
void AutoMutex::countTaken() {
    try {
        SetLockCount(true);
    } catch (...) {
        ReleaseMutex(m_mutex.get());
        throw;
    }
}

/// Waits up to a minute until another thread releases the mutex, and then locks the mutex.
void AutoMutex::takeFromOtherThread() {
    const DWORD result = waitFor(kLockTimeoutMs);
    if (result != WAIT_OBJECT_0) {
        throw Exception(L"AutoMutex::lock: Failed to lock mutex %ls: %ls", name(), Reason(result).text());
    }
    countTaken();
}

void AutoMutex::terminate() {
    detail::runRethrowing(ClassName, L"terminate", [this] {
        while (m_mutex && GetLockCount() >= 1) {
            if (GetLockingThreadID() != currentThread()) {
                takeFromOtherThread();
            }
            unlock();
        }
        if (!m_mutex.close()) {
            throw Exception(L"AutoMutex::terminate: Error closing mutex %ls.", name());
        }
    });
}

int AutoMutex::GetLockCount() {
    const Bookkeeping held(m_bookkeeping);
    return m_lockCount;
}

void AutoMutex::SetLockCount(bool increment) {
    detail::runRethrowing(ClassName, L"SetLockCount", [this, increment] {
        const Bookkeeping held(m_bookkeeping);
        const long long self = currentThread();
        if (m_lockingThreadId != 0 && m_lockingThreadId != self) {
            throw Exception(L"Mutex %ls: Trying to %ls lock count from a thread that does not own the mutex.  "
                            L"Current owner = %i, my threadID = %i, current lock count = %i",
                            name(), increment ? L"increment" : L"decrement", asInt32(m_lockingThreadId), asInt32(self),
                            m_lockCount);
        }
        if (increment) {
            ++m_lockCount;
            m_lockingThreadId = self;
            return;
        }
        if (--m_lockCount < 0) {
            Exception::warn(L"Mutex %ls: lockCount was decremented below 0", name());
        }
        if (m_lockCount < 1) {
            m_lockCount = 0;
            m_lockingThreadId = 0;
        }
    });
}

long long AutoMutex::GetLockingThreadID() {
    const Bookkeeping held(m_bookkeeping);
    return m_lockingThreadId;
}

void AutoMutex::SetLockingThreadID() {
    changeOwner(L"set", currentThread());
}

void AutoMutex::ResetLockingThreadID() {
    changeOwner(L"reset", 0);
}

void AutoMutex::changeOwner(const wchar_t* change, long long owner) {
    const Bookkeeping held(m_bookkeeping);
    const long long self = currentThread();
    if (m_lockingThreadId != 0 && m_lockingThreadId != self) {
        throw Exception(L"Mutex %ls: Trying to %ls threadID from a thread that does not own the mutex.  "
                        L"Current owner = %i, my threadID = %i",
                        name(), change, asInt32(m_lockingThreadId), asInt32(self));
    }
    m_lockingThreadId = owner;
}

static_assert(sizeof(AutoMutex) == 80 && alignof(AutoMutex) == 8);

}  // namespace vorel
