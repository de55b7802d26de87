#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "flat/FlatCalls.h"
#include "support/TemporaryLog.h"

namespace {

using namespace std::string_view_literals;

using test::flatFailure;
using test::FlatText;
using test::flatText;

// ---- Values ---------------------------------------------------------------------------------------------------------

/// Whether all bytes of `value` are still zero, as after its value-initialisation.
template <class Value>
bool isUntouched(const Value& value) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&value);
    return std::all_of(bytes, bytes + sizeof value, [](unsigned char byte) { return byte == 0; });
}

/// Parses a list, and checks the call with every capacity that is too small, the exact capacity and one more.
template <class Value>
std::vector<Value> valuesOf(vorel_status (*parse)(const vorel_char16*, size_t, Value*, size_t, size_t*),
                            std::wstring_view text) {
    const FlatText input(text);
    std::size_t needed = 0;
    const vorel_status asked = parse(input.data(), input.size(), nullptr, 0, &needed);
    EXPECT_EQ(asked, needed == 0 ? VOREL_OK : VOREL_ERROR_BUFFER_TOO_SMALL);
    std::vector<Value> values(needed + 1);
    for (std::size_t capacity = 0; capacity < needed; ++capacity) {
        std::size_t count = 4711;
        EXPECT_EQ(parse(input.data(), input.size(), values.data(), capacity, &count), VOREL_ERROR_BUFFER_TOO_SMALL);
        EXPECT_EQ(count, needed);
        EXPECT_TRUE(std::all_of(values.begin(), values.end(), isUntouched<Value>));
    }
    std::size_t count = 0;
    for (std::size_t capacity = needed; capacity <= needed + 1; ++capacity) {
        values.assign(needed + 1, Value{});
        count = 4711;
        EXPECT_EQ(parse(input.data(), input.size(), values.data(), capacity, &count), VOREL_OK);
        EXPECT_EQ(count, needed);
        EXPECT_TRUE(isUntouched(values.back())) << "nothing may be written after the list";
    }
    EXPECT_EQ(parse(input.data(), input.size(), values.data(), needed, nullptr), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(parse(input.data(), input.size(), nullptr, 1, &count), VOREL_ERROR_INVALID_ARGUMENT);
    values.pop_back();
    return values;
}

template <class Value>
vorel_status statusOf(vorel_status (*parse)(const vorel_char16*, size_t, Value*, size_t, size_t*),
                      std::wstring_view text) {
    const FlatText input(text);
    Value value{};
    std::size_t count = 4711;
    const vorel_status status = parse(input.data(), input.size(), &value, 1, &count);
    EXPECT_EQ(count, 4711u);
    EXPECT_TRUE(isUntouched(value));
    return status;
}

TEST(FlatLists, ParseIntegers) {
    EXPECT_EQ(valuesOf(vorel_parse_int32_list, L"1,2.9,-3"), (std::vector<int32_t>{1, 2, -3}));
    EXPECT_EQ(valuesOf(vorel_parse_int32_list, L"1,,2"), (std::vector<int32_t>{1, 0, 2}));
    EXPECT_EQ(valuesOf(vorel_parse_int32_list, L""), std::vector<int32_t>{});
    EXPECT_EQ(valuesOf(vorel_parse_uint32_list, L"4294967295,7"), (std::vector<uint32_t>{UINT32_MAX, 7}));
    EXPECT_EQ(statusOf(vorel_parse_int32_list, L"1;2"), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(statusOf(vorel_parse_int32_list, L"1\0"sv), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(statusOf(vorel_parse_uint32_list, L"1;2"), VOREL_ERROR_INVALID_TEXT);
}

TEST(FlatLists, ParseDoubles) {
    EXPECT_EQ(valuesOf(vorel_parse_double_list, L"1.5 2e3 abc 4"), (std::vector<double>{1.5, 2000, 4}));
    EXPECT_EQ(statusOf(vorel_parse_double_list, L"1 " + std::wstring(80, L'9')), VOREL_ERROR_INVALID_TEXT);
}

TEST(FlatLists, ParseBooleans) {
    EXPECT_EQ(valuesOf(vorel_parse_boolean_list, L"T f 1 0 yes 3"), (std::vector<int32_t>{1, 0, 1, 0, 1}));
    EXPECT_EQ(statusOf(vorel_parse_boolean_list, L"1 " + std::wstring(80, L't')), VOREL_ERROR_INVALID_TEXT);
}

TEST(FlatLists, ParseRanges) {
    std::vector<std::pair<int, int>> ranges;
    for (const vorel_range& range : valuesOf(vorel_parse_ranges, L" 1 - 5,7,,12-,-5")) {
        ranges.emplace_back(range.start, range.end);
    }
    EXPECT_EQ(ranges, (std::vector<std::pair<int, int>>{{1, 5}, {7, 7}, {12, -1}, {-1, 5}}));
    const test::TemporaryLog log;
    EXPECT_EQ(statusOf(vorel_parse_ranges, L"1-5,x"), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(test::lastMessage(), L"Found nonnumeric text in numeric item: \"x\"");
}

// ---- Texts ----------------------------------------------------------------------------------------------------------

TEST(FlatLists, SplitTextsAtADelimiter) {
    const struct {
        std::wstring_view text;
        std::wstring_view delimiter;
        std::wstring_view items;
    } kRows[] = {
        {L"", L"::", L""},
        {L"a::b::", L"::", L"a\0b\0"sv},
        {L"a::::b", L"::", L"a\0\0b\0"sv},
        {L"a::b", L"", L"a::b\0"sv},
        {L"\u00E9;\U0001F600", L";", L"\u00E9\0\U0001F600\0"sv},
    };
    for (const auto& row : kRows) {
        const FlatText text(row.text);
        const FlatText delimiter(row.delimiter);
        EXPECT_EQ(flatText([&](auto... out) {
                      return vorel_split_text(text.data(), text.size(), delimiter.data(), delimiter.size(), out...);
                  }),
                  row.items);
    }
}

TEST(FlatLists, SplitAndJoinLists) {
    const struct {
        std::wstring_view text;
        std::wstring_view items;
    } kRows[] = {
        {L"", L""},
        {L"a,\"b,c\",\"d\"\"e\"", L"a\0b,c\0d\"e\0"sv},
        {L"a,,b", L"a\0\0b\0"sv},
        {L" a , b", L" a \0 b\0"sv},
    };
    const FlatText comma(L",");
    for (const auto& row : kRows) {
        const FlatText text(row.text);
        const FlatText items(row.items);
        EXPECT_EQ(flatText([&](auto... out) {
                      return vorel_split_list(text.data(), text.size(), comma.data(), 1, 0, out...);
                  }),
                  row.items);
        EXPECT_EQ(
            flatText([&](auto... out) { return vorel_join_list(items.data(), items.size(), comma.data(), 1, out...); }),
            row.text);
    }
    const FlatText text(L" a ,\tb");
    EXPECT_EQ(
        flatText([&](auto... out) { return vorel_split_list(text.data(), text.size(), comma.data(), 1, 1, out...); }),
        L"a\0b\0"sv);
}

TEST(FlatLists, RejectZerosThatAreNotTerminators) {
    const FlatText zero(L"a\0b"sv);
    const FlatText comma(L",");
    EXPECT_EQ(flatFailure<vorel_char16>(
                  [&](auto... out) { return vorel_split_text(zero.data(), zero.size(), comma.data(), 1, out...); }),
              VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(flatFailure<vorel_char16>(
                  [&](auto... out) { return vorel_split_text(comma.data(), 1, zero.data(), zero.size(), out...); }),
              VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(flatFailure<vorel_char16>(
                  [&](auto... out) { return vorel_split_list(zero.data(), zero.size(), comma.data(), 1, 0, out...); }),
              VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(flatFailure<vorel_char16>(
                  [&](auto... out) { return vorel_join_list(zero.data(), zero.size(), comma.data(), 1, out...); }),
              VOREL_ERROR_INVALID_TEXT)
        << "the last item has no terminator";
    EXPECT_EQ(flatFailure<vorel_char16>([&](auto... out) {
                  return vorel_join_list(zero.data(), VOREL_ZERO_TERMINATED, comma.data(), 1, out...);
              }),
              VOREL_ERROR_INVALID_ARGUMENT);
}

}  // namespace
