/// \file
/// Simulates a second, ordinary user without a second account. A thread gets a restricted copy of the token of this
/// process. In this copy, the security identifiers of the user, of the owner of new objects, and of the administrators
/// are disabled: an entry of an access list that grants rights to one of them has no effect. So the thread has no
/// rights as the owner of an object. It keeps the rights of Everyone and of the user's other groups.
#pragma once

#include <set>
#include <stdexcept>
#include <vector>

#include <windows.h>

#include "support/AccessList.h"
#include "support/Handle.h"

namespace test {

/// The SID of the token's user (TokenUser) or of the owner of new objects (TokenOwner). Both structures begin with a
/// pointer to the SID.
inline SidBytes sidOfToken(HANDLE token, TOKEN_INFORMATION_CLASS kind) {
    alignas(void*) unsigned char bytes[256];
    DWORD size = 0;
    if (!GetTokenInformation(token, kind, bytes, sizeof bytes, &size)) {
        throw std::runtime_error("cannot read the token");
    }
    return sidBytes(*reinterpret_cast<PSID*>(bytes));
}

/// A copy of the token of this process. In this copy, the SIDs in `denied` only deny access, and all privileges except
/// SeChangeNotifyPrivilege are disabled.
inline Handle restrictedToken(const std::set<SidBytes>& denied) {
    HANDLE opened = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY | TOKEN_DUPLICATE | TOKEN_ASSIGN_PRIMARY, &opened)) {
        throw std::runtime_error("cannot open the token of the process");
    }
    const Handle own(opened);
    std::vector<SidBytes> sids(denied.begin(), denied.end());
    std::vector<SID_AND_ATTRIBUTES> entries;
    for (SidBytes& sid : sids) {
        entries.push_back({.Sid = sid.data(), .Attributes = 0});
    }
    HANDLE restricted = nullptr;
    if (!CreateRestrictedToken(own.get(), DISABLE_MAX_PRIVILEGE, static_cast<DWORD>(entries.size()), entries.data(), 0,
                               nullptr, 0, nullptr, &restricted)) {
        throw std::runtime_error("cannot restrict the token, error " + std::to_string(GetLastError()));
    }
    return Handle(restricted);
}

/// While the object exists, the thread acts as the second user.
class ActAsSecondUser {
public:
    ActAsSecondUser() {
        HANDLE opened = nullptr;
        OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened);
        const Handle own(opened);
        const Handle other =
            restrictedToken({sidOfToken(own.get(), TokenUser), sidOfToken(own.get(), TokenOwner), administrators()});
        if (!ImpersonateLoggedOnUser(other.get())) {
            throw std::runtime_error("cannot impersonate the second user, error " + std::to_string(GetLastError()));
        }
    }
    ~ActAsSecondUser() { RevertToSelf(); }

    ActAsSecondUser(const ActAsSecondUser&) = delete;
    ActAsSecondUser& operator=(const ActAsSecondUser&) = delete;
};

}  // namespace test
