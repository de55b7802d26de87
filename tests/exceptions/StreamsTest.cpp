/// \file
/// Strings and exceptions in streams of the standard library.

#include "vorel/Streams.h"

#include <iomanip>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>

#include <gtest/gtest.h>

#include "support/TemporaryLog.h"
#include "support/Widths.h"
#include "vorel/core/BaseString.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using vorel::BaseString;
using vorel::Exception;
using vorel::MemoryException;

template <class Stream, class Value>
concept Writable = requires(Stream& stream, const Value& value) {
    stream << value;
};

// Writing a string to a stream of the other width must not compile, because such a stream would print a pointer, or
// nothing.
static_assert(Writable<std::ostream, BaseString<char>> && !Writable<std::ostream, BaseString<wchar_t>>);
static_assert(Writable<std::wostream, BaseString<wchar_t>> && !Writable<std::wostream, BaseString<char>>);
static_assert(Writable<std::ostream, MemoryException> && Writable<std::wostream, MemoryException>);

template <class T>
class Streams : public testing::Test {
protected:
    using Stream = std::basic_ostringstream<T>;

    static std::basic_string<T> text(std::string_view units) { return test::text<T>(units); }
};

TYPED_TEST_SUITE(Streams, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(Streams, StringIsWrittenLikeAStringView) {
    struct Case {
        std::string_view text;
        int width;
        char fill;
        bool left;
        std::string_view expected;
    };
    for (const Case& c : {
             Case{"abc", 0, ' ', false, "abc"},
             Case{"abc", 6, '*', false, "***abc"},
             Case{"abc", 6, '*', true, "abc***"},
             Case{"abc", 2, '*', false, "abc"},
             Case{"", 2, '*', false, "**"},
             Case{std::string_view("a\0b", 3), 4, '*', false, std::string_view("*a\0b", 4)},
         }) {
        const std::basic_string<TypeParam> units = this->text(c.text);
        const BaseString<TypeParam> string{std::basic_string_view<TypeParam>(units)};
        typename TestFixture::Stream stream;
        stream << std::setw(c.width) << std::setfill(static_cast<TypeParam>(c.fill))
               << (c.left ? std::left : std::right) << string << static_cast<TypeParam>('|');
        EXPECT_EQ(stream.str(), this->text(c.expected) + static_cast<TypeParam>('|'));
    }
}

TYPED_TEST(Streams, StringWithoutABufferWritesNothing) {
    typename TestFixture::Stream stream;
    EXPECT_TRUE(stream << BaseString<TypeParam>());
    EXPECT_TRUE(stream.str().empty());
}

TYPED_TEST(Streams, ExceptionWritesItsMessagesOldestFirst) {
    const test::TemporaryLog log;
    MemoryException one(3, 8);
    typename TestFixture::Stream stream;
    stream << one << static_cast<TypeParam>('|');
    one.appendMessage(L"second");
    one.appendMessage(L"");
    stream << std::setw(70) << static_cast<const Exception&>(one) << static_cast<TypeParam>('|') << Exception();
    EXPECT_EQ(stream.str(), this->text("No more memory is available: 3 objects of size 8 requested|"
                                       "  No more memory is available: 3 objects of size 8 requested; second; |"));
}

TYPED_TEST(Streams, WritingAnExceptionDoesNotChangeTheTextsItReturned) {
    const test::TemporaryLog log;
    Exception e(L"first");
    e.appendMessage(L"second");
    const wchar_t* const wide = e.getErrorMessageBlock(L"/");
    const char* const narrow = e.getCharErrorMessageBlock("/");
    typename TestFixture::Stream stream;
    stream << e;
    EXPECT_STREQ(wide, L"first/second");
    EXPECT_STREQ(narrow, "first/second");
}

TEST(Streams, NarrowTextOfAnExceptionIsUtf8) {
    const test::TemporaryLog log;
    const Exception e(L"%ls", L"gr\u00FCn \U0001F600");
    std::ostringstream narrow;
    std::wostringstream wide;
    narrow << e;
    wide << e;
    EXPECT_EQ(narrow.str(), "gr\xC3\xBCn \xF0\x9F\x98\x80");
    EXPECT_EQ(wide.str(), L"gr\u00FCn \U0001F600");
}

}  // namespace
