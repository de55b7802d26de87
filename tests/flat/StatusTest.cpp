#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "flat/FlatCalls.h"
#include "support/TemporaryLog.h"

namespace {

using test::FlatText;
using test::lastMessage;

/// Makes a call that fails with the message "A pointer is null".
void failOnce() {
    EXPECT_EQ(vorel_parse_int32(nullptr, 0, nullptr), VOREL_ERROR_INVALID_ARGUMENT);
}

TEST(FlatStatus, LibraryHasTheVersionOfItsHeader) {
    EXPECT_EQ(vorel_abi_version(), VOREL_ABI_VERSION);
    const std::string version = vorel_version();
    EXPECT_EQ(version.find_first_not_of("0123456789."), std::string::npos) << version;
    EXPECT_EQ(std::count(version.begin(), version.end(), '.'), 2) << version;
}

TEST(FlatStatus, StatusNumbersAndNamesAreFixed) {
    const struct {
        vorel_status status;
        int number;
        const char* name;
    } kRows[] = {
        {VOREL_OK, 0, "VOREL_OK"},
        {VOREL_ERROR_INVALID_ARGUMENT, 1, "VOREL_ERROR_INVALID_ARGUMENT"},
        {VOREL_ERROR_BUFFER_TOO_SMALL, 2, "VOREL_ERROR_BUFFER_TOO_SMALL"},
        {VOREL_ERROR_OUT_OF_MEMORY, 3, "VOREL_ERROR_OUT_OF_MEMORY"},
        {VOREL_ERROR_INVALID_TEXT, 4, "VOREL_ERROR_INVALID_TEXT"},
        {VOREL_ERROR_UNKNOWN_NAME, 5, "VOREL_ERROR_UNKNOWN_NAME"},
        {VOREL_ERROR_UNSUPPORTED, 6, "VOREL_ERROR_UNSUPPORTED"},
        {VOREL_ERROR_TIMEOUT, 7, "VOREL_ERROR_TIMEOUT"},
        {VOREL_ERROR_NOT_OWNER, 8, "VOREL_ERROR_NOT_OWNER"},
        {VOREL_ERROR_SYSTEM, 9, "VOREL_ERROR_SYSTEM"},
        {VOREL_ERROR_INTERNAL, 10, "VOREL_ERROR_INTERNAL"},
        {11, 11, "VOREL_ERROR_UNKNOWN"},
        {-1, -1, "VOREL_ERROR_UNKNOWN"},
        {INT32_MIN, INT32_MIN, "VOREL_ERROR_UNKNOWN"},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(row.status, row.number);
        EXPECT_STREQ(vorel_status_name(row.status), row.name);
    }
}

TEST(FlatLastError, IsOkBeforeTheFirstFailure) {
    std::thread([] {
        EXPECT_EQ(vorel_last_error_status(), VOREL_OK);
        EXPECT_EQ(lastMessage(), L"");
        EXPECT_TRUE(test::flatOutput<char>([](auto... out) { return vorel_last_error_message_utf8(out...); }).empty());
        EXPECT_EQ(vorel_last_error_status(), VOREL_OK) << "the query must not set the last error";
    }).join();
}

TEST(FlatLastError, StaysUntilTheNextFailure) {
    failOnce();
    EXPECT_EQ(vorel_last_error_status(), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(lastMessage(), L"A pointer is null");

    int32_t value = 0;
    EXPECT_EQ(vorel_parse_int32(FlatText(L"7").data(), 1, &value), VOREL_OK);
    EXPECT_EQ(vorel_last_error_status(), VOREL_ERROR_INVALID_ARGUMENT) << "success must not change the last error";

    EXPECT_EQ(vorel_parse_int32(FlatText(L"x").data(), 1, &value), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(vorel_last_error_status(), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(lastMessage(), L"The text is not an integer");
}

TEST(FlatLastError, BelongsToItsThread) {
    failOnce();
    std::thread([] {
        EXPECT_EQ(vorel_last_error_status(), VOREL_OK);
        int32_t page = 0;
        EXPECT_EQ(vorel_code_page_by_name(FlatText(L"no such").data(), 7, &page), VOREL_ERROR_UNKNOWN_NAME);
        EXPECT_EQ(lastMessage(), L"No code page has this name");
    }).join();
    EXPECT_EQ(vorel_last_error_status(), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(lastMessage(), L"A pointer is null");
}

TEST(FlatLastError, FollowsTheRulesForTextOutputs) {
    failOnce();
    EXPECT_EQ(test::flatText([](auto... out) { return vorel_last_error_message(out...); }), L"A pointer is null");
    const auto utf8 = test::flatOutput<char>([](auto... out) { return vorel_last_error_message_utf8(out...); });
    EXPECT_EQ(std::string(utf8.begin(), utf8.end()), "A pointer is null");
    EXPECT_EQ(vorel_last_error_status(), VOREL_ERROR_INVALID_ARGUMENT)
        << "a query with a small buffer must not set the last error";
}

/// Makes a call that fails with a message that quotes `item`: 'Found nonnumeric text in numeric item: "…"'.
void failWith(const std::wstring& item) {
    std::size_t count = 0;
    EXPECT_EQ(vorel_parse_ranges(FlatText(item).data(), item.size(), nullptr, 0, &count), VOREL_ERROR_INVALID_TEXT);
}

TEST(FlatLastError, IsTheMessageOfTheLibraryInUtf16AndUtf8) {
    const test::TemporaryLog log;
    failWith(L"\u00E9\U0001F600");
    EXPECT_EQ(lastMessage(), L"Found nonnumeric text in numeric item: \"\u00E9\U0001F600\"");
    const auto utf8 = test::flatOutput<char>([](auto... out) { return vorel_last_error_message_utf8(out...); });
    EXPECT_EQ(std::string(utf8.begin(), utf8.end()),
              "Found nonnumeric text in numeric item: \"\xC3\xA9\xF0\x9F\x98\x80\"");
}

TEST(FlatLastError, MessageIsTruncatedToFiveHundredUnitsBetweenCharacters) {
    const test::TemporaryLog log;
    const std::wstring front = L"Found nonnumeric text in numeric item: \"";
    const struct {
        std::size_t letters;
        std::wstring tail;
        std::size_t kept;
    } kRows[] = {
        {500 - front.size() - 1, L"", 500},            // the closing quote is the last unit
        {500 - front.size(), L"", 500},                // no space for the closing quote
        {500 - front.size() - 1, L"\U0001F600", 499},  // space for half a surrogate pair
        {500 - front.size() - 2, L"\U0001F600", 500},  // space for the pair
        {5000, L"", 500},
    };
    for (const auto& row : kRows) {
        const std::wstring item = std::wstring(row.letters, L'z') + row.tail;
        failWith(item);
        EXPECT_EQ(lastMessage(), (front + item + L"\"").substr(0, row.kept));
    }
}

TEST(FlatLastError, ExceptionIsLoggedWithTheRecordOfTheFunction) {
    test::TemporaryLog log;
    failWith(L"z");
    const std::vector<std::string> messages = log.messages();
    ASSERT_GE(messages.size(), 2u);
    EXPECT_EQ(messages.front(), "Vorel Error: Found nonnumeric text in numeric item: \"z\"");
    EXPECT_EQ(messages.back(), "Vorel Error: vorel_parse_ranges: Vorel exception caught");
}

TEST(FlatLastError, FailureWithoutAnExceptionIsNotLogged) {
    test::TemporaryLog log;
    failOnce();
    int32_t value = 0;
    EXPECT_EQ(vorel_parse_int32(FlatText(L"x").data(), 1, &value), VOREL_ERROR_INVALID_TEXT);
    EXPECT_FALSE(log.exists());
}

}  // namespace
