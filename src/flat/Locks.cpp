/// \file
/// The named mutex and the named condition.

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

using vorel::flat::call;
using vorel::flat::fail;
using vorel::flat::Refused;
using vorel::flat::required;
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

/// Makes a handle behind a pointer that the caller gave.
template <class Handle>
vorel_status open(const wchar_t* function, const vorel_char16* name, size_t length, Handle** handle) {
    return call(function, VOREL_ERROR_SYSTEM, [&] {
        Handle*& result = required(handle);
        const WideText text(name, length);
        if (text.length() == 0) {
            throw Refused{VOREL_ERROR_INVALID_ARGUMENT, L"The name is empty"};
        }
        result = std::make_unique<Handle>(text.c_str()).release();
        return vorel_status{VOREL_OK};
    });
}

template <class Handle>
vorel_status close(const wchar_t* function, Handle* handle) {
    return call(function, VOREL_ERROR_SYSTEM, [&] {
        delete &required(handle);  // the memory goes also when the destructor throws
        return vorel_status{VOREL_OK};
    });
}

/// The failure of a wait; the system has left no error when it was the end of the time.
vorel_status failedWait(const wchar_t* message) noexcept {
    return fail(GetLastError() == ERROR_SUCCESS ? VOREL_ERROR_TIMEOUT : VOREL_ERROR_SYSTEM, message);
}

}  // namespace

vorel_status vorel_mutex_open(const vorel_char16* name, size_t length, vorel_mutex** mutex) {
    return open(L"vorel_mutex_open", name, length, mutex);
}

vorel_status vorel_mutex_lock(vorel_mutex* mutex, uint32_t timeoutMs) {
    return call(L"vorel_mutex_lock", VOREL_ERROR_SYSTEM, [&] {
        vorel::AutoMutex& lock = required(mutex).mutex;
        vorel::BaseString<wchar_t> reason;
        SetLastError(ERROR_SUCCESS);
        if (!lock.lock(timeoutMs, false, &reason)) {
            return failedWait(reason.view().data());
        }
        return vorel_status{VOREL_OK};
    });
}

vorel_status vorel_mutex_unlock(vorel_mutex* mutex) {
    return call(L"vorel_mutex_unlock", VOREL_ERROR_SYSTEM, [&] {
        vorel::AutoMutex& lock = required(mutex).mutex;
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
    return call(L"vorel_condition_signal", VOREL_ERROR_SYSTEM, [&] {
        required(condition).condition.signal();
        return vorel_status{VOREL_OK};
    });
}

vorel_status vorel_condition_wait(vorel_condition* condition, uint32_t timeoutMs) {
    return call(L"vorel_condition_wait", VOREL_ERROR_SYSTEM, [&] {
        vorel_condition& event = required(condition);
        SetLastError(ERROR_SUCCESS);
        // The condition hands the number on as the system's own: it is unsigned there, all bits set for no limit.
        if (!event.condition.wait(static_cast<int>(timeoutMs))) {
            return failedWait(L"There was no signal in time");
        }
        return vorel_status{VOREL_OK};
    });
}

vorel_status vorel_condition_close(vorel_condition* condition) {
    return close(L"vorel_condition_close", condition);
}
