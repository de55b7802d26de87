/// \file
/// The log while another program has the log or its backup open. The sharing mode of that program's handle limits the
/// access that the system grants to other handles (see the page "CreateFileW function" of Microsoft's documentation).

#include <cerrno>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

#include "support/CaseName.h"
#include "support/Handle.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/Exception.h"

namespace {

using Texts = std::vector<std::string>;
using test::Handle;
using vorel::Exception;

constexpr DWORD kShareReadWrite = FILE_SHARE_READ | FILE_SHARE_WRITE;
constexpr DWORD kShareAll = kShareReadWrite | FILE_SHARE_DELETE;
constexpr long long kLimitBytes = 10;  // already exceeded when any line except the first is logged

/// How the other program has a file open.
struct Holder {
    const char* name;
    DWORD access;
    DWORD sharing;
    Texts log;     // lines of the log after a second line was logged
    Texts backup;  // lines of the backup at the same time

    friend void PrintTo(const Holder& holder, std::ostream* out) { *out << holder.name; }
};

Handle open(const std::string& path, DWORD access, DWORD sharing) {
    return Handle(CreateFileA(path.c_str(), access, sharing, nullptr, OPEN_EXISTING, 0, nullptr));
}

/// Logs a line, and checks that logging keeps `errno` and the last error.
void warn(const char* text) {
    constexpr DWORD kSomeError = 1234;
    errno = ERANGE;
    SetLastError(kSomeError);
    Exception::warn("%hs", text);
    const DWORD lastError = GetLastError();
    EXPECT_EQ(errno, ERANGE);
    EXPECT_EQ(lastError, kSomeError);
}

class HeldLog : public testing::TestWithParam<Holder> {};

// A log can be renamed only if all open handles share deletion, and can be opened for writing only if all open handles
// share writing. A process that renames the log opens a handle with the right to delete. While this handle is open, the
// log can be opened only by calls that share deletion. The library opens the log with the runtime's _sopen_s, which
// does not share deletion, so in the last case below, the second line is dropped.
const Holder kHoldersOfTheLog[] = {
    {"Reader", GENERIC_READ, kShareReadWrite, {"WARN: first", "WARN: second"}, {}},
    {"Writer", GENERIC_WRITE, kShareReadWrite, {"WARN: first", "WARN: second"}, {}},
    {"ReaderThatSharesDeletion", GENERIC_READ, kShareAll, {"WARN: second"}, {"WARN: first"}},
    {"ReaderThatSharesReading", GENERIC_READ, FILE_SHARE_READ, {"WARN: first"}, {}},
    {"ReaderThatSharesNothing", GENERIC_READ, 0, {"WARN: first"}, {}},
    {"RenamingProcess", DELETE, kShareAll, {"WARN: first"}, {}},
};

TEST_P(HeldLog, IsRotatedAndWrittenOnlyIfAccessAndSharingOfTheHolderAllowIt) {
    const Holder& holder = GetParam();
    const test::TemporaryLog log(kLimitBytes);
    warn("first");
    Handle held = open(log.path(), holder.access, holder.sharing);
    ASSERT_TRUE(held);
    warn("second");
    held.close();
    EXPECT_EQ(log.messages(), holder.log);
    EXPECT_EQ(test::readLogMessages(log.backupPath()), holder.backup);

    warn("third");
    EXPECT_EQ(log.messages(), Texts{"WARN: third"});
    EXPECT_EQ(test::readLogMessages(log.backupPath()), holder.log);
}

INSTANTIATE_TEST_SUITE_P(Each, HeldLog, testing::ValuesIn(kHoldersOfTheLog), test::caseName);

/// The text that the holder of a file can read.
std::string bytesOf(const Handle& file) {
    char bytes[256];
    DWORD count = 0;
    EXPECT_TRUE(ReadFile(file.get(), bytes, sizeof bytes, &count, nullptr));
    return {bytes, count};
}

TEST(HeldBackup, LogGrowsWhileTheBackupCannotBeDeleted) {
    const test::TemporaryLog log(kLimitBytes);
    warn("first");
    warn("second");
    Handle held = open(log.backupPath(), GENERIC_READ, kShareReadWrite);
    ASSERT_TRUE(held);
    warn("third");
    warn("fourth");
    EXPECT_EQ(log.messages(), (Texts{"WARN: second", "WARN: third", "WARN: fourth"}));
    EXPECT_NE(bytesOf(held).find("WARN: first"), std::string::npos);
    held.close();
    warn("fifth");
    EXPECT_EQ(log.messages(), Texts{"WARN: fifth"});
    EXPECT_EQ(test::readLogMessages(log.backupPath()), (Texts{"WARN: second", "WARN: third", "WARN: fourth"}));
}

// If a file that a reader has open is deleted, older versions of NTFS keep its name until the reader closes the file.
// Newer versions remove the name at once. Both behaviours are documented, so the test accepts both.
TEST(HeldBackup, BackupSharedForDeletionIsReplacedBeforeOrAfterItsHolderClosesIt) {
    const test::TemporaryLog log(kLimitBytes);
    warn("first");
    warn("second");
    Handle held = open(log.backupPath(), GENERIC_READ, kShareAll);
    ASSERT_TRUE(held);
    warn("third");
    EXPECT_NE(bytesOf(held).find("WARN: first"), std::string::npos);
    held.close();
    const Texts written = log.messages();
    if (GetFileAttributesA(log.backupPath().c_str()) != INVALID_FILE_ATTRIBUTES) {
        EXPECT_EQ(written, Texts{"WARN: third"});
        EXPECT_EQ(test::readLogMessages(log.backupPath()), Texts{"WARN: second"});
    } else {
        EXPECT_EQ(written, (Texts{"WARN: second", "WARN: third"}));
    }
    warn("fourth");
    EXPECT_EQ(log.messages(), Texts{"WARN: fourth"});
    EXPECT_EQ(test::readLogMessages(log.backupPath()), written);
}

}  // namespace
