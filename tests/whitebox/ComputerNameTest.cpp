/// \file
/// The name of the computer, and its cache.
// test-runner: one process per case

#include "platform/ComputerName.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/ImportHook.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/Exception.h"

namespace {

using vorel::platform::ComputerName;

struct FakeSystem {
    std::string name;
    unsigned int asked = 0;
};

FakeSystem& fakeSystem() {
    static FakeSystem theOne;
    return theOne;
}

/// Behaves like the system: if the name does not fit, the function fails and stores the required size.
BOOL WINAPI giveFakeName(COMPUTER_NAME_FORMAT format, LPSTR buffer, LPDWORD size) {
    ++fakeSystem().asked;
    if (format != ComputerNamePhysicalDnsHostname || *size != 16) {
        return FALSE;
    }
    const std::string& name = fakeSystem().name;
    if (name.size() >= *size) {
        std::memset(buffer, '?', *size);
        *size = static_cast<DWORD>(name.size() + 1);
        return FALSE;
    }
    std::memcpy(buffer, name.c_str(), name.size() + 1);
    *size = static_cast<DWORD>(name.size());
    return TRUE;
}

TEST(ComputerName, IsInLowerCaseAndIsEmptyIfLongerThan15Bytes) {
    struct Case {
        const char* name;
        const char* written;
    };
    const Case cases[] = {
        {"host7", "host7"},
        {"HOST-7", "host-7"},
        {"@AZ[`az{", "@az[`az{"},          // the characters next to A, Z, a and z do not change
        {"\xC4\xD6\xDC", "\xC4\xD6\xDC"},  // bytes above 127 do not change
        {"", ""},
        {"ABCDEFGHIJKLMNO", "abcdefghijklmno"},
        {"ABCDEFGHIJKLMNOP", ""},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZ", ""},
    };
    const test::ImportPatch patch(importedGetComputerNameExA, &giveFakeName);
    for (const Case& c : cases) {
        fakeSystem().name = c.name;
        EXPECT_STREQ(ComputerName::ask().text, c.written);
    }
}

TEST(ComputerName, IsCachedOnceItIsNotEmpty) {
    const test::ImportPatch patch(importedGetComputerNameExA, &giveFakeName);
    fakeSystem().name = "";
    if (*ComputerName::remembered().text) {
        GTEST_SKIP() << "an earlier test of this process has written a line, so the name is cached";
    }
    for (const char* const name : {"", "LONGERTHAN15BYTES", ""}) {
        fakeSystem() = {name, 0};
        EXPECT_STREQ(ComputerName::remembered().text, "");
        EXPECT_EQ(fakeSystem().asked, 1u);
    }
    for (const char* const name : {"HOST-7", "ANOTHER", ""}) {
        fakeSystem().name = name;
        EXPECT_STREQ(ComputerName::remembered().text, "host-7");
    }
    EXPECT_EQ(fakeSystem().asked, 2u);
}

TEST(ComputerName, CachedNameIsWrittenInALogLine) {
    const std::string name = ComputerName::remembered().text;
    if (name.empty()) {
        GTEST_SKIP() << "this computer's name is too long for the log";
    }
    const test::TemporaryLog log;
    const test::ImportPatch patch(importedGetComputerNameExA, &giveFakeName);
    fakeSystem() = {"ANOTHER", 0};
    EXPECT_EQ(ComputerName::remembered().text, name);
    vorel::Exception::warn("text");
    EXPECT_EQ(fakeSystem().asked, 0u);
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines()[0].computer, name);
}

}  // namespace
