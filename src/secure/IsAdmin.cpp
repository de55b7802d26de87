#include "vorel/secure/IsAdmin.h"

#include "secure/SecurityBlocks.h"
#include "vorel/core/KernelHandle.h"

namespace vorel {

namespace {

using detail::KernelHandle;

/// The thread acts under a copy of its process's identity for as long as the object lives.
class Impersonation {
public:
    Impersonation() noexcept : m_active(ImpersonateSelf(SecurityImpersonation) != FALSE) {}
    ~Impersonation() {
        if (m_active) {
            RevertToSelf();
        }
    }

    Impersonation(const Impersonation&) = delete;
    Impersonation& operator=(const Impersonation&) = delete;

    explicit operator bool() const noexcept { return m_active; }

private:
    bool m_active;
};

/// The thread's token, or that of the process when the thread has none.
KernelHandle openToken() noexcept {
    HANDLE token = nullptr;
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, FALSE, &token) &&
        (GetLastError() != ERROR_NO_TOKEN || !OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token))) {
        return {};
    }
    return KernelHandle(token);
}

/// The access that administrators have to the object that is asked about, and nobody else.
constexpr DWORD kRead = 1;
constexpr DWORD kWrite = 2;
constexpr DWORD kAll = kRead | kWrite;

/// Whether `token` is granted what only `administrators` are allowed.
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

}  // namespace

bool IsAdmin() noexcept {
    const Impersonation self;
    if (!self) {
        return false;
    }
    const KernelHandle token = openToken();
    if (!token) {
        return false;
    }
    const detail::Sid administrators =
        detail::makeSid(SECURITY_NT_AUTHORITY, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS);
    return administrators && isGranted(token.get(), administrators.get());
}

}  // namespace vorel
