/// \file
/// How the error log handles results of the system: the computer's name, the clock, and failures of the runtime.

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <io.h>
#include <sys/stat.h>
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

TEST(ErrorLogSystem, WithoutAStreamTheLineIsDroppedAndTheFileReleased) {
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

struct FileStatus {
    int result = 0;
    long long sizeBytes = 0;
};

FileStatus& fakeStatus() {
    static FileStatus status;
    return status;
}

int giveFakeStatus(int, struct _stat64* status) {
    status->st_size = fakeStatus().sizeBytes;
    return fakeStatus().result;
}

TEST(ErrorLogSystem, FileIsMovedOnlyIfItsSizeIsKnownAndBelowTwoGigabytes) {
    struct Case {
        FileStatus status;
        bool moved;
    };
    const std::vector<Case> cases = {
        {{-1, 0}, false},          {{-1, 5000}, false},      {{0, 1000}, false},
        {{0, 1001}, true},         {{0, 0x7FFFFFFF}, true},  {{0, 0x80000000}, false},
        {{0, 0x100000000}, false}, {{0, 0x100001000}, false}  // 0 and 4096 if truncated to 32 bits
    };
    const test::ImportPatch patch(importedFstat64, &giveFakeStatus);
    for (const Case& c : cases) {
        const TemporaryLog log;
        fakeStatus() = {};
        Exception::warn("old");
        Exception::SetErrorLogSize(1000);
        fakeStatus() = c.status;
        Exception::warn("new");
        EXPECT_EQ(log.messages(), (c.moved ? Texts{"WARN: new"} : Texts{"WARN: old", "WARN: new"}))
            << c.status.result << " " << c.status.sizeBytes;
    }
}

}  // namespace
