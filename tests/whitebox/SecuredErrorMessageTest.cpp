/// \file
/// The text for an error: a context, followed by the system's text.

#include <string>

#include <gtest/gtest.h>

#include <windows.h>

#include "secure/ErrorMessage.h"
#include "support/SystemText.h"

namespace {

TEST(GetErrorMessage, ConsistsOfTheContextAndTheSystemText) {
    vorel::BaseString<wchar_t> text(L"before");
    for (const DWORD error : {DWORD{ERROR_FILE_NOT_FOUND}, DWORD{ERROR_ACCESS_DENIED}, DWORD{0x80070005}}) {
        vorel::detail::GetErrorMessage(L"Context", static_cast<int>(error), text);
        EXPECT_EQ(text.view(), L"Context: " + test::systemText(error));
        ASSERT_FALSE(test::systemText(error).empty());
    }
    vorel::detail::GetErrorMessage(L"", ERROR_FILE_NOT_FOUND, text);
    EXPECT_EQ(text.view(), L": " + test::systemText(ERROR_FILE_NOT_FOUND));
    vorel::detail::GetErrorMessage(L"%s 100 %", 0, text);
    EXPECT_EQ(text.view(), L"%s 100 %: No Error") << "the context must not be used as a format";
}

}  // namespace
