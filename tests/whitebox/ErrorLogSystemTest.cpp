/// \file
/// How the error log handles the results of system calls: the clock, the size of the file, and a failure to open a
/// stream.

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <io.h>
#include <windows.h>

#include "support/ImportHook.h"
#include "support/LockedFile.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/Exception.h"

namespace {

using test::TemporaryLog;
using Texts = std::vector<std::string>;
using vorel::Exception;

std::uint64_t& fakeTime() {
    static std::uint64_t hundredsOfNanoseconds = 0;
    return hundredsOfNanoseconds;
}

void WINAPI giveFakeTime(LPFILETIME time) {
    time->dwLowDateTime = static_cast<DWORD>(fakeTime());
    time->dwHighDateTime = static_cast<DWORD>(fakeTime() >> 32);
}

TEST(ErrorLogSystem, MillisecondsHaveThreeDigits) {
    struct Case {
        std::uint64_t milliseconds;
        const char* written;
    };
    constexpr std::uint64_t kSecond = 10000000;
    constexpr std::uint64_t kSomeSecond = 13438000000 * kSecond;  // in 2026
    Exception::setDebugTarget(L"LogsIncludeMsecs", true);
    for (const Case& c : {Case{0, "000"}, Case{7, "007"}, Case{45, "045"}, Case{100, "100"}, Case{999, "999"},
                          Case{1000, "000"}, Case{61007, "007"}}) {
        fakeTime() = kSomeSecond + c.milliseconds * 10000 + 9999;
        const TemporaryLog log;
        {
            const test::ImportPatch patch(importedGetSystemTimeAsFileTime, &giveFakeTime);
            Exception::warn("text");
        }
        ASSERT_EQ(log.lines().size(), 1u) << c.milliseconds;
        EXPECT_EQ(log.lines()[0].milliseconds, c.written);
    }
    Exception::setDebugTarget(L"LogsIncludeMsecs", false);
}

std::FILE* failToOpenStream(int, const char*) {
    return nullptr;
}

TEST(ErrorLogSystem, LineIsDroppedAndFileReleasedIfTheStreamCannotBeOpened) {
    const TemporaryLog log;
    {
        const test::ImportPatch patch(importedFdopen, &failToOpenStream);
        Exception::warn("dropped");
    }
    EXPECT_EQ(log.size(), 0);
    EXPECT_NO_THROW(test::LockedFile(log.path()));
    Exception::warn("written");
    EXPECT_EQ(log.messages(), Texts{"WARN: written"});
    EXPECT_EQ(std::remove(log.path().c_str()), 0) << "the file must be closed";
}

struct FileSize {
    BOOL isKnown = TRUE;
    long long bytes = 0;
};

TEST(ErrorLogSystem, FileIsMovedOnlyIfItsSizeIsKnownAndBelowTwoGigabytes) {
    struct Case {
        FileSize size;
        bool moved;
    };
    const std::vector<Case> cases = {
        {{FALSE, 0}, false},          {{FALSE, 5000}, false},      {{TRUE, 1000}, false},
        {{TRUE, 1001}, true},         {{TRUE, 0x7FFFFFFF}, true},  {{TRUE, 0x80000000}, false},
        {{TRUE, 0x100000000}, false}, {{TRUE, 0x100001000}, false}  // 0 and 4096 if truncated to 32 bits
    };
    FileSize fake;
    const test::ImportHook<importedGetFileSizeEx> size([&](HANDLE, LARGE_INTEGER* out) {
        out->QuadPart = fake.bytes;
        return fake.isKnown;
    });
    for (const Case& c : cases) {
        const TemporaryLog log;
        fake = {};
        Exception::warn("old");
        Exception::SetErrorLogSize(1000);
        fake = c.size;
        Exception::warn("new");
        EXPECT_EQ(log.messages(), (c.moved ? Texts{"WARN: new"} : Texts{"WARN: old", "WARN: new"}))
            << c.size.isKnown << " " << c.size.bytes;
    }
}

}  // namespace
