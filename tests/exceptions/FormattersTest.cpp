/// \file
/// Strings and exceptions in `std::format`. The file has cases only if the standard library has `std::format`, which
/// the library of GCC 12 does not have. When GCC 12 builds the library, another test compiles
/// compile_fail/Formatters.cpp, which uses the formatters, with another standard library.

#include "vorel/Formatters.h"

#include <gtest/gtest.h>

#if __has_include(<format>)

#include <string>
#include <string_view>

#include "support/TemporaryLog.h"
#include "support/Widths.h"
#include "vorel/core/BaseString.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using vorel::BaseString;
using vorel::Exception;
using vorel::MemoryException;

template <class T>
std::basic_string<T> formatted(std::string_view format, const auto& value) {
    const std::basic_string<T> units = test::text<T>(format);
    if constexpr (sizeof(T) == sizeof(char)) {
        return std::vformat(units, std::make_format_args(value));
    } else {
        return std::vformat(units, std::make_wformat_args(value));
    }
}

template <class T>
class Formatters : public testing::Test {};

TYPED_TEST_SUITE(Formatters, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(Formatters, StringIsFormattedLikeAStringView) {
    struct Case {
        std::string_view format;
        std::string_view text;
        std::string_view expected;
    };
    for (const Case& c : {
             Case{"{}", "abc", "abc"},
             Case{"<{:>6}>", "abc", "<   abc>"},
             Case{"{:*<6}", "abc", "abc***"},
             Case{"{:.2}", "abc", "ab"},
             Case{"<{}>", "", "<>"},
             Case{"{}", std::string_view("a\0b", 3), std::string_view("a\0b", 3)},
         }) {
        const std::basic_string<TypeParam> units = test::text<TypeParam>(c.text);
        const BaseString<TypeParam> string{std::basic_string_view<TypeParam>(units)};
        EXPECT_EQ(formatted<TypeParam>(c.format, string), test::text<TypeParam>(c.expected)) << c.format;
    }
    EXPECT_EQ(formatted<TypeParam>("<{}>", BaseString<TypeParam>()), test::text<TypeParam>("<>"));
}

TYPED_TEST(Formatters, ExceptionIsFormattedAsItsMessagesOldestFirst) {
    const test::TemporaryLog log;
    MemoryException e(3, 8);
    e.appendMessage(L"second");
    const std::string_view expected = "No more memory is available: 3 objects of size 8 requested; second";
    EXPECT_EQ(formatted<TypeParam>("{}", e), test::text<TypeParam>(expected));
    EXPECT_EQ(formatted<TypeParam>("{:.7}|", static_cast<const Exception&>(e)), test::text<TypeParam>("No more|"));
    EXPECT_EQ(formatted<TypeParam>("<{}>", Exception()), test::text<TypeParam>("<>"));
}

TEST(Formatters, NarrowTextOfAnExceptionIsUtf8) {
    const test::TemporaryLog log;
    const Exception e(L"%ls", L"gr\u00FCn \U0001F600");
    EXPECT_EQ(std::format("{}", e), "gr\xC3\xBCn \xF0\x9F\x98\x80");
    EXPECT_EQ(std::format(L"{}", e), L"gr\u00FCn \U0001F600");
}

}  // namespace

#endif
