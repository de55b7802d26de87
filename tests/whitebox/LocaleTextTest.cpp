/// \file
/// Conversion with the runtime's locale, and the texts for failed conversions.

#include "exceptions/LocaleText.h"

#include <algorithm>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "support/ImportHook.h"
#include "support/LocaleSet.h"

namespace {

using test::LocaleSet;
using vorel::BaseString;
using vorel::detail::mbs2wcs;
using vorel::detail::wcs2mbs;

std::wstring widened(const char* source) {
    BaseString<wchar_t> target(L"text before");
    mbs2wcs(source, target);
    return std::wstring(target.view());
}

std::string narrowed(const wchar_t* source) {
    BaseString<char> target("text before");
    wcs2mbs(source, target);
    return std::string(target.view());
}

TEST(LocaleText, NullAndEmptyTextsBecomeTheEmptyText) {
    EXPECT_EQ(widened(nullptr), L"");
    EXPECT_EQ(widened(""), L"");
    EXPECT_EQ(narrowed(nullptr), "");
    EXPECT_EQ(narrowed(L""), "");
}

TEST(LocaleText, AsciiOfAnyLengthIsUnchanged) {
    for (const std::size_t length : {1u, 2u, 7u, 8u, 255u, 256u, 100000u}) {
        EXPECT_EQ(widened(std::string(length, 'a').c_str()), std::wstring(length, L'a'));
        EXPECT_EQ(narrowed(std::wstring(length, L'a').c_str()), std::string(length, 'a'));
    }
}

TEST(LocaleText, CLocaleMapsEachByteToTheUnitWithItsValue) {
    const LocaleSet locale("C");
    EXPECT_EQ(widened("\x80\xE9\xFF"), L"\x80\xE9\xFF");
    EXPECT_EQ(narrowed(L"\x80\xE9\xFF"), "\x80\xE9\xFF");
}

TEST(LocaleText, UnconvertibleTextBecomesTheErrorText) {
    const LocaleSet locale("C");
    EXPECT_EQ(narrowed(L"\x4E00"), "Error in text conversion");
    EXPECT_EQ(narrowed(L"convertible until here\x0100"), "Error in text conversion");
}

// The hooks make the source longer after the library has measured its length. The library's buffer has space for the
// measured length only.
TEST(LocaleText, TextThatGrowsWhileItIsConvertedIsTruncated) {
    const LocaleSet locale("C");
    {
        char source[40] = {};
        std::fill_n(source, 15, '\xE4');
        BaseString<wchar_t> target;
        const test::ImportHook<importedMbstowcs> convert([&](wchar_t* to, const char* from, std::size_t capacity) {
            std::fill_n(source, std::size(source) - 1, '\xE4');
            return convert.original(to, from, capacity);
        });
        mbs2wcs(source, target);
        EXPECT_EQ(target.capacity(), 16u);
        EXPECT_EQ(target.view(), std::wstring(15, L'\xE4'));
    }
    {
        wchar_t source[40] = L"\xE4\xE4\xE4";
        BaseString<char> target;
        const test::ImportHook<importedWcstombs> convert([&](char* to, const wchar_t* from, std::size_t capacity) {
            std::fill_n(source, std::size(source) - 1, L'\xE4');
            return convert.original(to, from, capacity);
        });
        wcs2mbs(source, target);
        EXPECT_EQ(target.view(), std::string(12, '\xE4'));  // the buffer has four bytes for each measured unit
    }
}

TEST(LocaleText, MultibyteCodePageConvertsInBothDirections) {
    const LocaleSet locale(".932");
    if (!locale.isSet()) {
        GTEST_SKIP() << "this system has no code page 932";
    }
    EXPECT_EQ(widened("\x88\xEA!"), L"\x4E00!");
    EXPECT_EQ(narrowed(L"\x4E00\x4E00!"), "\x88\xEA\x88\xEA!");
    EXPECT_EQ(widened("\x95\\a"), L"\x8868\x61") << "the second byte is the backslash of ASCII";
    EXPECT_EQ(widened("a lead byte at the end \x88"), L"Error in text conversion");
}

TEST(LocaleText, Utf8LocaleEncodesAUnitInUpToThreeBytes) {
    const LocaleSet locale(".UTF8");
    if (!locale.isSet()) {
        GTEST_SKIP() << "this runtime has no UTF-8 locale";
    }
    EXPECT_EQ(narrowed(L"\x20AC\x20AC\x20AC"), "\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC");
    EXPECT_EQ(widened("\xE2\x82\xAC"), L"\x20AC");
    EXPECT_EQ(widened("\xFF"), L"Error in text conversion");
}

}  // namespace
