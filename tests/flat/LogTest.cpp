#include "vorel/flat/Log.h"

#include <atomic>
#include <cstdio>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include <windows.h>

#include "flat/FlatCalls.h"
#include "support/LocaleSet.h"
#include "support/SystemText.h"
#include "support/TemporaryLog.h"
#include "support/Together.h"
#include "support/WideText.h"

namespace {

using namespace std::string_view_literals;

using test::FlatText;
using test::flatText;
using test::TemporaryLog;
using testing::ElementsAre;

std::wstring logPath() {
    return flatText([](auto... out) { return vorel_log_path(out...); });
}

vorel_status setPath(const std::wstring& path) {
    const FlatText text(path);
    return vorel_log_set_path(text.data(), text.size());
}

vorel_status write(std::wstring_view prefix, std::wstring_view message) {
    const FlatText front(prefix);
    const FlatText text(message);
    return vorel_log_write(front.data(), front.size(), text.data(), text.size());
}

vorel_status writeDebug(std::wstring_view target, std::wstring_view message) {
    const FlatText name(target);
    const FlatText text(message);
    return vorel_log_debug(name.data(), name.size(), text.data(), text.size());
}

vorel_status setTarget(std::wstring_view target, int32_t active) {
    const FlatText name(target);
    return vorel_log_set_debug_target(name.data(), name.size(), active);
}

TEST(FlatLog, WritesLines) {
    const TemporaryLog log;
    EXPECT_EQ(write(L"Import", L"12 files"), VOREL_OK);
    EXPECT_EQ(write(L"", L"no prefix"), VOREL_OK);
    EXPECT_EQ(write(L"WARN", L""), VOREL_OK);
    EXPECT_EQ(write(L"\u00E9", L"\U0001F600 100%s"), VOREL_OK);
    const std::wstring longText(20000, L'z');
    EXPECT_EQ(write(L"Long", longText), VOREL_OK);
    EXPECT_THAT(log.messages(), ElementsAre("Import: 12 files", "no prefix", "WARN: ",
                                            "\xC3\xA9: \xF0\x9F\x98\x80 100%s", "Long: " + std::string(20000, 'z')));
    ASSERT_FALSE(log.lines().empty());
    EXPECT_EQ(log.lines().front().processId, GetCurrentProcessId());
    EXPECT_EQ(log.lines().front().threadId, GetCurrentThreadId());
}

TEST(FlatLog, WritesTheSameLineAsTheWarningChannel) {
    const TemporaryLog log;
    EXPECT_EQ(write(L"WARN", L"low on paper"), VOREL_OK);
    vorel::Exception::warn("low on paper");
    EXPECT_THAT(log.messages(), ElementsAre("WARN: low on paper", "WARN: low on paper"));
}

TEST(FlatLog, RejectsTextsWithZerosAndNullTextsWithALength) {
    const TemporaryLog log;
    EXPECT_EQ(write(L"a\0"sv, L"b"), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(write(L"a", L"b\0c"sv), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(writeDebug(L"a\0"sv, L"b"), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(vorel_log_write(nullptr, 1, nullptr, 0), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(vorel_log_write(nullptr, 0, nullptr, 1), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_FALSE(log.exists());
}

TEST(FlatLog, SetsAndReturnsThePath) {
    const TemporaryLog log;
    EXPECT_EQ(logPath(), test::widened(log.path()));
    const std::wstring other = log.folder().widePath() + L"\\other.txt";
    EXPECT_EQ(setPath(other), VOREL_OK);
    EXPECT_EQ(logPath(), other);
    EXPECT_EQ(write(L"", L"there"), VOREL_OK);
    EXPECT_FALSE(log.exists());
    EXPECT_THAT(test::readLogMessages(log.folder().file("other.txt")), ElementsAre("there"));

    EXPECT_EQ(setPath(L""), VOREL_OK);
    EXPECT_EQ(logPath(), L"C:\\TalvenorError.txt");
    log.use();
}

TEST(FlatLog, AcceptsOnlyPathsThatTheCodePageCanEncode) {
    if (GetACP() != 1252) {
        GTEST_SKIP() << "the file names of this test require code page 1252";
    }
    const TemporaryLog log;
    const std::wstring path = log.folder().widePath() + L"\\caf\u00E9 \u20AC.txt";
    EXPECT_EQ(setPath(path), VOREL_OK);
    EXPECT_EQ(logPath(), path);
    EXPECT_EQ(write(L"", L"there"), VOREL_OK);
    EXPECT_NE(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);

    EXPECT_EQ(setPath(log.folder().widePath() + L"\\\u4E00.txt"), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(setPath(log.folder().widePath() + L"\\\u0101.txt"), VOREL_ERROR_INVALID_TEXT)
        << "U+0101 must not be replaced by a similar letter";
    EXPECT_EQ(logPath(), path) << "a rejected path must not replace the current path";
    log.use();
}

/// Whether the runtime reads paths as UTF-8. Wine's runtime does not, even if the locale uses UTF-8.
bool runtimeReadsPathsAsUtf8(const test::TemporaryFolder& folder) {
    const std::wstring name = folder.widePath() + L"\\probe \u4E00";
    std::FILE* const file = std::fopen(test::utf8(name).c_str(), "w");
    if (file) {
        std::fclose(file);
    }
    return DeleteFileW(name.c_str()) != FALSE;
}

TEST(FlatLog, UsesUtf8ForPathsIfTheLocaleDoes) {
    const TemporaryLog log;
    const test::LocaleSet locale(".UTF8");
    ASSERT_TRUE(locale.isSet());
    const std::wstring path = log.folder().widePath() + L"\\caf\u00E9 \u4E00 \U0001F600.txt";
    EXPECT_EQ(setPath(path), VOREL_OK);
    EXPECT_EQ(logPath(), path);
    EXPECT_EQ(setPath(log.folder().widePath() + L"\\\xD800.txt"), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(logPath(), path) << "a rejected path must not replace the current path";
    log.use();
}

TEST(FlatLog, WritesToAPathInUtf8IfTheLocaleUsesUtf8) {
    const TemporaryLog log;
    const test::LocaleSet locale(".UTF8");
    if (!runtimeReadsPathsAsUtf8(log.folder())) {
        GTEST_SKIP() << "the runtime reads paths in the code page of the process";
    }
    const std::wstring path = log.folder().widePath() + L"\\\u4E00.txt";
    EXPECT_EQ(setPath(path), VOREL_OK);
    EXPECT_EQ(write(L"", L"there"), VOREL_OK);
    EXPECT_NE(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
    log.use();
}

TEST(FlatLog, RejectsInvalidPaths) {
    const TemporaryLog log;
    EXPECT_EQ(setPath(std::wstring(1024, L'x')), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(setPath(std::wstring(L"a\0b"sv)), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(vorel_log_set_path(nullptr, 1), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(logPath(), test::widened(log.path()));
    EXPECT_EQ(setPath(std::wstring(1023, L'x')), VOREL_OK);
    EXPECT_EQ(logPath(), std::wstring(1023, L'x'));
    log.use();
}

TEST(FlatLog, SetsAndReturnsTheLimit) {
    const TemporaryLog log;
    int64_t limit = 0;
    EXPECT_EQ(vorel_log_limit(&limit), VOREL_OK);
    EXPECT_EQ(limit, 1000000);
    for (const int64_t bytes : {int64_t{0}, int64_t{-1}, int64_t{1}, INT64_MAX}) {
        EXPECT_EQ(vorel_log_set_limit(bytes), VOREL_OK);
        EXPECT_EQ(vorel_log_limit(&limit), VOREL_OK);
        EXPECT_EQ(limit, bytes);
    }
    EXPECT_EQ(vorel_log_set_limit(-2), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(vorel_log_set_limit(INT64_MIN), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(vorel_log_limit(nullptr), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(vorel_log_limit(&limit), VOREL_OK);
    EXPECT_EQ(limit, INT64_MAX);

    EXPECT_EQ(vorel_log_set_limit(0), VOREL_OK);
    EXPECT_EQ(write(L"", L"dropped"), VOREL_OK);
    EXPECT_FALSE(log.exists());
}

TEST(FlatLog, MovesAFileAboveItsLimitToTheBackup) {
    const TemporaryLog log;
    EXPECT_EQ(vorel_log_set_limit(1), VOREL_OK);
    EXPECT_EQ(write(L"", L"first"), VOREL_OK);
    EXPECT_EQ(write(L"", L"second"), VOREL_OK);
    EXPECT_THAT(log.messages(), ElementsAre("second"));
    EXPECT_THAT(test::readLogMessages(log.backupPath()), ElementsAre("first"));
}

TEST(FlatLog, WritesDebugLinesOfActiveTargetsOnly) {
    const TemporaryLog log;
    EXPECT_EQ(writeDebug(L"flat.paper", L"too early"), VOREL_OK);
    EXPECT_EQ(setTarget(L"flat.paper", 1), VOREL_OK);
    EXPECT_EQ(writeDebug(L"flat.paper", L"\u00E9"), VOREL_OK);
    EXPECT_EQ(writeDebug(L"flat.ink", L"another"), VOREL_OK);
    EXPECT_EQ(setTarget(L"flat.paper", 0), VOREL_OK);
    EXPECT_EQ(writeDebug(L"flat.paper", L"too late"), VOREL_OK);
    EXPECT_EQ(setTarget(L"flat.paper\0"sv, 1), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(vorel_log_set_debug_target(nullptr, 1, 1), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_THAT(log.messages(), ElementsAre("DEBUG: flat.paper: \xC3\xA9"));
}

TEST(FlatLog, CanBeDisabledForOneThread) {
    const TemporaryLog log;
    EXPECT_EQ(vorel_log_set_thread_enabled(0), VOREL_OK);
    EXPECT_EQ(write(L"", L"dropped"), VOREL_OK);
    std::thread([] { EXPECT_EQ(write(L"", L"from another thread"), VOREL_OK); }).join();
    EXPECT_EQ(vorel_log_set_thread_enabled(2), VOREL_OK) << "every value except 0 enables the log";
    EXPECT_EQ(write(L"", L"enabled again"), VOREL_OK);
    EXPECT_THAT(log.messages(), ElementsAre("from another thread", "enabled again"));
}

TEST(FlatLog, AnyThreadMaySetDebugTargets) {
    constexpr int kThreads = 4;
    constexpr int kNames = 1000;
    const auto nameOf = [](int index, int thread) {
        return L"FlatLog." + std::to_wstring(index) + L"." + std::to_wstring(thread);
    };
    std::atomic<int> wrong{0};
    test::runTogether(kThreads, [&](int thread) {
        for (int index = 0; index < kNames; ++index) {
            const std::wstring name = nameOf(index, thread);
            const std::vector<vorel_char16> units(name.begin(), name.end());
            wrong += vorel_log_set_debug_target(units.data(), units.size(), 1) != VOREL_OK;
        }
    });
    for (int index = 0; index < kNames; ++index) {
        for (int thread = 0; thread < kThreads; ++thread) {
            wrong += !vorel::Exception::isDebugTargetActive(nameOf(index, thread).c_str());
        }
    }
    EXPECT_EQ(wrong, 0);
}

}  // namespace
