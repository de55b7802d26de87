// The flat interface under a failing heap: nothing leaves it, the status tells of the memory, outputs stay as they
// were.

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

/// Longer than what is kept without the heap.
Units longUnits(wchar_t unit) {
    return units(std::wstring(600, unit));
}

/// A refusal becomes `VOREL_ERROR_OUT_OF_MEMORY`; without one the status is `expected`.
template <class Call>
void expectStatus(Trial& trial, vorel_status expected, Call&& call) {
    vorel_status status = -1;
    trial.perform([&] { status = call(); });
    trial.expectCompleted();
    EXPECT_EQ(status, trial.refused() ? VOREL_ERROR_OUT_OF_MEMORY : expected);
    if (status != VOREL_OK) {
        EXPECT_EQ(vorel_last_error_status(), status);
        std::size_t length = 0;
        EXPECT_EQ(vorel_last_error_message(nullptr, 0, &length), VOREL_ERROR_BUFFER_TOO_SMALL) << "there is a text";
    }
}

/// The same for a function with an output of text, which has to have enough room with 4000 units.
template <class Call>
void expectText(Trial& trial, Call&& call) {
    Units output(4000, kFill);
    std::size_t length = 4711;
    expectStatus(trial, VOREL_OK, [&] { return call(output.data(), output.size(), &length); });
    if (trial.refused()) {
        EXPECT_EQ(output, Units(4000, kFill));
        EXPECT_EQ(length, 4711u);
    } else {
        EXPECT_LT(length, output.size());
    }
}

void utf8(Trial& trial) {
    const std::string text(600, 'a');
    expectText(trial, [&](auto... out) { return vorel_utf8_to_utf16(text.data(), text.size(), out...); });
}

void codePage(Trial& trial) {
    const std::string text(600, 'a');
    expectText(trial, [&](auto... out) { return vorel_code_page_to_utf16(1252, text.data(), text.size(), out...); });
}

void base64(Trial& trial) {
    const std::string bytes(600, 'a');
    expectText(trial, [&](auto... out) { return vorel_base64_encode(bytes.data(), bytes.size(), out...); });
}

void daylight(Trial& trial) {
    const std::string bytes(600, 'a');
    expectText(trial, [&](auto... out) { return vorel_daylight_encode(bytes.data(), bytes.size(), out...); });
}

void hex(Trial& trial) {
    const std::string bytes(600, 'a');
    expectText(trial, [&](auto... out) { return vorel_hex_encode(bytes.data(), bytes.size(), 1, out...); });
}

void urlEncode(Trial& trial) {
    const Units text = longUnits(L'\u00E9');
    expectText(trial, [&](auto... out) { return vorel_url_encode(text.data(), text.size(), 0, out...); });
}

void urlDecode(Trial& trial) {
    const Units text = longUnits(L'\u00E9');
    expectText(trial, [&](auto... out) { return vorel_url_decode(text.data(), text.size(), 0, out...); });
}

void splitList(Trial& trial) {
    const Units text = units(L"one,\"two, three\"," + std::wstring(600, L'z'));
    const Units comma = units(L",");
    expectText(trial,
               [&](auto... out) { return vorel_split_list(text.data(), text.size(), comma.data(), 1, 0, out...); });
}

void joinList(Trial& trial) {
    const Units items = units(std::wstring(L"one\0two, three\0", 15) + std::wstring(600, L'z') + L'\0');
    const Units comma = units(L",");
    expectText(trial,
               [&](auto... out) { return vorel_join_list(items.data(), items.size(), comma.data(), 1, out...); });
}

void parseList(Trial& trial) {
    const Units text = units(L"1,2,3,4,5,6,7,8,9,10,11,12");
    std::vector<int32_t> values(12, 77);
    std::size_t count = 4711;
    expectStatus(trial, VOREL_OK,
                 [&] { return vorel_parse_int32_list(text.data(), text.size(), values.data(), 12, &count); });
    EXPECT_EQ(count, trial.refused() ? 4711u : 12u);
    EXPECT_EQ(values.back(), trial.refused() ? 77 : 12);
}

void parseNumber(Trial& trial) {
    const Units text = longUnits(L'0');
    int32_t value = 77;
    expectStatus(trial, VOREL_OK, [&] { return vorel_parse_int32(text.data(), text.size(), &value); });
    EXPECT_EQ(value, trial.refused() ? 77 : 0);
}

/// With memory the text would be refused; that the refusal itself finds none does not matter.
void parseRanges(Trial& trial) {
    const Units text = units(L"x");
    std::size_t count = 4711;
    vorel_status status = -1;
    trial.perform([&] { status = vorel_parse_ranges(text.data(), text.size(), nullptr, 0, &count); });
    trial.expectCompleted();
    EXPECT_TRUE(status == VOREL_ERROR_INVALID_TEXT || (trial.refused() && status == VOREL_ERROR_OUT_OF_MEMORY));
    EXPECT_EQ(vorel_last_error_status(), status);
    EXPECT_EQ(count, 4711u);
}

/// What the mutex itself cannot have, the library tells in other words.
void openMutex(Trial& trial) {
    const Units name = units(test::NamedEvent::uniqueName(L"flat_mutex"));
    vorel_mutex* mutex = nullptr;
    vorel_status status = -1;
    trial.perform([&] { status = vorel_mutex_open(name.data(), name.size(), &mutex); });
    trial.expectCompleted();
    if (status == VOREL_OK) {
        EXPECT_EQ(vorel_mutex_close(mutex), VOREL_OK);
        return;
    }
    EXPECT_TRUE(trial.refused());
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
