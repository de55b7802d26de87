/// \file
/// Owners of the memory of security identifiers and access control lists.
#pragma once

#include <memory>

#include <windows.h>

namespace vorel::detail {

struct SidDeleter {
    void operator()(void* sid) const noexcept { FreeSid(sid); }
};
using Sid = std::unique_ptr<void, SidDeleter>;

struct LocalDeleter {
    void operator()(void* block) const noexcept { LocalFree(block); }
};
using Acl = std::unique_ptr<ACL, LocalDeleter>;

/// A security identifier with one or two sub-authorities; null after a failure.
template <class... SubAuthorities>
Sid makeSid(SID_IDENTIFIER_AUTHORITY authority, SubAuthorities... subAuthorities) noexcept {
    constexpr BYTE kCount = sizeof...(subAuthorities);
    static_assert(kCount == 1 || kCount == 2);
    const DWORD numbers[2] = {static_cast<DWORD>(subAuthorities)...};
    PSID sid = nullptr;
    AllocateAndInitializeSid(&authority, kCount, numbers[0], numbers[1], 0, 0, 0, 0, 0, 0, &sid);
    return Sid(sid);
}

/// Zero-filled memory for an access control list of `size` bytes; null after a failure.
inline Acl allocateAcl(DWORD size) noexcept {
    // cppcheck-suppress LocalAllocCalled; the message about a failure names this call
    return Acl(static_cast<ACL*>(LocalAlloc(LPTR, size)));
}

}  // namespace vorel::detail
