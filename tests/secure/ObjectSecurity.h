/// \file
/// The security of an object that is there, read back from the system.
#pragma once

#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/AccessList.h"

namespace test {

/// Expects that the system protects the object as it was asked to: everyone may use it, nobody may change that, and the
/// denial stands first. A system may store the general right as all rights of the kind of object, `allAccess`.
inline void expectSharedSecurity(HANDLE object, DWORD allAccess) {
    std::vector<unsigned char> descriptor(2048);
    DWORD needed = 0;
    ASSERT_TRUE(GetKernelObjectSecurity(object, DACL_SECURITY_INFORMATION, descriptor.data(),
                                        static_cast<DWORD>(descriptor.size()), &needed));
    const AccessList list = accessListOf(descriptor.data());
    EXPECT_TRUE(list.present);
    EXPECT_FALSE(list.defaulted);
    EXPECT_EQ(list.revision, ACL_REVISION);
    EXPECT_TRUE(list.entries == sharedEntries() || list.entries == sharedEntries(allAccess))
        << testing::PrintToString(list.entries);
}

}  // namespace test
