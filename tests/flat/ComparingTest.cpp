#include <string_view>

#include <gtest/gtest.h>

#include "flat/FlatCalls.h"

namespace {

using namespace std::string_view_literals;

using test::FlatText;

TEST(FlatComparing, OrdersTexts) {
    constexpr uint32_t kPlain = 0;
    const struct {
        std::wstring_view a;
        std::wstring_view b;
        uint32_t flags;
        int32_t order;
    } kRows[] = {
        {L"", L"", kPlain, 0},
        {L"", L"a", kPlain, -1},
        {L"b", L"a", kPlain, 1},
        {L"\uFFFF", L"a", kPlain, 1},
        {L"file9", L"file10", kPlain, 1},
        {L"file9", L"file10", VOREL_COMPARE_NUMERIC, -1},
        {L"007", L"7", VOREL_COMPARE_NUMERIC, 0},
        {L"FILE", L"file", kPlain, -1},
        {L"FILE", L"file", VOREL_COMPARE_IGNORE_CASE, 0},
        {L"a/b", L"a\\b", VOREL_COMPARE_SLASHES_EQUAL, 0},
        {L"file9", L"file10", VOREL_COMPARE_NUMERIC | VOREL_COMPARE_REVERSE, 1},
        {L"A/9", L"a\\10", VOREL_COMPARE_NUMERIC | VOREL_COMPARE_IGNORE_CASE | VOREL_COMPARE_SLASHES_EQUAL, -1},
    };
    for (const auto& row : kRows) {
        const FlatText a(row.a);
        const FlatText b(row.b);
        int32_t order = 77;
        EXPECT_EQ(vorel_compare(a.data(), a.size(), b.data(), b.size(), row.flags, &order), VOREL_OK);
        EXPECT_EQ(order, row.order) << testing::PrintToString(row.a) << ' ' << testing::PrintToString(row.b);
    }
}

TEST(FlatComparing, ComparesAVersionWithTheRequiredVersion) {
    const struct {
        std::wstring_view version;
        std::wstring_view required;
        int32_t isAtLeast;
    } kRows[] = {
        // If either text is empty, the result is 0.
        {L"10.2", L"9.9", 1}, {L"1.2.3", L"1.2", 1}, {L"1.2", L"1.2.0", 0},
        {L"1.2", L"1.3", 0},  {L"", L"1", 0},        {L"1", L"", 0},
    };
    for (const auto& row : kRows) {
        const FlatText version(row.version);
        const FlatText required(row.required);
        int32_t isAtLeast = 77;
        EXPECT_EQ(vorel_version_at_least(version.data(), version.size(), required.data(), required.size(), &isAtLeast),
                  VOREL_OK);
        EXPECT_EQ(isAtLeast, row.isAtLeast) << testing::PrintToString(row.version);
    }
}

TEST(FlatComparing, RejectsInvalidArguments) {
    const FlatText text(L"a");
    const FlatText zero(L"a\0b"sv);
    int32_t result = 77;
    for (const uint32_t flags : {0x008u, 0x200u, 0x80000000u}) {
        EXPECT_EQ(vorel_compare(text.data(), 1, text.data(), 1, flags, &result), VOREL_ERROR_INVALID_ARGUMENT);
    }
    EXPECT_EQ(vorel_compare(text.data(), 1, text.data(), 1, 0, nullptr), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(vorel_compare(nullptr, 1, text.data(), 1, 0, &result), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(vorel_compare(text.data(), 1, nullptr, 1, 0, &result), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(vorel_compare(zero.data(), 3, text.data(), 1, 0, &result), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(vorel_compare(text.data(), 1, zero.data(), 3, 0, &result), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(vorel_version_at_least(text.data(), 1, text.data(), 1, nullptr), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(vorel_version_at_least(nullptr, 1, text.data(), 1, &result), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(vorel_version_at_least(text.data(), 1, zero.data(), 3, &result), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(result, 77);
}

}  // namespace
