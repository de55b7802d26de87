/// \file
/// The flat interface to named mutexes and named conditions.

#include "vorel/flat/Locks.h"

#include <windows.h>

#include <memory>

#include "flat/Call.h"
#include "flat/Input.h"
#include "flat/LastError.h"
#include "sync/MutexAccess.h"
#include "vorel/core/BaseString.h"
#include "vorel/sync/AutoMutex.h"
#include "vorel/sync/NamedCondition.h"

using vorel::flat::ArgumentError;
using vorel::flat::fail;
using vorel::flat::guardedCall;
using vorel::flat::notNull;
using vorel::flat::WideText;

struct vorel_mutex {
    explicit vorel_mutex(const wchar_t* name) : mutex(name, false, false) {}

    vorel::AutoMutex mutex;
};

struct vorel_condition {
    explicit vorel_condition(const wchar_t* name) : condition(name) {}

    vorel::NamedCondition condition;
};

namespace {

/// Creates a handle and stores it in `*handle`.
template <class Handle>
vorel_status open(const wchar_t* function, const vorel_char16* name, size_t length, Handle** handle) {
    return guardedCall(function, VOREL_ERROR_SYSTEM, [&] {
        Handle*& result = notNull(handle);
        const WideText text(name, length);
        if (text.length() == 0) {
            throw ArgumentError{VOREL_ERROR_INVALID_ARGUMENT, L"The name is empty"};
        }
        result = std::make_unique<Handle>(text.c_str()).release();
        return vorel_status{VOREL_OK};
    });
}

template <class Handle>
vorel_status close(const wchar_t* function, Handle* handle) {
    return guardedCall(function, VOREL_ERROR_SYSTEM, [&] {
        delete &notNull(handle);  // releases the memory even if the destructor throws
        return vorel_status{VOREL_OK};
    });
}

/// Reports a failed wait. If the last system error is 0, the wait timed out.
vorel_status failedWait(const wchar_t* message) noexcept {
    return fail(GetLastError() == ERROR_SUCCESS ? VOREL_ERROR_TIMEOUT : VOREL_ERROR_SYSTEM, message);
}

}  // namespace

vorel_status vorel_mutex_open(const vorel_char16* name, size_t length, vorel_mutex** mutex) {
    return open(L"vorel_mutex_open", name, length, mutex);
}

vorel_status vorel_mutex_lock(vorel_mutex* mutex, uint32_t timeoutMs) {
    return guardedCall(L"vorel_mutex_lock", VOREL_ERROR_SYSTEM, [&] {
        vorel::AutoMutex& lock = notNull(mutex).mutex;
        vorel::BaseString<wchar_t> reason;
        SetLastError(ERROR_SUCCESS);
        if (!lock.lock(timeoutMs, false, &reason)) {
            return failedWait(reason.view().data());
        }
        return vorel_status{VOREL_OK};
    });
}

vorel_status vorel_mutex_unlock(vorel_mutex* mutex) {
    return guardedCall(L"vorel_mutex_unlock", VOREL_ERROR_SYSTEM, [&] {
        vorel::AutoMutex& lock = notNull(mutex).mutex;
        if (!vorel::detail::MutexAccess::isHeldByCaller(lock)) {
            return fail(VOREL_ERROR_NOT_OWNER, L"The thread does not hold the mutex");
        }
        lock.unlock();
        return vorel_status{VOREL_OK};
    });
}

vorel_status vorel_mutex_close(vorel_mutex* mutex) {
    return close(L"vorel_mutex_close", mutex);
}

vorel_status vorel_condition_open(const vorel_char16* name, size_t length, vorel_condition** condition) {
    return open(L"vorel_condition_open", name, length, condition);
}

vorel_status vorel_condition_signal(vorel_condition* condition) {
    return guardedCall(L"vorel_condition_signal", VOREL_ERROR_SYSTEM, [&] {
        notNull(condition).condition.signal();
        return vorel_status{VOREL_OK};
    });
}

vorel_status vorel_condition_wait(vorel_condition* condition, uint32_t timeoutMs) {
    return guardedCall(L"vorel_condition_wait", VOREL_ERROR_SYSTEM, [&] {
        vorel_condition& event = notNull(condition);
        SetLastError(ERROR_SUCCESS);
        // The condition passes the value to the system, which treats it as unsigned. All bits set means no limit.
        if (!event.condition.wait(static_cast<int>(timeoutMs))) {
            return failedWait(L"There was no signal in time");
        }
        return vorel_status{VOREL_OK};
    });
}

vorel_status vorel_condition_close(vorel_condition* condition) {
    return close(L"vorel_condition_close", condition);
}
