#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "flat/FlatCalls.h"

namespace {

using namespace std::string_view_literals;

using test::FlatBytes;
using test::flatBytes;
using test::flatFailure;
using test::FlatText;
using test::flatText;

constexpr int32_t kLatin1 = 28591;
constexpr int32_t kWindows1252 = 1252;
constexpr int32_t kUtf8 = 65001;

TEST(FlatCodePages, AreFoundByName) {
    const struct {
        std::wstring_view name;
        vorel_status status;
        int32_t codePage;
    } kRows[] = {
        {L"latin1", VOREL_OK, kLatin1},
        {L"LATIN1", VOREL_OK, kLatin1},
        {L"utf-8", VOREL_OK, kUtf8},
        {L"", VOREL_ERROR_UNKNOWN_NAME, -7},
        {L"latin", VOREL_ERROR_UNKNOWN_NAME, -7},
        {L"latin1 ", VOREL_ERROR_UNKNOWN_NAME, -7},
        {L"latin\u00E9", VOREL_ERROR_UNKNOWN_NAME, -7},
        {L"latin1\0"sv, VOREL_ERROR_INVALID_TEXT, -7},
    };
    for (const auto& row : kRows) {
        const FlatText name(row.name);
        int32_t codePage = -7;
        EXPECT_EQ(vorel_code_page_by_name(name.data(), name.size(), &codePage), row.status);
        EXPECT_EQ(codePage, row.codePage) << testing::PrintToString(row.name);
    }
    EXPECT_EQ(vorel_code_page_by_name(FlatText(L"utf-8").data(), 5, nullptr), VOREL_ERROR_INVALID_ARGUMENT);
}

TEST(FlatCodePages, ConvertInBothDirections) {
    const struct {
        int32_t codePage;
        std::string_view bytes;
        std::wstring_view text;
    } kRows[] = {
        {kLatin1, "", L""},
        {kLatin1, "caf\xE9", L"caf\u00E9"},
        {kLatin1, "a\0b"sv, L"a\0b"sv},
        {kWindows1252, "\x80 5", L"\u20AC 5"},
        {kUtf8, "\xC3\xA9\xF0\x9F\x98\x80", L"\u00E9\U0001F600"},
    };
    for (const auto& row : kRows) {
        const FlatBytes bytes(row.bytes);
        const FlatText text(row.text);
        EXPECT_EQ(flatText([&](auto... out) {
                      return vorel_code_page_to_utf16(row.codePage, bytes.data(), bytes.size(), out...);
                  }),
                  row.text);
        EXPECT_EQ(flatBytes([&](auto... out) {
                      return vorel_utf16_to_code_page(row.codePage, text.data(), text.size(), out..., nullptr);
                  }),
                  row.bytes);
    }
}

TEST(FlatCodePages, ReportWhetherACharacterWasReplaced) {
    const struct {
        std::wstring_view text;
        int32_t replaced;
    } kRows[] = {{L"", 0}, {L"caf\u00E9", 0}, {L"\u4E00", 1}};
    for (const auto& row : kRows) {
        const FlatText text(row.text);
        char bytes[8];
        std::size_t size = 0;
        int32_t replaced = 7;
        EXPECT_EQ(vorel_utf16_to_code_page(kWindows1252, text.data(), text.size(), bytes, 8, &size, &replaced),
                  VOREL_OK);
        EXPECT_EQ(replaced, row.replaced);
        replaced = 7;
        if (size != 0) {
            EXPECT_EQ(vorel_utf16_to_code_page(kWindows1252, text.data(), text.size(), bytes, 0, &size, &replaced),
                      VOREL_ERROR_BUFFER_TOO_SMALL);
            EXPECT_EQ(replaced, 7) << "`replaced` must not change, because nothing was converted";
        }
    }
}

TEST(FlatCodePages, ReportMinusOneWhereTheSystemCannotReportReplacements) {
    constexpr int32_t kUtf7 = 65000;
    const FlatText text(L"a");
    char bytes[8] = {};
    std::size_t size = 0;
    int32_t replaced = 7;
    EXPECT_EQ(vorel_utf16_to_code_page(kUtf7, text.data(), text.size(), bytes, 8, &size, &replaced), VOREL_OK);
    EXPECT_STREQ(bytes, "a");
    EXPECT_EQ(replaced, -1);
}

TEST(FlatCodePages, RejectInvalidBytes) {
    const FlatBytes bytes("a\xC3");
    EXPECT_EQ(flatFailure<vorel_char16>(
                  [&](auto... out) { return vorel_code_page_to_utf16(kUtf8, bytes.data(), bytes.size(), out...); }),
              VOREL_ERROR_INVALID_TEXT);
}

TEST(FlatCodePages, RejectNumbersThatAreNotCodePagesOfTheSystem) {
    const struct {
        int32_t codePage;
        vorel_status status;
    } kRows[] = {
        {0, VOREL_ERROR_INVALID_ARGUMENT},         {-1, VOREL_ERROR_INVALID_ARGUMENT},
        {65535, VOREL_ERROR_INVALID_ARGUMENT},     {65536 + 1252, VOREL_ERROR_INVALID_ARGUMENT},
        {INT32_MAX, VOREL_ERROR_INVALID_ARGUMENT}, {4711, VOREL_ERROR_UNSUPPORTED},
    };
    const FlatBytes bytes("a");
    const FlatText text(L"a");
    for (const auto& row : kRows) {
        EXPECT_EQ(flatFailure<vorel_char16>([&](auto... out) {
                      return vorel_code_page_to_utf16(row.codePage, bytes.data(), bytes.size(), out...);
                  }),
                  row.status)
            << row.codePage;
        EXPECT_EQ(flatFailure<unsigned char>([&](auto... out) {
                      return vorel_utf16_to_code_page(row.codePage, text.data(), text.size(), out..., nullptr);
                  }),
                  row.status)
            << row.codePage;
    }
}

}  // namespace
