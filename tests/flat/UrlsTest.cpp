#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "flat/FlatCalls.h"

namespace {

using namespace std::string_view_literals;

using test::flatFailure;
using test::FlatText;
using test::flatText;

constexpr uint32_t kReserved = VOREL_URL_ESCAPE_RESERVED;
constexpr uint32_t kPlus = VOREL_URL_SPACE_AS_PLUS;
constexpr uint32_t kPlusAsSpace = VOREL_URL_PLUS_AS_SPACE;

TEST(FlatUrls, Encode) {
    const struct {
        std::wstring_view text;
        uint32_t flags;
        std::wstring_view escaped;
    } kRows[] = {
        {L"", 0, L""},
        {L"a/b c~", 0, L"a/b%20c%7E"},
        {L"a/b c~", kReserved | kPlus, L"a%2Fb+c%7E"},
        {L"a/b c", kReserved, L"a%2Fb%20c"},
        {L"a/b c", kPlus, L"a/b+c"},
        {L"\u00E9\U0001F600", 0, L"%C3%A9%F0%9F%98%80"},
    };
    for (const auto& row : kRows) {
        const FlatText text(row.text);
        EXPECT_EQ(flatText([&](auto... out) { return vorel_url_encode(text.data(), text.size(), row.flags, out...); }),
                  row.escaped);
    }
}

TEST(FlatUrls, EncodeForEachComponent) {
    const struct {
        int32_t component;
        std::wstring_view escaped;
    } kRows[] = {
        {VOREL_URL_PATH, L"a/b%3Fc=d&e%20f~"},
        {VOREL_URL_PATH_SEGMENT, L"a%2Fb%3Fc=d&e%20f~"},
        {VOREL_URL_QUERY, L"a/b?c=d&e+f~"},
        {VOREL_URL_QUERY_PARAMETER, L"a/b?c%3Dd%26e+f~"},
    };
    const FlatText text(L"a/b?c=d&e f~");
    for (const auto& row : kRows) {
        EXPECT_EQ(flatText([&](auto... out) {
                      return vorel_url_encode_component(text.data(), text.size(), row.component, out...);
                  }),
                  row.escaped);
    }
}

TEST(FlatUrls, Decode) {
    const struct {
        std::wstring_view escaped;
        uint32_t flags;
        std::wstring_view text;
    } kRows[] = {
        {L"", 0, L""},
        {L"%41%4g%", 0, L"A%4g%"},
        {L"a+b", 0, L"a+b"},
        {L"a+b", kPlusAsSpace, L"a b"},
        {L"%C3%A9%F0%9F%98%80", 0, L"\u00E9\U0001F600"},
        {L"\u00E9", 0, L"\u00E9"},
        {L"a%00b%00", 0, L"a\0b\0"sv},
    };
    for (const auto& row : kRows) {
        const FlatText escaped(row.escaped);
        EXPECT_EQ(
            flatText([&](auto... out) { return vorel_url_decode(escaped.data(), escaped.size(), row.flags, out...); }),
            row.text);
    }
}

TEST(FlatUrls, RejectInvalidArguments) {
    const FlatText text(L"a");
    const auto encode = [&](const FlatText& from, uint32_t flags) {
        return flatFailure<vorel_char16>(
            [&](auto... out) { return vorel_url_encode(from.data(), from.size(), flags, out...); });
    };
    const auto encodeComponent = [&](int32_t component) {
        return flatFailure<vorel_char16>(
            [&](auto... out) { return vorel_url_encode_component(text.data(), text.size(), component, out...); });
    };
    const auto decode = [&](const FlatText& from, uint32_t flags) {
        return flatFailure<vorel_char16>(
            [&](auto... out) { return vorel_url_decode(from.data(), from.size(), flags, out...); });
    };
    EXPECT_EQ(encode(text, kPlusAsSpace), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(encode(text, 8), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(encode(FlatText(L"a\0"sv), 0), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(encodeComponent(-1), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(encodeComponent(4), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(decode(text, kReserved), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(decode(FlatText(L"%FF"), 0), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(decode(FlatText(L"%E2%82"), 0), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(decode(FlatText(L"%41\0"sv), 0), VOREL_ERROR_INVALID_TEXT);
}

}  // namespace
