/// \file
/// Compares the library's conversions with the conversions of the system, for every code page that has a name in the
/// library and exists in the system: each byte, each pair that begins with a lead byte, and each UTF-16 code unit.

#include <algorithm>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <windows.h>

#include "text/CodePageNames.h"
#include "vorel/text/CodePages.h"

namespace {

namespace util = vorel::util;

constexpr auto kNothing = static_cast<std::size_t>(-1);
constexpr int kCapacity = 32;

std::set<unsigned int> pagesOfTheSystem() {
    std::set<unsigned int> pages;
    for (const vorel::text::CodePageName& row : vorel::text::kCodePageNames) {
        if (IsValidCodePage(row.codePage)) {
            pages.insert(row.codePage);
        }
    }
    return pages;
}

/// Whether the library and the system decode `bytes` to the same units, or both fail.
bool decodesAlike(unsigned int page, const std::string& bytes) {
    wchar_t expected[kCapacity];
    wchar_t found[kCapacity];
    const int units = MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(bytes.size()),
                                          expected, kCapacity);
    const std::size_t count = util::iconv_to_wc(util::iconv_open_codepage(0, static_cast<int>(page)), bytes.data(),
                                                bytes.size(), found, kCapacity);
    return units == 0 ? count == kNothing
                      : count == static_cast<std::size_t>(units) && std::equal(found, found + count, expected);
}

bool encodesAlike(unsigned int page, wchar_t unit) {
    char expected[kCapacity];
    char found[kCapacity];
    const int bytes = WideCharToMultiByte(page, 0, &unit, 1, expected, kCapacity, nullptr, nullptr);
    const std::size_t count =
        util::iconv_from_wc(util::iconv_open_codepage(static_cast<int>(page), 0), &unit, 1, found, kCapacity, nullptr);
    return bytes == 0 ? count == kNothing
                      : count == static_cast<std::size_t>(bytes) && std::equal(found, found + count, expected);
}

std::string hex(unsigned int number) {
    char text[16];
    (void)std::snprintf(text, sizeof text, "%X", number);
    return text;
}

TEST(CodePageTables, ConvertEveryByteAndUnitLikeTheSystem) {
    const std::set<unsigned int> pages = pagesOfTheSystem();
    RecordProperty("pages", static_cast<int>(pages.size()));
    EXPECT_GT(pages.size(), 60u);
    for (const unsigned int page : pages) {
        for (unsigned int byte = 0; byte < 256; ++byte) {
            const auto first = static_cast<char>(byte);
            ASSERT_TRUE(decodesAlike(page, {first})) << page << ": " << hex(byte);
            for (unsigned int next = 0; next < 256 && IsDBCSLeadByteEx(page, static_cast<BYTE>(byte)); ++next) {
                ASSERT_TRUE(decodesAlike(page, {first, static_cast<char>(next)}))
                    << page << ": " << hex(byte) << hex(next);
            }
        }
        for (unsigned int unit = 0; unit < 0x10000; ++unit) {
            ASSERT_TRUE(encodesAlike(page, static_cast<wchar_t>(unit))) << page << ": " << hex(unit);
        }
    }
}

}  // namespace
