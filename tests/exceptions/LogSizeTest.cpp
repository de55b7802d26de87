/// \file
/// The size limit of the error log: how it is set, and when the log is moved to the backup.

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

#include "support/TemporaryLog.h"
#include "support/WideText.h"
#include "vorel/exceptions/Exception.h"

namespace {

using test::currentLogSize;
using test::TemporaryLog;
using Texts = std::vector<std::string>;
using vorel::Exception;

/// Creates a file of `size` bytes that contains no log line.
void makeFile(const std::string& path, std::size_t size, char fill = '#') {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    const std::string bytes(size, fill);
    std::fwrite(bytes.data(), 1, size, file);
    std::fclose(file);
}

bool fileExists(const std::string& path) {
    return test::readFileBytes(path).has_value();
}

TEST(LogSize, StandardLimitsAreFixed) {
    EXPECT_EQ(Exception::DefaultLogSize, 1000000);
    EXPECT_EQ(Exception::LargeErrorLogSize, 10000000);
    const long long* const addressable = &Exception::LargeErrorLogSize;
    EXPECT_EQ(*addressable, 10000000);
}

TEST(LogSize, EachFunctionAcceptsItsOwnRangeOfLimits) {
    struct Case {
        long long given;
        long long bySize;      // the limit after SetErrorLogSize
        long long byLocation;  // the limit after SetErrorLogLocation
    };
    constexpr long long kBefore = 5000;
    const std::vector<Case> cases = {
        {1, 1, 1},
        {123456, 123456, 123456},
        {0, 0, kBefore},
        {-1, -1, kBefore},
        {-2, kBefore, kBefore},
        {-5, kBefore, kBefore},
        {0x100000000, 0x100000000, 0x100000000},
    };
    for (const Case& c : cases) {
        const TemporaryLog log(kBefore);
        Exception::SetErrorLogSize(c.given);
        EXPECT_EQ(currentLogSize(), c.bySize) << c.given;
        Exception::SetErrorLogSize(kBefore);
        Exception::SetErrorLogLocation(log.path().c_str(), c.given);
        EXPECT_EQ(currentLogSize(), c.byLocation) << c.given;
        Exception::SetErrorLogSize(kBefore);
        Exception::SetErrorLogLocation(test::widened(log.path()).c_str(), c.given);
        EXPECT_EQ(currentLogSize(), c.byLocation) << c.given;
    }
}

TEST(LogSize, LimitZeroDisablesTheLogAndCreatesNoFile) {
    const TemporaryLog log;
    Exception::SetErrorLogSize(0);
    const Exception e(L"suppressed");
    Exception::warn("suppressed");
    EXPECT_FALSE(log.exists());
    Exception::SetErrorLogSize(-1);
    Exception::warn("written");
    EXPECT_EQ(log.messages(), Texts{"WARN: written"});
}

TEST(LogSize, LogWithLimitMinusOneIsNeverRotated) {
    const TemporaryLog log;
    makeFile(log.path(), 2000000);
    Exception::SetErrorLogSize(-1);
    Exception::warn("text");
    EXPECT_GT(log.size(), 2000000);
    EXPECT_FALSE(fileExists(log.backupPath()));
}

TEST(LogSize, OnlyAFileAboveTheLimitIsMoved) {
    struct Case {
        std::size_t size;
        bool moved;
    };
    constexpr long long kLimit = 1000;
    for (const Case& c : {Case{0, false}, Case{999, false}, Case{1000, false}, Case{1001, true}, Case{5000, true}}) {
        const TemporaryLog log(kLimit);
        makeFile(log.path(), c.size);
        Exception::warn("new");
        EXPECT_EQ(fileExists(log.backupPath()), c.moved) << c.size;
        if (c.moved) {
            EXPECT_EQ(test::readFileBytes(log.backupPath()), std::string(c.size, '#'));
            EXPECT_EQ(log.messages(), Texts{"WARN: new"});
        } else {
            EXPECT_EQ(test::readFileBytes(log.path()).value_or("").substr(0, c.size), std::string(c.size, '#'));
            EXPECT_GT(log.size(), static_cast<long long>(c.size));
        }
    }
}

TEST(LogSize, OnlyTheLineAfterTheOneThatExceedsTheLimitMovesTheFile) {
    const TemporaryLog log(1000);
    makeFile(log.path(), 1000);
    Exception::warn("crosses");
    EXPECT_FALSE(fileExists(log.backupPath()));
    Exception::warn("next");
    EXPECT_TRUE(fileExists(log.backupPath()));
    EXPECT_EQ(log.messages(), Texts{"WARN: next"});
}

TEST(LogSize, OlderBackupIsReplaced) {
    const TemporaryLog log(100);
    makeFile(log.backupPath(), 7, 'o');
    makeFile(log.path(), 101, 'n');
    Exception::warn("text");
    EXPECT_EQ(test::readFileBytes(log.backupPath()), std::string(101, 'n'));
}

TEST(LogSize, LogCallUsesItsOwnPathAndLimit) {
    const TemporaryLog log;
    const std::string path = log.folder().file("own.txt");
    makeFile(path, 51);
    Exception::log(path.c_str(), 50, "OWN", "text");
    EXPECT_EQ(test::readLogMessages(path), Texts{"OWN: text"});
    EXPECT_TRUE(fileExists(path + ".001"));
    EXPECT_FALSE(log.exists());
    EXPECT_EQ(currentLogSize(), Exception::DefaultLogSize);
}

TEST(LogSize, LogCallUsesTheCurrentLimitOnlyIfItsOwnLimitIsNegative) {
    struct Case {
        long long current;
        long long own;
        bool moved;
    };
    constexpr std::size_t kSize = 300;
    const std::vector<Case> cases = {
        {100, -1, true}, {100, -9, true},   {300, -1, false}, {-1, -1, false},
        {-1, 100, true}, {100, 500, false}, {0, -1, false},   {0, 100, true},
    };
    for (const Case& c : cases) {
        const TemporaryLog log;
        Exception::SetErrorLogSize(c.current);
        const std::string path = log.folder().file("own.txt");
        makeFile(path, kSize);
        Exception::log(path.c_str(), c.own, "OWN", "text");
        EXPECT_EQ(fileExists(path + ".001"), c.moved)
            << "current limit " << c.current << ", limit of the call " << c.own;
        EXPECT_TRUE(fileExists(path));
    }
}

TEST(LogSize, LogCallWithLimitZeroCreatesNoFile) {
    const TemporaryLog log;
    const std::string path = log.folder().file("own.txt");
    Exception::log(path.c_str(), 0, "OWN", "text");
    Exception::log(path.c_str(), 0, L"OWN", L"text");
    Exception::logClass(path.c_str(), 0, L"OWN", L"Class", L"method", L"text");
    EXPECT_FALSE(fileExists(path));
    EXPECT_FALSE(log.exists());
}

}  // namespace
