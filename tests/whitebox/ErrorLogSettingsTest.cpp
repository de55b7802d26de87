/// \file
/// The stored settings of the error log, and the size check.

#include <atomic>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

#include "exceptions/LogPath.h"
#include "exceptions/LogState.h"
#include "support/HeldLock.h"
#include "support/ImportHook.h"
#include "support/LockedFile.h"
#include "support/PageEdge.h"
#include "support/PrivateMember.h"
#include "support/TemporaryLog.h"
#include "support/Widths.h"
#include "vorel/exceptions/Exception.h"

namespace test {

struct ErrorLogLocation : PrivateMember<ErrorLogLocation, char (*)[1024]> {};
template struct Reveal<ErrorLogLocation, &vorel::Exception::ErrorLogLocation>;

struct CheckOldLogSize : PrivateMember<CheckOldLogSize, void (*)(const char*, long long) noexcept> {};
template struct Reveal<CheckOldLogSize, &vorel::Exception::CheckOldLogSize>;

}  // namespace test

namespace {

using test::TemporaryLog;
using vorel::Exception;

char (&location())[1024] {
    return *reveal(test::ErrorLogLocation());
}

void checkOldLogSize(const char* path, long long limit) {
    reveal(test::CheckOldLogSize())(path, limit);
}

void makeFile(const std::string& path, std::size_t size) {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    std::fwrite(std::string(size, '#').data(), 1, size, file);
    std::fclose(file);
}

bool fileExists(const std::string& path) {
    return test::readFileBytes(path).has_value();
}

template <class T>
class LocationTest : public testing::Test {};
TYPED_TEST_SUITE(LocationTest, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(LocationTest, IsTruncatedTo1023Bytes) {
    const TemporaryLog log;
    for (const std::size_t length : {0u, 1u, 1022u, 1023u, 1024u, 1025u, 1500u, 100000u}) {
        const std::string path(length, 'p');
        Exception::SetErrorLogLocation(test::text<TypeParam>(path).c_str(), 0);
        EXPECT_EQ(location(), path.substr(0, 1023)) << length;
        EXPECT_EQ(location()[1023], '\0') << length;
    }
}

TYPED_TEST(LocationTest, NullClearsTheLocation) {
    const TemporaryLog log;
    const TypeParam* const none = nullptr;
    Exception::SetErrorLogLocation(none, 4321);
    EXPECT_STREQ(location(), "");
    EXPECT_EQ(test::currentLogSize(), 4321);
}

TEST(Location, ArgumentIsNotReadBeyondTheStoredSize) {
    const TemporaryLog log;
    test::PageEdge<char> edge(1023);
    Exception::SetErrorLogLocation(edge.placeAtEnd(std::string(1023, 'p')), 0);
    EXPECT_EQ(location(), std::string(1023, 'p'));
}

TEST(Location, LocationAndLimitAreSetUnderTheLock) {
    const TemporaryLog log;
    const std::string& path = log.path();
    const std::function<void()> settings[] = {
        [&] { Exception::SetErrorLogLocation(path.c_str(), 0); },
        [&] { Exception::SetErrorLogLocation(test::widened(path).c_str(), 0); },
        [] { Exception::SetErrorLogSize(5); },
    };
    for (const auto& set : settings) {
        test::expectWaitsFor(vorel::detail::logState.get()->LogSettingsLock, set);
    }
    test::expectPasses(vorel::detail::logState.get()->LogSettingsLock, [] { Exception::warn("text"); });
}

TEST(Location, IsNotReplacedByTheDefaultIfAnotherThreadSetsItBeforeTheFirstLine) {
    const TemporaryLog log;
    const char* const none = nullptr;
    Exception::SetErrorLogLocation(none, 0);
    test::expectWaitsFor(
        vorel::detail::logState.get()->LogSettingsLock, [] { Exception::warn("text"); },
        [&] { Exception::SetErrorLogLocation(log.path().c_str(), 0); });
    EXPECT_EQ(location(), log.path());
    EXPECT_EQ(log.messages(), std::vector<std::string>{"WARN: text"});
}

TEST(Location, MayBeSetToAPartOfItself) {
    const TemporaryLog log;
    Exception::SetErrorLogLocation(location() + 1, 0);
    EXPECT_EQ(location(), log.path().substr(1));
}

TEST(Location, BecomesTheErrorTextIfWideTextCannotBeConverted) {
    const TemporaryLog log;
    Exception::SetErrorLogLocation(L"C:\\\x4E00.txt", 4321);
    EXPECT_STREQ(location(), "Error in text conversion");
    EXPECT_EQ(test::currentLogSize(), 4321);
}

std::string readLocation() {
    char path[vorel::detail::kLogPathBytes];
    std::memset(path, '?', sizeof path);
    vorel::detail::LogPath::read(path);
    return path;
}

TEST(Location, IsReadCompletelyAtAnyLength) {
    const TemporaryLog log;
    for (const std::size_t length : {0u, 1u, 1022u, 1023u}) {
        const std::string path(length, 'p');
        Exception::SetErrorLogLocation(path.c_str(), 0);
        EXPECT_EQ(readLocation(), path) << length;
    }
}

TEST(Location, IsReadAgainUntilAConcurrentWriteHasEnded) {
    using vorel::detail::LogPathVersion;
    const TemporaryLog log;
    Exception::SetErrorLogLocation("C:\\old\\path.log", 0);
    // Simulates a thread that has changed only a part of the path.
    ++LogPathVersion;
    std::memcpy(location(), "D:\\new", 6);
    int waits = 0;
    const test::ImportHook<importedSwitchToThread> writer([&] {
        if (++waits == 3) {
            std::strcpy(location(), "D:\\new\\and longer.log");
            ++LogPathVersion;
        }
        return TRUE;
    });
    EXPECT_EQ(readLocation(), "D:\\new\\and longer.log");
    EXPECT_EQ(waits, 3);
}

TEST(Location, IsReadAfterATimeoutIfItsWriterWasKilled) {
    using vorel::detail::LogPathVersion;
    const TemporaryLog log;
    Exception::SetErrorLogLocation("C:\\path.log", 0);
    ++LogPathVersion;
    DWORD sleptMs = 0;
    const test::ImportHook<importedSleep> sleeps([&](DWORD milliseconds) { sleptMs += milliseconds; });
    EXPECT_EQ(readLocation(), "C:\\path.log");
    EXPECT_EQ(sleptMs, 500u);
    ++LogPathVersion;
}

TEST(Location, IsReadWithoutAWaitIfItWasSetAfterAWriterWasKilled) {
    const TemporaryLog log;
    ++vorel::detail::LogPathVersion;
    Exception::SetErrorLogLocation("C:\\path.log", 0);
    int waits = 0;
    const test::ImportHook<importedSwitchToThread> yields([&] { return ++waits != 0; });
    const test::ImportHook<importedSleep> sleeps([&](DWORD) { ++waits; });
    EXPECT_EQ(readLocation(), "C:\\path.log");
    EXPECT_EQ(waits, 0);
}

TEST(Location, IsNeverReadAsAMixtureOfTwoPaths) {
    constexpr int kReads = 50000;
    const TemporaryLog log;
    const std::string paths[] = {std::string(1000, 'a'), std::string(700, 'b')};
    Exception::SetErrorLogLocation(paths[0].c_str(), 0);
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (unsigned int round = 0; !done; ++round) {
            Exception::SetErrorLogLocation(paths[round % 2].c_str(), 0);
        }
    });
    int mixtures = 0;
    for (int count = 0; count < kReads; ++count) {
        const std::string path = readLocation();
        mixtures += path != paths[0] && path != paths[1];
    }
    done = true;
    writer.join();
    EXPECT_EQ(mixtures, 0);
}

// The log reads the clock before it opens the file. So the hook changes the location while a line is written.
TEST(Location, IsReadOncePerLine) {
    const TemporaryLog log;
    const std::string next = log.folder().file("next.log");
    const test::ImportHook<importedGetSystemTimeAsFileTime> clock([&](FILETIME* out) {
        Exception::SetErrorLogLocation(next.c_str(), 0);
        clock.original(out);
    });
    Exception::warn("first");
    EXPECT_EQ(log.messages(), std::vector<std::string>{"WARN: first"});
    EXPECT_FALSE(fileExists(next));
    Exception::warn("second");
    EXPECT_EQ(test::readLogMessages(next), std::vector<std::string>{"WARN: second"});
}

TEST(CheckOldLogSize, UsesTheCurrentPathIfNoPathIsGiven) {
    for (const char* const none : {static_cast<const char*>(nullptr), ""}) {
        const TemporaryLog log;
        makeFile(log.path(), 11);
        checkOldLogSize(none, 10);
        EXPECT_TRUE(fileExists(log.backupPath()));
        EXPECT_FALSE(log.exists());
    }
}

TEST(CheckOldLogSize, UsesTheCurrentLimitIfTheGivenLimitIsBelowOne) {
    struct Case {
        long long current;
        long long own;
        bool moved;
    };
    const std::vector<Case> cases = {
        {10, 0, true},  {10, -1, true},  {11, 0, false}, {0, 0, false},  {-1, -1, false},
        {-1, 10, true}, {10, 11, false}, {0, -5, false}, {11, 10, true}, {10, 0x10000000A, false},
    };
    for (const Case& c : cases) {
        const TemporaryLog log(c.current);
        makeFile(log.path(), 11);
        checkOldLogSize(log.path().c_str(), c.own);
        EXPECT_EQ(fileExists(log.backupPath()), c.moved) << c.current << " " << c.own;
        EXPECT_NE(log.exists(), c.moved);
    }
}

TEST(CheckOldLogSize, DoesNothingIfNoPathIsGivenAndNoneIsSet) {
    const TemporaryLog log(10);
    const char* const none = nullptr;
    Exception::SetErrorLogLocation(none, 0);
    checkOldLogSize(nullptr, 10);
    EXPECT_STREQ(location(), "");
}

TEST(CheckOldLogSize, DoesNotMoveALockedFile) {
    const TemporaryLog log(10);
    makeFile(log.path(), 11);
    test::LockedFile held(log.path());
    checkOldLogSize(nullptr, 10);
    EXPECT_FALSE(fileExists(log.backupPath()));
    held.unlock();
    checkOldLogSize(nullptr, 10);
    EXPECT_TRUE(fileExists(log.backupPath()));
}

TEST(CheckOldLogSize, DoesNothingIfTheFileCannotBeOpened) {
    const TemporaryLog log(10);
    checkOldLogSize(log.folder().file("no such folder\\log").c_str(), 10);
    EXPECT_FALSE(log.exists());
}

}  // namespace
