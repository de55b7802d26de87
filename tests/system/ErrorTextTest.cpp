#include "vorel/system/ErrorText.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include <windows.h>

namespace {

using vorel::BaseString;
using vorel::util::FormatErrorMsg;
using vorel::util::GetLastErrorMsg;

/// The system's text for `code` without white space at its ends. Empty if the system has no text for `code`.
std::wstring systemText(DWORD code) {
    wchar_t text[4096];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0x0400,
                                  text, 4096, nullptr);
    const auto isSpace = [](wchar_t unit) { return unit == L' ' || (unit >= L'\t' && unit <= L'\r'); };
    while (length != 0 && isSpace(text[length - 1])) {
        --length;
    }
    DWORD first = 0;
    while (first < length && isSpace(text[first])) {
        ++first;
    }
    return {text + first, text + length};
}

TEST(FormatErrorMsg, CodeZeroGivesNoError) {
    BaseString<wchar_t> text(L"old");
    const wchar_t* const result = FormatErrorMsg(0, text);
    EXPECT_TRUE(text == L"No Error");
    EXPECT_EQ(result, text.c_str());
}

TEST(FormatErrorMsg, ReturnsTheSystemTextWithoutItsLineBreak) {
    BaseString<wchar_t> text;
    const wchar_t* const result = FormatErrorMsg(ERROR_FILE_NOT_FOUND, text);
    ASSERT_FALSE(text.empty()) << "every system has a text for this code";
    EXPECT_EQ(result, text.c_str());
    EXPECT_EQ(text.view(), systemText(ERROR_FILE_NOT_FOUND));
    EXPECT_NE(text.view().back(), L'\n');
    EXPECT_NE(text.view().back(), L'\r');
}

TEST(FormatErrorMsg, AgreesWithTheSystemForCodesBelow4000) {
    BaseString<wchar_t> text;
    for (int code = 1; code < 4000; ++code) {
        const wchar_t* const result = FormatErrorMsg(code, text);
        ASSERT_EQ(text.view(), systemText(static_cast<DWORD>(code))) << code;
        ASSERT_EQ(result, text.view().data()) << code;
    }
}

TEST(FormatErrorMsg, AcceptsCodesWithTheHighBitSet) {
    BaseString<wchar_t> text;
    FormatErrorMsg(static_cast<int>(0x80070005), text);  // "access denied" as an HRESULT
    EXPECT_EQ(text.view(), systemText(0x80070005));
}

TEST(FormatErrorMsg, CodeWithoutATextGivesAnEmptyText) {
    ASSERT_EQ(systemText(0x2FFFFFFF), L"") << "the test needs a code for which the system has no text";
    BaseString<wchar_t> text(L"old");
    EXPECT_EQ(std::wstring(FormatErrorMsg(0x2FFFFFFF, text)), L"");
    EXPECT_TRUE(text.empty());
    BaseString<wchar_t> fresh;
    EXPECT_EQ(std::wstring(FormatErrorMsg(0x2FFFFFFF, fresh)), L"");
}

TEST(GetLastErrorMsg, WithoutAnErrorTheTextIsUnchanged) {
    BaseString<wchar_t> text(L"as it was");
    SetLastError(0);
    EXPECT_FALSE(GetLastErrorMsg(text));
    EXPECT_TRUE(text == L"as it was");
}

TEST(GetLastErrorMsg, ReturnsTheTextOfTheLastError) {
    for (const DWORD code : {DWORD{ERROR_FILE_NOT_FOUND}, DWORD{ERROR_ACCESS_DENIED}, DWORD{0x2FFFFFFF}}) {
        BaseString<wchar_t> text(L"old");
        SetLastError(code);
        const bool known = GetLastErrorMsg(text);
        EXPECT_TRUE(known) << code;
        EXPECT_EQ(text.view(), systemText(code)) << code;
    }
}

}  // namespace
