#include <gtest/gtest.h>

#include <windows.h>

#include "flat/FlatCalls.h"
#include "vorel/system/ErrorText.h"

namespace {

using test::flatText;

TEST(FlatErrorText, ReturnsTheTextOfTheSystemForACode) {
    const auto text = [](int32_t code) {
        return flatText([=](auto... out) { return vorel_system_error_text(code, out...); });
    };
    EXPECT_EQ(text(0), L"No Error");
    vorel::BaseString<wchar_t> expected;
    vorel::util::FormatErrorMsg(ERROR_FILE_NOT_FOUND, expected);
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(text(ERROR_FILE_NOT_FOUND), expected.view());
    EXPECT_EQ(text(0x2FFFFFFF), L"");
}

}  // namespace
