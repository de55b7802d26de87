/// \file
/// The lines of the error log: their format, when a line is written or dropped, and the state that writing does not
/// change.

#include <atomic>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <io.h>
#include <windows.h>

#include "support/CommaLocale.h"
#include "support/LockedFile.h"
#include "support/TemporaryLog.h"
#include "support/WideText.h"
#include "vorel/exceptions/Exception.h"

namespace {

using test::TemporaryLog;
using Texts = std::vector<std::string>;
using vorel::Exception;

/// Access to the protected function that writes lines.
struct Log : Exception {
    using Exception::MirrorErrorMessage;
};

/// The time field of a line that is written now.
std::string timeText() {
    const std::time_t now = std::time(nullptr);
    // cppcheck-suppress asctimeCalled; the log shows the time as asctime writes it
    const std::string text = std::asctime(std::localtime(&now));
    return text.substr(0, text.find('\n'));
}

/// The computer's name with A to Z in lower case, or an empty text if it is longer than 15 characters.
std::string computerName() {
    char name[16] = {};
    DWORD size = sizeof name;
    if (!GetComputerNameExA(ComputerNamePhysicalDnsHostname, name, &size)) {
        return "";
    }
    std::string lower = name;
    for (char& c : lower) {
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    }
    return lower;
}

TEST(ErrorLog, LineContainsTimeComputerProcessThreadAndMessage) {
    const TemporaryLog log;
    const std::string before = timeText();
    Exception::warn("text");
    const std::string after = timeText();
    const std::vector<test::LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(lines[0].time == before || lines[0].time == after) << lines[0].time;
    EXPECT_EQ(lines[0].milliseconds, std::nullopt);
    EXPECT_EQ(lines[0].computer, computerName());
    EXPECT_EQ(lines[0].processId, GetCurrentProcessId());
    EXPECT_EQ(lines[0].threadId, GetCurrentThreadId());
    EXPECT_EQ(lines[0].message, "WARN: text");
}

TEST(ErrorLog, LineEndsWithCarriageReturnAndLineFeed) {
    const TemporaryLog log;
    Exception::warn("text");
    const std::string bytes = test::readFileBytes(log.path()).value_or("");
    ASSERT_GT(bytes.size(), 26u);
    EXPECT_EQ(bytes[0], '[');
    EXPECT_EQ(bytes.substr(25), "] " + computerName() + "." + std::to_string(GetCurrentProcessId()) + "." +
                                    std::to_string(GetCurrentThreadId()) + ": WARN: text\r\n");
}

TEST(ErrorLog, LineNamesTheWritingThread) {
    const TemporaryLog log;
    DWORD writer = 0;
    std::thread([&] {
        writer = GetCurrentThreadId();
        Exception::warn("text");
    }).join();
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines()[0].threadId, writer);
    EXPECT_NE(writer, GetCurrentThreadId());
}

TEST(ErrorLog, LinesAreAppendedInOrder) {
    const TemporaryLog log;
    for (const char* const text : {"a", "b", "c"}) {
        Exception::warn("%s", text);
    }
    EXPECT_EQ(log.messages(), (Texts{"WARN: a", "WARN: b", "WARN: c"}));
}

TEST(ErrorLog, MessagesAreUtf8InEveryLocale) {
    const TemporaryLog log;
    const auto warn = [] { Exception::warn(L"%ls", L"\x00E9\x4E00\xD83D\xDE00\xD800"); };
    const std::string line = "WARN: \xC3\xA9\xE4\xB8\x80\xF0\x9F\x98\x80?";
    warn();
    EXPECT_EQ(log.messages(), Texts{line});
    const test::CommaLocale locale;
    if (!locale.isSet()) {
        GTEST_SKIP() << "no other locale is available";
    }
    warn();
    EXPECT_EQ(log.messages(), (Texts{line, line}));
}

TEST(ErrorLog, LineFeedsInAMessageAreNotEscaped) {
    const TemporaryLog log;
    Exception::warn("first\nsecond");
    const std::vector<std::string> lines = test::readLines(log.path());
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1], "second");
}

TEST(ErrorLog, PercentSignsInAMessageAreText) {
    const TemporaryLog log;
    Log::MirrorErrorMessage(nullptr, 1000, "100%s: ", L"%d %n%%", true);
    EXPECT_EQ(log.messages(), Texts{"100%s: %d %n%%"});
}

TEST(ErrorLog, NullPrefixAndMessageAreWrittenAsFixedTexts) {
    const TemporaryLog log;
    Log::MirrorErrorMessage(nullptr, 1000, nullptr, L" text", true);
    Log::MirrorErrorMessage(nullptr, 1000, "X: ", nullptr, true);
    Log::MirrorErrorMessage("", 1000, nullptr, nullptr, true);
    EXPECT_EQ(log.messages(), (Texts{"NULL Method text", "X: NULL Message", "NULL MethodNULL Message"}));
}

TEST(ErrorLog, MirrorSwitchAffectsOnlyLinesThatAreNotForced) {
    const TemporaryLog log;
    EXPECT_FALSE(Exception::GetMirrorErrorLog());
    Log::MirrorErrorMessage(nullptr, 1000, "", L"off", false);
    EXPECT_FALSE(log.exists());
    Log::MirrorErrorMessage(nullptr, 1000, "", L"off, forced", true);
    Exception::SetMirrorErrorLog(true);
    EXPECT_TRUE(Exception::GetMirrorErrorLog());
    Log::MirrorErrorMessage(nullptr, 1000, "", L"on", false);
    Exception::ResetClass();
    EXPECT_FALSE(Exception::GetMirrorErrorLog());
    Log::MirrorErrorMessage(nullptr, 1000, "", L"off again", false);
    EXPECT_EQ(log.messages(), (Texts{"off, forced", "on"}));
}

TEST(ErrorLog, ResetClassChangesNeitherLocationNorLimit) {
    const TemporaryLog log(4321);
    Exception::ResetClass();
    Exception::warn("text");
    EXPECT_EQ(test::currentLogSize(), 4321);
    EXPECT_EQ(log.messages(), Texts{"WARN: text"});
}

TEST(ErrorLog, WidePathIsConvertedToANarrowPath) {
    const TemporaryLog log;
    const std::string path = log.folder().file("wide.txt");
    Exception::SetErrorLogLocation(test::widened(path).c_str(), 0);
    Exception::warn("text");
    EXPECT_EQ(test::readLogMessages(path), Texts{"WARN: text"});
}

TEST(ErrorLog, UnconvertibleWidePathIsReplacedByTheTextOfTheFailure) {
    const TemporaryLog log;
    ASSERT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C");
    char before[MAX_PATH];
    ASSERT_NE(GetCurrentDirectoryA(sizeof before, before), 0u);
    ASSERT_TRUE(SetCurrentDirectoryA(log.folder().path().c_str()));
    Exception::SetErrorLogLocation(L"C:\\\x4E00.txt", 0);
    Exception::warn("text");
    SetCurrentDirectoryA(before);
    EXPECT_EQ(test::readLogMessages(log.folder().file("Error in text conversion")), Texts{"WARN: text"});
}

TEST(ErrorLog, LineIsDroppedSilentlyIfThePathCannotBeOpened) {
    const TemporaryLog log;
    Exception::SetErrorLogLocation(log.folder().file("no such folder\\errors.txt").c_str(), 0);
    errno = 77;
    SetLastError(4711);
    Exception::warn("dropped");
    EXPECT_EQ(errno, 77);
    EXPECT_EQ(GetLastError(), 4711u);
    log.use();
    Exception::warn("written");
    EXPECT_EQ(log.messages(), Texts{"WARN: written"});
}

TEST(ErrorLog, WritingAndRotatingChangeNeitherErrnoNorTheLastError) {
    const TemporaryLog log(10);
    for (int line = 0; line < 3; ++line) {  // the first line creates the file, the second and the third rotate it
        errno = 77;
        SetLastError(4711);
        const Exception e(L"message %d", line);
        EXPECT_EQ(errno, 77) << line;
        EXPECT_EQ(GetLastError(), 4711u) << line;
    }
    EXPECT_EQ(log.messages(), Texts{"Vorel Error: message 2"});
}

TEST(ErrorLog, FileIsClosedBetweenLines) {
    const TemporaryLog log;
    const auto nextDescriptor = [] {
        const int descriptor = _open("nul", _O_RDONLY);
        _close(descriptor);
        return descriptor;
    };
    const int before = nextDescriptor();
    Exception::warn("a");
    EXPECT_EQ(nextDescriptor(), before);
    const test::Handle alone(
        CreateFileA(log.path().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_TRUE(alone);
    Exception::warn("dropped because the file cannot be opened");
    EXPECT_EQ(nextDescriptor(), before);
}

TEST(ErrorLog, LineIsWrittenWhileAnotherHandleSharesReadingAndWriting) {
    const TemporaryLog log;
    Exception::warn("a");
    const test::Handle other(CreateFileA(log.path().c_str(), GENERIC_READ | GENERIC_WRITE,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(other);
    Exception::warn("b");
    EXPECT_EQ(log.messages(), (Texts{"WARN: a", "WARN: b"}));
}

TEST(ErrorLog, LineIsDroppedIfTheFileIsLockedForOneAndAHalfSeconds) {
    const TemporaryLog log;
    Exception::warn("before");
    test::LockedFile held(log.path());
    errno = 77;
    const ULONGLONG start = GetTickCount64();
    Exception::warn("dropped");
    const ULONGLONG waitedMs = GetTickCount64() - start;
    EXPECT_EQ(errno, 77);
    held.unlock();
    // Thirty waits of 3, 6, … 90 ms, minus the error of a coarse clock. On a busy machine, the waits can only be
    // longer.
    EXPECT_GE(waitedMs, 1395u - 30u);
    Exception::warn("after");
    EXPECT_EQ(log.messages(), (Texts{"WARN: before", "WARN: after"}));
}

TEST(ErrorLog, EveryLineGoesToOneOfThePathsWhileTheLocationChanges) {
    constexpr int kWriters = 2;
    constexpr int kLines = 300;
    const TemporaryLog log(-1);
    const std::string paths[] = {log.folder().file("b.log"), log.folder().file(std::string(60, 'A') + ".log")};
    Exception::SetErrorLogLocation(paths[0].c_str(), 0);
    std::atomic<bool> done{false};
    std::thread changer([&] {
        for (unsigned int round = 0; !done; ++round) {
            Exception::SetErrorLogLocation(paths[round % 2].c_str(), 0);
        }
    });
    std::vector<std::thread> writers;
    for (int writer = 0; writer < kWriters; ++writer) {
        writers.emplace_back([] {
            for (int line = 0; line < kLines; ++line) {
                Exception::warn("text");
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    done = true;
    changer.join();
    const std::size_t lines = test::readLines(paths[0]).size() + test::readLines(paths[1]).size();
    EXPECT_EQ(lines, std::size_t{kWriters} * kLines) << "every line must be in one of the two files";
}

}  // namespace
