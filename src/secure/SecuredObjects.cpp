#include "vorel/secure/SecuredObjects.h"

#include <windows.h>

#include "core/StringAccess.h"
#include "platform/SystemMessage.h"
#include "secure/ErrorMessage.h"
#include "secure/SharedSecurity.h"
#include "vorel/core/KernelHandle.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/system/ErrorText.h"

namespace vorel {

namespace {

using detail::KernelHandle;
using detail::SharedSecurity;

int lastError() noexcept {
    return static_cast<int>(GetLastError());
}

/// The system's text for an error.
class ErrorText {
public:
    explicit ErrorText(int error) { util::FormatErrorMsg(error, m_text); }

    [[nodiscard]] const wchar_t* text() const noexcept { return m_text.view().data(); }

private:
    BaseString<wchar_t> m_text;
};

/// Creates and opens a mutex. Failures are reported as warnings.
struct MutexKind {
    HANDLE create(SECURITY_ATTRIBUTES* attributes) const noexcept {
        return CreateMutexW(attributes, static_cast<BOOL>(initialOwner), name);
    }
    [[nodiscard]] HANDLE open() const noexcept { return OpenMutexW(SYNCHRONIZE, FALSE, name); }

    void reportWhetherNew(bool isNew) const noexcept {
        if (created) {
            *created = isNew ? 1 : 0;
        }
    }
    void reportFailedStep(const SharedSecurity& security) const {
        error = security.error();
        Exception::warn(L"ObtainAccessableMutex: %ls failed: %ls", detail::descriptionOf(security.failedStep()).call,
                        ErrorText(error).text());
    }
    void reportFailedOpen() const {
        error = lastError();
        Exception::warn(L"ObtainAccessableMutex warning: OpenMutex %ls: %ls", name, ErrorText(error).text());
    }

    const wchar_t* name;
    int initialOwner;
    int* created;
    int& error;  ///< the error to report; kept, because an exception may change the last system error
};

/// Creates and opens an event. Failures are reported in `errorText`, a string of the caller.
struct EventKind {
    HANDLE create(SECURITY_ATTRIBUTES* attributes) const noexcept {
        return CreateEventW(attributes, static_cast<BOOL>(manualReset), static_cast<BOOL>(initialState), name);
    }
    [[nodiscard]] HANDLE open() const noexcept { return OpenEventW(SYNCHRONIZE | EVENT_MODIFY_STATE, FALSE, name); }

    static void reportWhetherNew(bool) noexcept {}

    void reportFailedStep(const SharedSecurity& security) const {
        const detail::SecurityStepDescription& step = detail::descriptionOf(security.failedStep());
        BaseString<wchar_t> failure;
        failure.format(step.namesOperation ? L"ObtainAccessableEvent: %ls failed" : L"%ls failed", step.call);
        detail::GetErrorMessage(failure.c_str(), security.error(), errorText);
    }
    void reportFailedOpen() const { detail::GetErrorMessage(L"OpenEvent failed", lastError(), errorText); }

    const wchar_t* name;
    int manualReset;
    int initialState;
    BaseString<wchar_t>& errorText;
};

/// Creates the object. If that fails, opens an existing object with the same name: creating requests all rights, and
/// the access list of an existing object may deny some of them. Repeats both steps up to `retries` times, and sleeps
/// for `sleepMs` milliseconds before each repetition. If the security descriptor cannot be built or the last attempt
/// fails, `kind` reports the failure, and the result is empty.
template <class Kind>
KernelHandle createOrOpen(const Kind& kind, int retries, int sleepMs) {
    SharedSecurity security;
    if (!security.isComplete()) {
        kind.reportFailedStep(security);
        return {};
    }
    for (int attempt = 0;; ++attempt) {
        if (attempt != 0) {
            ::Sleep(static_cast<DWORD>(sleepMs));
        }
        SetLastError(ERROR_SUCCESS);
        KernelHandle created(kind.create(security.attributes()));
        kind.reportWhetherNew(created && GetLastError() != ERROR_ALREADY_EXISTS);
        if (created) {
            return created;
        }
        KernelHandle opened(kind.open());
        if (opened) {
            return opened;
        }
        if (attempt >= retries) {
            kind.reportFailedOpen();
            return {};
        }
    }
}

}  // namespace

void* ObtainAccessableMutex(int initialOwner, const wchar_t* name, int retries, int sleepMs, int* created) noexcept {
    int error = 0;
    try {
        const MutexKind kind{name, initialOwner, created, error};
        kind.reportWhetherNew(false);
        return createOrOpen(kind, retries, sleepMs).release();
    } catch (...) {
        const platform::SystemMessage message(error);
        const std::wstring_view text = message.trimmed();
        Exception::warn(L"Error ObtainAccessableMutex %ls, %.*ls", name, static_cast<int>(text.size()), text.data());
        return nullptr;
    }
}

void* ObtainAccessableEvent(int manualReset, int initialState, const wchar_t* name, int retries, int sleepMs,
                            BaseString<wchar_t>& errorText) noexcept {
    try {
        return createOrOpen(EventKind{name, manualReset, initialState, errorText}, retries, sleepMs).release();
    } catch (...) {
        // This text names the mutex operation by design.
        detail::StringAccess<wchar_t>::tryAssign(errorText, L"ObtainAccessableMutex failed with unknown exception");
        return nullptr;
    }
}

}  // namespace vorel
