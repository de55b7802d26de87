#include "tools/support/Tool.h"

#include <new>
#include <optional>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vorel/exceptions/Exception.h>
#include <windows.h>

#include "support/Handle.h"
#include "support/TemporaryLog.h"

namespace {

/// Redirects the error stream of this process to a file while the object exists.
class CapturedErrors {
public:
    CapturedErrors()
        : m_path(m_folder.file("errors")),
          m_file(CreateFileA(m_path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW, 0, nullptr)),
          m_before(GetStdHandle(STD_ERROR_HANDLE)) {
        SetStdHandle(STD_ERROR_HANDLE, m_file.get());
    }
    ~CapturedErrors() { SetStdHandle(STD_ERROR_HANDLE, m_before); }

    CapturedErrors(const CapturedErrors&) = delete;
    CapturedErrors& operator=(const CapturedErrors&) = delete;

    [[nodiscard]] std::optional<std::string> text() const { return test::readFileBytes(m_path); }

private:
    test::TemporaryFolder m_folder;
    std::string m_path;
    test::Handle m_file;
    HANDLE m_before;
};

struct Ending {
    const char* why;
    int (*body)();
    int exitCode;
    std::string error;
};

TEST(ToolTest, Run_ReportsExceptionsAndReturnsTheirExitCodes) {
    const Ending endings[] = {
        {"a result", [] { return 7; }, 7, ""},
        {"a failure", []() -> int { throw tools::Failure(L"a.txt: l\u00E4uft nicht"); }, tools::kFailed,
         "tool: a.txt: l\xC3\xA4uft nicht\n"},
        {"a failure of two lines that quotes input", []() -> int { throw tools::Failure(L"\x1B[2J\u202E\u009B\nb"); },
         tools::kFailed, "tool: \\x1B[2J\\xE2\\x80\\xAE\\xC2\\x9B\nb\n"},
        {"a usage error", []() -> int { throw tools::UsageError(L"no command"); }, tools::kUsageError,
         "tool: no command\nTry \"tool --help\".\n"},
        {"a usage error of a command", []() -> int { throw tools::UsageError(L"no file", L"tool copy"); },
         tools::kUsageError, "tool: no file\nTry \"tool copy --help\".\n"},
        {"a reader that closed the output", []() -> int { throw tools::OutputClosed(); }, tools::kFailed, ""},
        {"an exception of the library", []() -> int { throw vorel::Exception(L"it broke"); }, tools::kFailed,
         "tool: it broke\n"},
        {"memory runs out", []() -> int { throw std::bad_alloc(); }, tools::kFailed, "tool: not enough memory\n"},
        {"an exception of the standard library", []() -> int { throw std::runtime_error("odd"); }, tools::kFailed,
         "tool: odd\n"},
        {"an object that is not an exception", []() -> int { throw 5; }, tools::kFailed, ""},
    };
    for (const Ending& ending : endings) {
        SCOPED_TRACE(ending.why);
        const CapturedErrors errors;
        EXPECT_EQ(tools::run(L"tool", ending.body), ending.exitCode);
        EXPECT_EQ(errors.text(), ending.error);
    }
}

TEST(ToolTest, Run_WritesNothingToTheErrorLog) {
    const test::TemporaryLog log;
    const CapturedErrors errors;
    EXPECT_EQ(tools::run(L"tool", []() -> int { throw vorel::Exception(L"it broke"); }), tools::kFailed);
    EXPECT_FALSE(log.exists());
}

TEST(ToolTest, SystemFailure_ContainsNameTextAndCode) {
    SetLastError(ERROR_FILE_NOT_FOUND);
    const tools::Failure failure = tools::systemFailure(L"a.txt", L"cannot be opened");
    EXPECT_THAT(failure.text(), ::testing::StartsWith(L"a.txt: cannot be opened: "));
    EXPECT_THAT(failure.text(), ::testing::EndsWith(L" (error 2)"));
    EXPECT_EQ(tools::systemFailure(L"x", L"fails", 0x20000001).text(), L"x: fails (error 536870913)");
}

TEST(ToolTest, VersionText_StartsWithTheNameOfTheTool) {
    EXPECT_THAT(tools::versionText(L"tool"), ::testing::StartsWith(L"tool "));
}

}  // namespace
