/// \file
/// The access control list of a security descriptor, entry by entry.
///
///     EXPECT_EQ(test::accessListOf(descriptor).entries, (std::vector{test::denied(WRITE_DAC, test::everyone()), …}));
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <windows.h>

namespace test {

/// The bytes of a security identifier.
using SidBytes = std::vector<unsigned char>;

/// The bytes of `sid`, or none for null. The second byte is the number of subauthorities. The subauthorities begin
/// after eight bytes, and have four bytes each.
inline SidBytes sidBytes(PSID sid) {
    const auto* const bytes = static_cast<const unsigned char*>(sid);
    return bytes ? SidBytes(bytes, bytes + 8 + 4 * std::size_t{bytes[1]}) : SidBytes();
}

/// S-1-1-0: revision 1, one subauthority, authority 1, subauthority 0.
inline SidBytes everyone() {
    return {1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
}

/// S-1-5-32-544: revision 1, two subauthorities, authority 5, subauthorities 32 and 544.
inline SidBytes administrators() {
    return {1, 2, 0, 0, 0, 0, 0, 5, 32, 0, 0, 0, 0x20, 0x02, 0, 0};
}

struct AccessEntry {
    BYTE type;
    BYTE flags;
    DWORD mask;
    SidBytes sid;

    friend bool operator==(const AccessEntry&, const AccessEntry&) = default;
    friend void PrintTo(const AccessEntry& entry, std::ostream* out) {
        *out << "type " << int{entry.type} << ", flags " << int{entry.flags} << ", mask " << std::hex << entry.mask
             << std::dec << ", SID of " << entry.sid.size() << " bytes";
    }
};

inline AccessEntry allowed(DWORD mask, const SidBytes& sid) {
    return {ACCESS_ALLOWED_ACE_TYPE, 0, mask, sid};
}

inline AccessEntry denied(DWORD mask, const SidBytes& sid) {
    return {ACCESS_DENIED_ACE_TYPE, 0, mask, sid};
}

/// The entries of the library's objects. The first entry denies everyone the rights to change the security of the
/// objects. The second entry grants everyone all other rights.
inline std::vector<AccessEntry> sharedEntries(DWORD allAccess = GENERIC_ALL) {
    return {denied(0xC0000, everyone()), allowed(allAccess, everyone())};
}

/// The discretionary access control list. `present` is false if the descriptor has no list or a null list.
struct AccessList {
    bool present = false;
    bool defaulted = false;
    BYTE revision = 0;
    WORD sizeBytes = 0;
    std::vector<AccessEntry> entries;
};

inline AccessList accessListOf(PSECURITY_DESCRIPTOR descriptor) {
    AccessList list;
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    PACL acl = nullptr;
    if (!GetSecurityDescriptorDacl(descriptor, &present, &acl, &defaulted) || !present || !acl) {
        return list;
    }
    list.present = true;
    list.defaulted = defaulted != FALSE;
    list.revision = acl->AclRevision;
    list.sizeBytes = acl->AclSize;
    for (DWORD index = 0; index < acl->AceCount; ++index) {
        void* ace = nullptr;
        if (GetAce(acl, index, &ace)) {
            // An entry that denies access has the same layout.
            auto* const entry = static_cast<ACCESS_ALLOWED_ACE*>(ace);
            list.entries.push_back(
                {entry->Header.AceType, entry->Header.AceFlags, entry->Mask, sidBytes(&entry->SidStart)});
        }
    }
    return list;
}

}  // namespace test
