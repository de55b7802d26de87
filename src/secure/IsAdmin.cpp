#include "vorel/secure/IsAdmin.h"

#include "secure/SecurityBlocks.h"
#include "vorel/core/KernelHandle.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/system/ErrorText.h"

namespace vorel {

namespace {

using detail::KernelHandle;

/// Opens the thread's impersonation token, so that it can be restored later. If the thread has no token, `impersonated`
/// stays empty, and the result is true. Returns false if the token cannot be opened.
bool openImpersonationToken(KernelHandle& impersonated) noexcept {
    // The token belongs to the client that the thread impersonates. Either this process or the client may lack access
    // to the token, so both are tried.
    for (const BOOL asProcess : {TRUE, FALSE}) {
        HANDLE token = nullptr;
        if (OpenThreadToken(GetCurrentThread(), TOKEN_IMPERSONATE, asProcess, &token)) {
            impersonated = KernelHandle(token);
            return true;
        }
        if (GetLastError() == ERROR_NO_TOKEN) {
            return true;
        }
    }
    return false;
}

/// Sets the thread's token again. Returns false after a failure, which is logged.
bool restoreToken(HANDLE token) noexcept {
    if (SetThreadToken(nullptr, token)) {
        return true;
    }
    const int error = static_cast<int>(GetLastError());
    detail::runNoThrow(L"IsAdmin", [error] {
        BaseString<wchar_t> text;
        Exception::warn(L"IsAdmin: SetThreadToken failed: %ls", util::FormatErrorMsg(error, text));
    });
    return false;
}

/// Runs `question` while the thread impersonates its own process. Then restores the previous token, because a service
/// that acts for a client must not continue with the service's rights. Returns the answer; false after a failure.
bool askAsSelf(bool (*question)() noexcept) noexcept {
    KernelHandle impersonated;
    if (!openImpersonationToken(impersonated)) {
        return false;
    }
    // `ImpersonateSelf` opens the token of the process. While the thread impersonates a client, the system checks this
    // access with the client's rights, which are often not enough. So the impersonation is ended first.
    if (impersonated && !RevertToSelf()) {
        return false;
    }
    bool answer = false;
    if (ImpersonateSelf(SecurityImpersonation)) {
        answer = question();
        RevertToSelf();
    }
    return (!impersonated || restoreToken(impersonated.get())) && answer;
}

/// The token of the thread, or of the process if the thread has none. After a failure, the result is empty.
KernelHandle openToken() noexcept {
    HANDLE token = nullptr;
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, FALSE, &token) &&
        (GetLastError() != ERROR_NO_TOKEN || !OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token))) {
        return {};
    }
    return KernelHandle(token);
}

/// The rights to a test object that exists only as a security descriptor. Only administrators have these rights.
constexpr DWORD kRead = 1;
constexpr DWORD kWrite = 2;
constexpr DWORD kAll = kRead | kWrite;

/// Whether `token` is granted access to an object that only `administrators` may access.
bool isGranted(HANDLE token, PSID administrators) noexcept {
    const DWORD listSize = GetLengthSid(administrators) + 16;
    const detail::Acl list = detail::allocateAcl(listSize);
    SECURITY_DESCRIPTOR descriptor{};
    if (!list || !InitializeAcl(list.get(), listSize, ACL_REVISION) ||
        !AddAccessAllowedAce(list.get(), ACL_REVISION, kAll, administrators) ||
        !InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) ||
        !SetSecurityDescriptorDacl(&descriptor, TRUE, list.get(), FALSE) ||
        !SetSecurityDescriptorGroup(&descriptor, administrators, FALSE) ||
        !SetSecurityDescriptorOwner(&descriptor, administrators, FALSE) || !IsValidSecurityDescriptor(&descriptor)) {
        return false;
    }
    GENERIC_MAPPING mapping{kRead, kWrite, 0, kAll};
    PRIVILEGE_SET privileges{};
    DWORD privilegesSize = sizeof privileges;
    DWORD granted = 0;
    BOOL allowed = FALSE;
    return AccessCheck(&descriptor, token, kRead, &mapping, &privileges, &privilegesSize, &granted, &allowed) &&
           allowed;
}

static_assert(sizeof(SECURITY_DESCRIPTOR) == 40);

/// Whether the thread acts as an administrator.
bool isAdministrator() noexcept {
    const KernelHandle token = openToken();
    if (!token) {
        return false;
    }
    const detail::Sid administrators =
        detail::makeSid(SECURITY_NT_AUTHORITY, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS);
    return administrators && isGranted(token.get(), administrators.get());
}

}  // namespace

bool IsAdmin() noexcept {
    return askAsSelf(&isAdministrator);
}

}  // namespace vorel
