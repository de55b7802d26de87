/// \file
/// Tests of the output that reports whether a default character was used. For some code pages, the system does not
/// support this output, and rejects calls that request it. Microsoft's documentation (page "WideCharToMultiByte
/// function") says so for UTF-7 and UTF-8; for the other code pages, the rejection is undocumented.

#include "vorel/text/CodePages.h"

#include <cerrno>
#include <cstddef>

#include <gtest/gtest.h>
#include <windows.h>

#include "support/Wine.h"

namespace {

namespace util = vorel::util;

constexpr auto kNothing = static_cast<std::size_t>(-1);

/// The code pages for UTF-7, UTF-8, ISO 2022, HZ, GB18030 and ISCII.
const int kPages[] = {65000, 65001, 50220, 50221, 50222, 50225, 50227, 52936, 54936, 57002,
                      57003, 57004, 57005, 57006, 57007, 57008, 57009, 57010, 57011};

TEST(UsedDefault, RequestFailsForPagesThatDoNotSupportIt) {
    if (test::wineVersion()) {
        GTEST_SKIP() << "Wine accepts the request for page 65001";
    }
    for (const int page : kPages) {
        if (!IsValidCodePage(static_cast<UINT>(page))) {
            continue;
        }
        EXPECT_FALSE(util::iconv_isCheckDefaultValid(page)) << page;
        char out[16];
        bool used = true;
        errno = 0;
        EXPECT_EQ(util::iconv_from_wc(page, L"a", 1, out, sizeof out, &used), kNothing) << page;
        EXPECT_EQ(errno, EINVAL) << page;
        EXPECT_TRUE(used) << page << ": a failing call must not change `used`";
        EXPECT_GE(util::iconv_from_wc(page, L"a", 1, out, sizeof out, nullptr), 1u) << page;
    }
}

TEST(UsedDefault, IsReportedForPagesThatSupportIt) {
    struct Case {
        int page;
        const wchar_t* text;
        bool used;
    };
    // Windows-1252, Latin 1, Japanese and simplified Chinese, each with a character that the page has and a character
    // that the page lacks.
    for (const Case& c : {Case{1252, L"\u20AC", false}, Case{1252, L"\u4E00", true}, Case{28591, L"\u00E9", false},
                          Case{28591, L"\u4E00", true}, Case{932, L"\u4E00", false}, Case{932, L"\u05D0", true},
                          Case{936, L"\u4E00", false}, Case{936, L"\u05D0", true}}) {
        if (!IsValidCodePage(static_cast<UINT>(c.page))) {
            continue;
        }
        EXPECT_TRUE(util::iconv_isCheckDefaultValid(c.page)) << c.page;
        char out[16];
        bool used = !c.used;
        EXPECT_NE(util::iconv_from_wc(c.page, c.text, 1, out, sizeof out, &used), kNothing) << c.page;
        EXPECT_EQ(used, c.used) << c.page;
    }
}

}  // namespace
