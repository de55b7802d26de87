// The flat interface with a failing heap: no exception leaves it, the status reports the lack of memory, and outputs
// stay unchanged.

#include <string>
#include <vector>

#include "allocation/Walker.h"
#include "support/NamedEvent.h"
#include "vorel/vorelCoreC.h"

namespace {

using Units = std::vector<vorel_char16>;

constexpr vorel_char16 kFill = 0x5A5A;

Units units(const std::wstring& text) {
    return {text.begin(), text.end()};
}

/// A text that is longer than the internal buffer of a function, so that the function uses the heap.
Units longUnits(wchar_t unit) {
    return units(std::wstring(600, unit));
}

/// Expects the status `VOREL_ERROR_OUT_OF_MEMORY` if a request failed, and the status `expected` otherwise.
template <class Call>
void expectStatus(Attempt& attempt, vorel_status expected, Call&& call) {
    vorel_status status = -1;
    attempt.perform([&] { status = call(); });
    attempt.expectCompleted();
    EXPECT_EQ(status, attempt.allocationFailed() ? VOREL_ERROR_OUT_OF_MEMORY : expected);
    if (status != VOREL_OK) {
        EXPECT_EQ(vorel_last_error_status(), status);
        std::size_t length = 0;
        EXPECT_EQ(vorel_last_error_message(nullptr, 0, &length), VOREL_ERROR_BUFFER_TOO_SMALL)
            << "the message must not be empty";
    }
}

/// Like `expectStatus`, for a function with a text output. 4000 units must be enough for the output.
template <class Call>
void expectText(Attempt& attempt, Call&& call) {
    Units output(4000, kFill);
    std::size_t length = 4711;
    expectStatus(attempt, VOREL_OK, [&] { return call(output.data(), output.size(), &length); });
    if (attempt.allocationFailed()) {
        EXPECT_EQ(output, Units(4000, kFill));
        EXPECT_EQ(length, 4711u);
    } else {
        EXPECT_LT(length, output.size());
    }
}

void utf8(Attempt& attempt) {
    const std::string text(600, 'a');
    expectText(attempt, [&](auto... out) { return vorel_utf8_to_utf16(text.data(), text.size(), out...); });
}

void codePage(Attempt& attempt) {
    const std::string text(600, 'a');
    expectText(attempt, [&](auto... out) { return vorel_code_page_to_utf16(1252, text.data(), text.size(), out...); });
}

void base64(Attempt& attempt) {
    const std::string bytes(600, 'a');
    expectText(attempt, [&](auto... out) { return vorel_base64_encode(bytes.data(), bytes.size(), out...); });
}

void daylight(Attempt& attempt) {
    const std::string bytes(600, 'a');
    expectText(attempt, [&](auto... out) { return vorel_daylight_encode(bytes.data(), bytes.size(), out...); });
}

void hex(Attempt& attempt) {
    const std::string bytes(600, 'a');
    expectText(attempt, [&](auto... out) { return vorel_hex_encode(bytes.data(), bytes.size(), 1, out...); });
}

void urlEncode(Attempt& attempt) {
    const Units text = longUnits(L'\u00E9');
    expectText(attempt, [&](auto... out) { return vorel_url_encode(text.data(), text.size(), 0, out...); });
}

void urlDecode(Attempt& attempt) {
    const Units text = longUnits(L'\u00E9');
    expectText(attempt, [&](auto... out) { return vorel_url_decode(text.data(), text.size(), 0, out...); });
}

void splitList(Attempt& attempt) {
    const Units text = units(L"one,\"two, three\"," + std::wstring(600, L'z'));
    const Units comma = units(L",");
    expectText(attempt,
               [&](auto... out) { return vorel_split_list(text.data(), text.size(), comma.data(), 1, 0, out...); });
}

void joinList(Attempt& attempt) {
    const Units items = units(std::wstring(L"one\0two, three\0", 15) + std::wstring(600, L'z') + L'\0');
    const Units comma = units(L",");
    expectText(attempt,
               [&](auto... out) { return vorel_join_list(items.data(), items.size(), comma.data(), 1, out...); });
}

void parseList(Attempt& attempt) {
    const Units text = units(L"1,2,3,4,5,6,7,8,9,10,11,12");
    std::vector<int32_t> values(12, 77);
    std::size_t count = 4711;
    expectStatus(attempt, VOREL_OK,
                 [&] { return vorel_parse_int32_list(text.data(), text.size(), values.data(), 12, &count); });
    EXPECT_EQ(count, attempt.allocationFailed() ? 4711u : 12u);
    EXPECT_EQ(values.back(), attempt.allocationFailed() ? 77 : 12);
}

void parseNumber(Attempt& attempt) {
    const Units text = longUnits(L'0');
    int32_t value = 77;
    expectStatus(attempt, VOREL_OK, [&] { return vorel_parse_int32(text.data(), text.size(), &value); });
    EXPECT_EQ(value, attempt.allocationFailed() ? 77 : 0);
}

/// The text is invalid. If memory runs out while this error is reported, the status may also be
/// `VOREL_ERROR_OUT_OF_MEMORY`.
void parseRanges(Attempt& attempt) {
    const Units text = units(L"x");
    std::size_t count = 4711;
    vorel_status status = -1;
    attempt.perform([&] { status = vorel_parse_ranges(text.data(), text.size(), nullptr, 0, &count); });
    attempt.expectCompleted();
    EXPECT_TRUE(status == VOREL_ERROR_INVALID_TEXT ||
                (attempt.allocationFailed() && status == VOREL_ERROR_OUT_OF_MEMORY));
    EXPECT_EQ(vorel_last_error_status(), status);
    EXPECT_EQ(count, 4711u);
}

/// If the critical section in the mutex cannot be allocated, the library reports a system error.
void openMutex(Attempt& attempt) {
    const Units name = units(test::NamedEvent::uniqueName(L"flat_mutex"));
    vorel_mutex* mutex = nullptr;
    vorel_status status = -1;
    attempt.perform([&] { status = vorel_mutex_open(name.data(), name.size(), &mutex); });
    attempt.expectCompleted();
    if (status == VOREL_OK) {
        EXPECT_EQ(vorel_mutex_close(mutex), VOREL_OK);
        return;
    }
    EXPECT_TRUE(attempt.allocationFailed());
    EXPECT_TRUE(status == VOREL_ERROR_OUT_OF_MEMORY || status == VOREL_ERROR_SYSTEM) << status;
    EXPECT_EQ(mutex, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Flat, FailingHeap,
                         underBothFailures({{"Utf8", utf8},
                                            {"CodePage", codePage},
                                            {"Base64", base64},
                                            {"Daylight", daylight},
                                            {"Hex", hex},
                                            {"UrlEncode", urlEncode},
                                            {"UrlDecode", urlDecode},
                                            {"SplitList", splitList},
                                            {"JoinList", joinList},
                                            {"ParseList", parseList},
                                            {"ParseNumber", parseNumber},
                                            {"ParseRanges", parseRanges},
                                            {"OpenMutex", openMutex}}),
                         failingHeapName);

}  // namespace
