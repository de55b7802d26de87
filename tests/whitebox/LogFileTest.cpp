/// \file
/// An open log file: the lock on the whole file, the check of its size, and the name of the backup.

#include "exceptions/LogFile.h"

#include <cstring>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <io.h>

#include "support/ImportHook.h"
#include "support/LockedFile.h"
#include "support/PrivateMember.h"
#include "support/TemporaryLog.h"

namespace test {

struct LockLogFile : PrivateMember<LockLogFile, bool (*)(int, bool) noexcept> {};
template struct Reveal<LockLogFile, &vorel::Exception::LockLogFile>;

}  // namespace test

namespace {

using vorel::detail::BackupName;
using vorel::detail::LogFile;

bool lockLogFile(int descriptor, bool lock) {
    return reveal(test::LockLogFile())(descriptor, lock);
}

/// A file descriptor of the runtime. The file is created if missing.
class Descriptor {
public:
    explicit Descriptor(const std::string& path) : m_number(_open(path.c_str(), _O_RDWR | _O_CREAT, 0600)) {}
    ~Descriptor() { close(); }

    [[nodiscard]] int number() const { return m_number; }
    void close() {
        if (m_number != -1) {
            _close(m_number);
        }
        m_number = -1;
    }

private:
    int m_number;
};

TEST(LockLogFile, InvalidDescriptorsCannotBeLocked) {
    const test::TemporaryFolder folder;
    Descriptor closed(folder.file("log"));
    const int number = closed.number();
    closed.close();
    for (const int descriptor : {-1, -2, -1000, number, 5000, 0x7FFFFFFF}) {
        EXPECT_FALSE(lockLogFile(descriptor, true)) << descriptor;
        EXPECT_FALSE(lockLogFile(descriptor, false)) << descriptor;
    }
}

// For the standard streams of a program without a console, the runtime returns -2 as the handle.
TEST(LockLogFile, DescriptorWithoutAFileCannotBeLocked) {
    const test::TemporaryFolder folder;
    const Descriptor descriptor(folder.file("log"));
    int locked = 0;
    const test::ImportHook<importedGetOsfhandle> handleOf([](int) { return std::intptr_t{-2}; });
    const test::ImportHook<importedLockFileEx> lock([&](HANDLE, DWORD, DWORD, DWORD, DWORD, LPOVERLAPPED) {
        ++locked;
        return TRUE;
    });
    EXPECT_FALSE(lockLogFile(descriptor.number(), true));
    EXPECT_EQ(locked, 0);
}

TEST(LockLogFile, LockExcludesOtherDescriptorsUntilItIsReleased) {
    const test::TemporaryFolder folder;
    const Descriptor first(folder.file("log"));
    const Descriptor second(folder.file("log"));
    EXPECT_TRUE(lockLogFile(first.number(), true));
    EXPECT_FALSE(lockLogFile(second.number(), true));
    EXPECT_FALSE(lockLogFile(second.number(), false));
    EXPECT_TRUE(lockLogFile(first.number(), false));
    EXPECT_TRUE(lockLogFile(second.number(), true));
    EXPECT_TRUE(lockLogFile(second.number(), false));
    EXPECT_FALSE(lockLogFile(second.number(), false));
}

TEST(LockLogFile, LockCoversTheRangeBeyondTheEndOfTheFile) {
    const test::TemporaryFolder folder;
    const Descriptor first(folder.file("log"));
    ASSERT_TRUE(lockLogFile(first.number(), true));
    const Descriptor second(folder.file("log"));
    auto* const handle = reinterpret_cast<HANDLE>(_get_osfhandle(second.number()));
    EXPECT_FALSE(LockFile(handle, 0, 0, 1, 0));
    EXPECT_FALSE(LockFile(handle, 0, 0x7FFFFFFF, 1, 0));
}

TEST(BackupName, IsThePathTruncatedTo1018BytesAndDotZeroZeroOne) {
    struct Case {
        std::size_t pathLength;
        std::size_t kept;
    };
    for (const Case& c : {Case{0, 0}, Case{1, 1}, Case{20, 20}, Case{1017, 1017}, Case{1018, 1018}, Case{1019, 1018},
                          Case{1023, 1018}, Case{5000, 1018}}) {
        std::string path;
        while (path.size() < c.pathLength) {
            path += static_cast<char>('a' + path.size() % 26);
        }
        const BackupName backup(path.c_str());
        EXPECT_EQ(backup.text, path.substr(0, c.kept) + ".001") << c.pathLength;
    }
}

TEST(LogFile, IsLargerThan_ReturnsTrueOnlyForALimitBelowTheSize) {
    const test::TemporaryFolder folder;
    const Descriptor file(folder.file("log"));
    ASSERT_EQ(_write(file.number(), "12345", 5), 5);
    const LogFile log(folder.file("log").c_str(), LogFile::Mode::Inspect);
    EXPECT_TRUE(log.isLargerThan(0));
    EXPECT_TRUE(log.isLargerThan(4));
    EXPECT_FALSE(log.isLargerThan(5));
    EXPECT_FALSE(log.isLargerThan(6));
    EXPECT_FALSE(log.isLargerThan(0x100000004));
}

TEST(LogFile, FileThatCannotBeOpenedIsNotLocked) {
    const test::TemporaryFolder folder;
    LogFile log(folder.file("no such folder\\log").c_str(), LogFile::Mode::Append);
    EXPECT_FALSE(log.isOpen());
    EXPECT_FALSE(log.tryLock());
    log.close();
    EXPECT_FALSE(log.isOpen());
}

TEST(LogFile, ClosingReleasesTheLockAndCanBeRepeated) {
    const test::TemporaryFolder folder;
    for (const bool withStream : {false, true}) {
        LogFile log(folder.file("log").c_str(), LogFile::Mode::Append);
        ASSERT_TRUE(log.tryLock());
        EXPECT_THROW(test::LockedFile(folder.file("log")), std::runtime_error);
        if (withStream) {
            ASSERT_NE(log.stream(), nullptr);
            EXPECT_EQ(log.stream(), log.stream());
        }
        log.close();
        log.close();
        EXPECT_FALSE(log.isOpen());
        EXPECT_NO_THROW(test::LockedFile(folder.file("log")));
    }
}

TEST(LogFile, StreamAppendsToTheFile) {
    const test::TemporaryFolder folder;
    for (const char* const text : {"a\n", "b\n"}) {
        LogFile log(folder.file("log").c_str(), LogFile::Mode::Append);
        ASSERT_TRUE(log.tryLock());
        std::fputs(text, log.stream());
    }
    EXPECT_EQ(test::readLines(folder.file("log")), (std::vector<std::string>{"a", "b"}));
}

TEST(LogFile, InspectingCreatesAMissingFileAndWritesNothing) {
    const test::TemporaryFolder folder;
    {
        const LogFile log(folder.file("log").c_str(), LogFile::Mode::Inspect);
        EXPECT_TRUE(log.isOpen());
    }
    EXPECT_EQ(test::readFileBytes(folder.file("log")), "");
}

TEST(LogFile, IsNotInheritedByChildProcesses) {
    const test::TemporaryFolder folder;
    const Descriptor probe(folder.file("probe"));
    const int next = probe.number() + 1;
    const LogFile log(folder.file("log").c_str(), LogFile::Mode::Append);
    ASSERT_NE(_get_osfhandle(next), -1);
    DWORD flags = 0;
    ASSERT_TRUE(GetHandleInformation(reinterpret_cast<HANDLE>(_get_osfhandle(next)), &flags));
    EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, 0u);
}

}  // namespace
