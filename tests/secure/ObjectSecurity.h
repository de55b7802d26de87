/// \file
/// The security of an existing object, as the system reports it.
#pragma once

#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/AccessList.h"

namespace test {

/// Expects the access list of a shared object: the first entry denies everyone the right to change the object's
/// security, and the second entry grants everyone all other rights. The system may replace GENERIC_ALL in the second
/// entry by `allAccess`, which is all rights for this kind of object.
inline void expectSharedSecurity(HANDLE object, DWORD allAccess) {
    std::vector<unsigned char> descriptor(2048);
    DWORD needed = 0;
    ASSERT_TRUE(GetKernelObjectSecurity(object, DACL_SECURITY_INFORMATION, descriptor.data(),
                                        static_cast<DWORD>(descriptor.size()), &needed));
    AccessList list = accessListOf(descriptor.data());
    // A file also inherits entries from its folder, after its own entries (see the page "DACL for a New Object" of
    // Microsoft's documentation). The inherited entries are not compared.
    std::erase_if(list.entries, [](const AccessEntry& entry) { return (entry.flags & INHERITED_ACE) != 0; });
    EXPECT_TRUE(list.present);
    EXPECT_FALSE(list.defaulted);
    EXPECT_EQ(list.revision, ACL_REVISION);
    EXPECT_TRUE(list.entries == sharedEntries() || list.entries == sharedEntries(allAccess))
        << testing::PrintToString(list.entries);
}

}  // namespace test
