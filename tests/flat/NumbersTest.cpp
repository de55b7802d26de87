#include <cmath>
#include <limits>
#include <string_view>

#include <gtest/gtest.h>

#include "flat/FlatCalls.h"

namespace {

using namespace std::string_view_literals;

using test::flatFailure;
using test::FlatText;
using test::flatText;

// ---- Whole texts ----------------------------------------------------------------------------------------------------

template <class Value>
using Parse = vorel_status (*)(const vorel_char16*, size_t, Value*);

template <class Value>
struct Parsed {
    std::wstring_view text;
    vorel_status status;
    Value value;  // ignored if the status is a failure, because then the output must not change
};

/// Checks a parser with a table, with texts and arguments that every parser rejects, and with a terminated text.
template <class Value, std::size_t Rows>
void expectParsed(Parse<Value> parse, const Parsed<Value> (&rows)[Rows]) {
    constexpr auto kBefore = static_cast<Value>(77);
    for (const Parsed<Value>& row : rows) {
        const FlatText text(row.text);
        Value value = kBefore;
        EXPECT_EQ(parse(text.data(), text.size(), &value), row.status) << testing::PrintToString(row.text);
        EXPECT_EQ(value, row.status == VOREL_OK ? row.value : kBefore) << testing::PrintToString(row.text);
    }
    for (const std::wstring_view text : {L""sv, L" "sv, L"x"sv, L"\0"sv, L"1\0"sv, L"1 1"sv, L"1x"sv, L"-"sv}) {
        const FlatText input(text);
        Value value = kBefore;
        EXPECT_EQ(parse(input.data(), input.size(), &value), VOREL_ERROR_INVALID_TEXT) << testing::PrintToString(text);
        EXPECT_EQ(value, kBefore);
    }
    Value value = kBefore;
    const vorel_char16 terminated[] = {'1', 0, '2'};
    EXPECT_EQ(parse(terminated, VOREL_ZERO_TERMINATED, &value), VOREL_OK);
    EXPECT_EQ(value, static_cast<Value>(1));
    EXPECT_EQ(parse(nullptr, 0, &value), VOREL_ERROR_INVALID_TEXT) << "an empty text contains no value";
    EXPECT_EQ(parse(nullptr, 1, &value), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(parse(nullptr, VOREL_ZERO_TERMINATED, &value), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(parse(terminated, std::size_t{VOREL_MOST_UNITS} + 1, &value), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(parse(terminated, VOREL_ZERO_TERMINATED - 1, &value), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(parse(terminated, 1, nullptr), VOREL_ERROR_INVALID_ARGUMENT);
}

TEST(FlatParse, ReadsWholeTextsAsInt32) {
    expectParsed<int32_t>(vorel_parse_int32, {
                                                 {L"42", VOREL_OK, 42},
                                                 {L" \t+42\r\n\u00A0", VOREL_OK, 42},
                                                 {L"-12.00", VOREL_OK, -12},
                                                 {L"12.", VOREL_OK, 12},
                                                 {L"0123", VOREL_OK, 123},
                                                 {L"2147483647", VOREL_OK, INT32_MAX},
                                                 {L"-2147483648", VOREL_OK, INT32_MIN},
                                                 {L"2147483648", VOREL_OK, INT32_MIN},  // wraps around
                                                 {L"12.5", VOREL_ERROR_INVALID_TEXT, 0},
                                                 {L"1e0", VOREL_ERROR_INVALID_TEXT, 0},
                                             });
}

TEST(FlatParse, ReadsWholeTextsAsUInt32) {
    expectParsed<uint32_t>(vorel_parse_uint32, {
                                                   {L"42", VOREL_OK, 42},
                                                   {L" +42.0 ", VOREL_OK, 42},
                                                   {L"4294967295", VOREL_OK, UINT32_MAX},
                                                   {L"4294967297", VOREL_OK, 1},  // wraps around
                                                   {L"-1", VOREL_ERROR_INVALID_TEXT, 0},
                                                   {L"-0", VOREL_ERROR_INVALID_TEXT, 0},
                                               });
}

TEST(FlatParse, ReadsWholeTextsAsInt64) {
    expectParsed<int64_t>(vorel_parse_int64, {
                                                 {L"-12.00", VOREL_OK, -12},
                                                 {L"9223372036854775807", VOREL_OK, INT64_MAX},
                                                 {L"-9223372036854775808", VOREL_OK, INT64_MIN},
                                                 {L"12.5", VOREL_ERROR_INVALID_TEXT, 0},
                                             });
}

TEST(FlatParse, ReadsWholeTextsAsUInt64) {
    expectParsed<uint64_t>(vorel_parse_uint64, {
                                                   {L"18446744073709551615", VOREL_OK, UINT64_MAX},
                                                   {L"18446744073709551616", VOREL_OK, 0},  // wraps around
                                                   {L" -5", VOREL_ERROR_INVALID_TEXT, 0},
                                               });
}

TEST(FlatParse, ReadsWholeTextsAsHex32) {
    expectParsed<uint32_t>(vorel_parse_hex32, {
                                                  {L"fF", VOREL_OK, 0xFF},
                                                  {L" DEADBEEF ", VOREL_OK, 0xDEADBEEF},
                                                  {L"00000001", VOREL_OK, 1},
                                                  {L"123456789", VOREL_ERROR_INVALID_TEXT, 0},
                                                  {L"0x1", VOREL_ERROR_INVALID_TEXT, 0},
                                                  {L"+1", VOREL_ERROR_INVALID_TEXT, 0},
                                              });
}

TEST(FlatParse, ReadsWholeTextsAsDouble) {
    expectParsed<double>(vorel_parse_double, {
                                                 {L"42", VOREL_OK, 42},
                                                 {L" -1.5e3 ", VOREL_OK, -1500},
                                                 {L"1e0", VOREL_OK, 1},
                                                 {L"0.1", VOREL_OK, 0.1},
                                                 {L"007", VOREL_OK, 7},
                                                 {L"-00.5", VOREL_OK, -0.5},
                                                 {L"1e999", VOREL_OK, std::numeric_limits<double>::infinity()},
                                                 {L"1e-999", VOREL_OK, 0},
                                                 {L"1e", VOREL_ERROR_INVALID_TEXT, 0},
                                                 {L"NaN", VOREL_ERROR_INVALID_TEXT, 0},
                                                 {L"1,5", VOREL_ERROR_INVALID_TEXT, 0},
                                             });
}

TEST(FlatParse, ReadsWholeTextsAsBoolean) {
    expectParsed<int32_t>(vorel_parse_boolean, {
                                                   {L"true", VOREL_OK, 1},
                                                   {L" YES", VOREL_OK, 1},
                                                   {L"t", VOREL_OK, 1},
                                                   {L"1", VOREL_OK, 1},
                                                   {L"False", VOREL_OK, 0},
                                                   {L"no", VOREL_OK, 0},
                                                   {L"n", VOREL_OK, 0},
                                                   {L"0", VOREL_OK, 0},
                                                   {L"on", VOREL_ERROR_INVALID_TEXT, 0},
                                                   {L"2", VOREL_ERROR_INVALID_TEXT, 0},
                                               });
}

// ---- Prefixes of texts ----------------------------------------------------------------------------------------------

template <class Value>
using Scan = vorel_status (*)(const vorel_char16*, size_t, Value*, size_t*);

template <class Value>
struct Scanned {
    std::wstring_view text;
    Value value;
    std::size_t used;
};

template <class Value, std::size_t Rows>
void expectScanned(Scan<Value> scan, const Scanned<Value> (&rows)[Rows]) {
    for (const Scanned<Value>& row : rows) {
        const FlatText text(row.text);
        auto value = static_cast<Value>(77);
        std::size_t used = 4711;
        EXPECT_EQ(scan(text.data(), text.size(), &value, &used), VOREL_OK);
        EXPECT_EQ(value, row.value) << testing::PrintToString(row.text);
        EXPECT_EQ(used, row.used) << testing::PrintToString(row.text);
    }
    const FlatText text(L"1");
    auto value = static_cast<Value>(77);
    std::size_t used = 4711;
    EXPECT_EQ(scan(text.data(), 1, nullptr, &used), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(scan(text.data(), 1, &value, nullptr), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(scan(nullptr, 1, &value, &used), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(scan(FlatText(L"1\0"sv).data(), 2, &value, &used), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(value, static_cast<Value>(77));
    EXPECT_EQ(used, 4711u);
    EXPECT_EQ(scan(nullptr, 0, &value, &used), VOREL_OK) << "the scan of an empty text must succeed";
    EXPECT_EQ(value, Value{});
    EXPECT_EQ(used, 0u);
}

TEST(FlatScan, ReadsIntegersAtTheStartOfTexts) {
    expectScanned<int32_t>(vorel_scan_int32, {{L"42 apples", 42, 3}, {L"-x", 0, 1}, {L"12.5", 12, 2}});
    expectScanned<uint32_t>(vorel_scan_uint32, {{L"4294967295;", UINT32_MAX, 10}, {L"-1", 0, 0}});
    expectScanned<int64_t>(vorel_scan_int64, {{L" -9223372036854775808 ", INT64_MIN, 22}, {L"x", 0, 0}});
    expectScanned<uint64_t>(vorel_scan_uint64, {{L"18446744073709551615", UINT64_MAX, 20}});
    expectScanned<uint32_t>(vorel_scan_hex32, {{L"1234567890", 0x12345678, 8}, {L"fg", 15, 1}});
}

TEST(FlatScan, ReadsDoublesAtTheStartOfTexts) {
    expectScanned<double>(vorel_scan_double, {{L"1.5e3x", 1500, 5}, {L"1e", 1, 2}, {L"2.5 ", 2.5, 3}});
}

TEST(FlatScan, ReadsBooleansAtTheStartOfTexts) {
    expectScanned<int32_t>(vorel_scan_boolean, {{L"on", 1, 2}, {L"off", 0, 3}, {L"10", 1, 2}, {L"maybe", 0, 0}});
}

// ---- Formatting -----------------------------------------------------------------------------------------------------

TEST(FlatFormat, WritesIntegersAsTexts) {
    const auto int64 = [](int64_t value) {
        return flatText([=](auto... out) { return vorel_format_int64(value, out...); });
    };
    const auto uint64 = [](uint64_t value) {
        return flatText([=](auto... out) { return vorel_format_uint64(value, out...); });
    };
    EXPECT_EQ(int64(0), L"0");
    EXPECT_EQ(int64(-42), L"-42");
    EXPECT_EQ(int64(INT64_MIN), L"-9223372036854775808");
    EXPECT_EQ(int64(INT64_MAX), L"9223372036854775807");
    EXPECT_EQ(uint64(UINT64_MAX), L"18446744073709551615");
}

TEST(FlatFormat, WritesDoublesAsTexts) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    const struct {
        double value;
        const wchar_t* plain;
        const wchar_t* json;
    } kRows[] = {
        {0.0, L"0", L"0"},
        {-0.0, L"0", L"0"},
        {123.456, L"123.456", L"123.456"},
        {1e20, L"1e+020", L"1.0e+020"},
        {0.05, L"5.e-002", L"5.0e-002"},
        {-kInfinite, L"-Inf", L"\"-Infinity\""},
        {std::nan(""), L"NaN", L"\"NaN\""},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(flatText([&](auto... out) { return vorel_format_double(row.value, VOREL_FORMAT_DEFAULT, out...); }),
                  row.plain);
        EXPECT_EQ(flatText([&](auto... out) { return vorel_format_double(row.value, VOREL_FORMAT_JSON, out...); }),
                  row.json);
    }
    for (const int32_t options : {-1, 2, 3}) {
        EXPECT_EQ(flatFailure<vorel_char16>([&](auto... out) { return vorel_format_double(1, options, out...); }),
                  VOREL_ERROR_INVALID_ARGUMENT);
    }
}

}  // namespace
