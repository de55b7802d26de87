/// \file
/// Plain formats, which the library renders without the runtime: which formats are plain, the texts of plain formats,
/// and buffers of every size up to and above the size of the text.

#include "core/PlainFormat.h"

#include <array>
#include <climits>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/GuardedBuffer.h"
#include "support/PageEdge.h"
#include "support/RandomInputs.h"
#include "support/Widths.h"

namespace {

using test::GuardedBuffer;
using vorel::baseutil::renderPlainFormat;

/// An argument of a format: an integer, a text with the character type of the format (`own`), a narrow text, or a wide
/// text.
struct Argument {
    constexpr Argument() = default;
    // NOLINTBEGIN(google-explicit-constructor): the tables list plain values
    constexpr Argument(int value) : slot(static_cast<std::uint64_t>(value)) {}
    constexpr Argument(unsigned int value) : slot(value) {}
    constexpr Argument(long long value) : slot(static_cast<std::uint64_t>(value)) {}
    constexpr Argument(unsigned long long value) : slot(value) {}
    constexpr Argument(const char* text) : narrow(text) {}
    constexpr Argument(const wchar_t* text) : wide(text) {}
    constexpr Argument(std::string_view text) : own(text) {}
    // NOLINTEND(google-explicit-constructor)

    std::uint64_t slot = 0;
    const char* narrow = nullptr;
    const wchar_t* wide = nullptr;
    std::string_view own;
};

using Arguments = std::array<Argument, 3>;

/// The argument list of a call. On 64-bit Windows it consists of 8-byte slots.
template <class T>
class ArgumentList {
public:
    explicit ArgumentList(const Arguments& arguments) {
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            const Argument& argument = arguments[i];
            m_own[i] = test::text<T>(argument.own);
            m_slots[i] = argument.own.data() ? address(m_own[i].c_str())
                         : argument.narrow   ? address(argument.narrow)
                         : argument.wide     ? address(argument.wide)
                                             : argument.slot;
        }
    }

    va_list list() { return reinterpret_cast<va_list>(m_slots.data()); }

private:
    static std::uint64_t address(const void* text) { return reinterpret_cast<std::uintptr_t>(text); }

    std::array<std::basic_string<T>, 3> m_own;
    std::array<std::uint64_t, 3> m_slots = {};
};

int renderByRuntime(char* buffer, std::size_t size, const char* format, va_list args) {
    return _vsnprintf(buffer, size, format, args);
}

int renderByRuntime(wchar_t* buffer, std::size_t size, const wchar_t* format, va_list args) {
    return _vsnwprintf(buffer, size, format, args);
}

constexpr Argument kNull{0ull};
constexpr Argument kMinusOne{-1ll};

struct Case {
    const char* format;
    Arguments arguments;
    std::string_view expected;
};

constexpr Case kPlain[] = {
    {"", {}, ""},
    {"text", {}, "text"},
    {"\xC4\x80\xFF", {}, "\xC4\x80\xFF"},
    {"100%%", {}, "100%"},
    {"%%%d%%", {7}, "%7%"},
    {"%d", {0}, "0"},
    {"%i", {-3}, "-3"},
    {"%d", {INT_MAX}, "2147483647"},
    {"%d", {INT_MIN}, "-2147483648"},
    {"%ld", {-123456}, "-123456"},
    {"%li", {42}, "42"},
    {"%d", {0x7FFFFFFF00000007ll}, "7"},  // the runtime ignores the upper half of the slot
    {"%u", {kMinusOne}, "4294967295"},
    {"%lu", {kMinusOne}, "4294967295"},
    {"%x|%X", {kMinusOne, 0xABCDEFu}, "ffffffff|ABCDEF"},
    {"%lx|%lX", {0x1Fu, 0x1Fu}, "1f|1F"},
    {"%x", {0}, "0"},
    {"%x %x %x", {0xFu, 0x10u, 0x123456u}, "f 10 123456"},
    {"%lld", {LLONG_MIN}, "-9223372036854775808"},
    {"%I64d", {LLONG_MAX}, "9223372036854775807"},
    {"%lli|%zd", {-5ll, 5ll}, "-5|5"},
    {"%llu", {ULLONG_MAX}, "18446744073709551615"},
    {"%zu|%I64u", {4294967296ull, 10000000000000000ull}, "4294967296|10000000000000000"},
    {"%llx|%I64X|%zx", {ULLONG_MAX, 0x8000000000000000ull, 0ull}, "ffffffffffffffff|8000000000000000|0"},
    {"%s", {std::string_view("")}, ""},
    {"%s: attempt %d of %u", {std::string_view("Parser::run"), 2, 10u}, "Parser::run: attempt 2 of 10"},
    {"[%s]", {std::string_view("15 characters..")}, "[15 characters..]"},
    {"[%s]", {std::string_view("16 characters...")}, "[16 characters...]"},
    {"[%s]", {std::string_view("17 characters....")}, "[17 characters....]"},
    {"[%s]", {std::string_view("a\xE4\xF6 b\x80\xFF")}, "[a\xE4\xF6 b\x80\xFF]"},
    {"%s", {std::string_view("%d%s%n is not a format here")}, "%d%s%n is not a format here"},
    {"%hs|%ls", {"narrow", L"wide"}, "narrow|wide"},
    {"%hs|%ls", {"exactly 16 units", L"more than 16 units"}, "exactly 16 units|more than 16 units"},
    {"%hs|%ls", {"\x01\x7F", L"\x01\x7F"}, "\x01\x7F|\x01\x7F"},
    {"%s|%hs|%ls", {kNull, kNull, kNull}, "(null)|(null)|(null)"},
};

constexpr Case kLeftToTheRuntime[] = {
    {"%5d", {1}, ""},
    {"%05d", {1}, ""},
    {"%-d", {1}, ""},
    {"%+d", {1}, ""},
    {"% d", {1}, ""},
    {"%#x", {1}, ""},
    {"%.2s", {std::string_view("abc")}, ""},
    {"%*d", {5, 1}, ""},
    {"%c", {'c'}, ""},
    {"%p", {kNull}, ""},
    {"%o", {8}, ""},
    {"%n", {kNull}, ""},
    {"%hd", {70000}, ""},
    {"%hu", {70000}, ""},
    {"%hx", {70000}, ""},
    {"%hhd", {300}, ""},
    {"%hhs", {kNull}, ""},
    {"%jd", {1ll}, ""},
    {"%td", {1ll}, ""},
    {"%I32d", {1}, ""},
    {"%Id", {1ll}, ""},
    {"%lls", {kNull}, ""},
    {"%zs", {kNull}, ""},
    {"%ws", {kNull}, ""},
    {"%S", {kNull}, ""},
    {"%Z", {kNull}, ""},
    {"%l%", {}, ""},
    {"%h%", {}, ""},
    {"%", {}, ""},
    {"text %", {}, ""},
    {"%l", {}, ""},
    {"%ll", {}, ""},
    {"%I6", {}, ""},
    {"%\xE4", {}, ""},
};

template <class T>
class PlainFormat : public ::testing::Test {
protected:
    static std::basic_string<T> text(std::string_view units) { return test::text<T>(units); }
};

TYPED_TEST_SUITE(PlainFormat, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(PlainFormat, RendersOnlyIfTextAndTerminatorFitTheBuffer) {
    for (const Case& c : kPlain) {
        const auto format = this->text(c.format);
        const auto expected = this->text(c.expected);
        ArgumentList<TypeParam> arguments(c.arguments);
        for (std::size_t size = 0; size <= expected.size() + 24; ++size) {
            GuardedBuffer<TypeParam> buffer(size);
            const int written = renderPlainFormat(buffer.data(), size, format.c_str(), arguments.list());
            if (size <= expected.size()) {
                EXPECT_EQ(written, -1) << c.format << ", size " << size;
                continue;
            }
            ASSERT_EQ(written, static_cast<int>(expected.size())) << c.format << ", size " << size;
            EXPECT_TRUE(std::basic_string_view<TypeParam>(buffer.data(), expected.size()) == expected)
                << c.format << ", size " << size;
            EXPECT_EQ(buffer.data()[expected.size()], TypeParam{}) << c.format << ", size " << size;
        }
    }
}

TYPED_TEST(PlainFormat, RuntimeRendersTheExpectedTexts) {
    for (const Case& c : kPlain) {
        ArgumentList<TypeParam> arguments(c.arguments);
        TypeParam buffer[100];
        const int written = renderByRuntime(buffer, 100, this->text(c.format).c_str(), arguments.list());
        EXPECT_TRUE(std::basic_string_view<TypeParam>(buffer, static_cast<std::size_t>(written)) ==
                    this->text(c.expected))
            << c.format;
    }
}

TYPED_TEST(PlainFormat, LeavesFormatsThatAreNotPlainToTheRuntime) {
    for (const Case& c : kLeftToTheRuntime) {
        ArgumentList<TypeParam> arguments(c.arguments);
        GuardedBuffer<TypeParam> buffer(100);
        EXPECT_EQ(renderPlainFormat(buffer.data(), 100, this->text(c.format).c_str(), arguments.list()), -1)
            << c.format;
    }
}

TYPED_TEST(PlainFormat, LeavesNullFormatsAndNullBuffersToTheRuntime) {
    ArgumentList<TypeParam> arguments({});
    TypeParam buffer[4];
    const TypeParam* const noFormat = nullptr;
    TypeParam* const noBuffer = nullptr;
    EXPECT_EQ(renderPlainFormat(buffer, 4, noFormat, arguments.list()), -1);
    EXPECT_EQ(renderPlainFormat(noBuffer, 4, this->text("a").c_str(), arguments.list()), -1);
}

// The runtime uses the locale to convert text that is not ASCII.
TEST(PlainFormatOfNarrowText, LeavesWideTextToTheRuntimeUnlessItIsAscii) {
    for (const wchar_t* const text : {L"\x80", L"a\xE4", L"\x4E00", L"exactly 16 units\xFF"}) {
        ArgumentList<char> arguments({text});
        char buffer[100];
        EXPECT_EQ(renderPlainFormat(buffer, 100, "%ls", arguments.list()), -1);
    }
}

TEST(PlainFormatOfWideText, LeavesNarrowTextToTheRuntimeUnlessItIsAscii) {
    for (const char* const text : {"\x80", "a\xE4", "exactly 16 units\xFF"}) {
        ArgumentList<wchar_t> arguments({text});
        wchar_t buffer[100];
        EXPECT_EQ(renderPlainFormat(buffer, 100, L"%hs", arguments.list()), -1);
    }
}

TEST(PlainFormatOfWideText, ComparesWholeUnitsNotOnlyTheirLowBytes) {
    wchar_t buffer[100];
    ArgumentList<wchar_t> arguments({1});
    // The low bytes of U+0125 and U+0164 are '%' and 'd'.
    EXPECT_EQ(renderPlainFormat(buffer, 100, L"\x0125\x0164", arguments.list()), 2);
    EXPECT_STREQ(buffer, L"\x0125\x0164");
    EXPECT_EQ(renderPlainFormat(buffer, 100, L"%\x0164", arguments.list()), -1);
}

// The format, the text argument and the buffer each end at an inaccessible page.
TYPED_TEST(PlainFormat, ReadsNothingAfterTheTerminators) {
    test::PageEdge<TypeParam> format(100);
    test::PageEdge<TypeParam> argument(100);
    test::PageEdge<TypeParam> buffer(200);
    for (std::size_t length = 0; length <= 40; ++length) {
        const std::basic_string<TypeParam> units(length, TypeParam{'x'});
        const TypeParam* const text = argument.placeAtEnd({units.c_str(), length + 1});
        const auto formatText = units + this->text("%s");
        const auto slot = reinterpret_cast<std::uintptr_t>(text);
        TypeParam* const out = buffer.lastElements(2 * length + 1);
        EXPECT_EQ(renderPlainFormat(out, 2 * length + 1, format.placeAtEnd({formatText.c_str(), formatText.size() + 1}),
                                    reinterpret_cast<va_list>(const_cast<std::uint64_t*>(&slot))),
                  static_cast<int>(2 * length));
        EXPECT_EQ(out, units + units);
    }
}

// Formats of random conversions with random prefixes. The text of a plain format must be equal to the runtime's text.
TYPED_TEST(PlainFormat, RandomFormats_AreRenderedAsByTheRuntime) {
    int plain = 0;
    test::forEachRandomInput(20000, [&plain, this](test::RandomText& random) {
        constexpr std::string_view kPrefixes[] = {"", "", "", "l", "ll", "I64", "z", "h", "5"};
        std::string format;
        Arguments arguments;
        std::vector<std::string> texts(arguments.size());
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            format += random.from("ab \xE4", random.below(3));
            if (random.oneIn(4)) {
                format += "%%";
            }
            if (random.oneIn(3)) {
                texts[i] = random.from(random.oneIn(2) ? "xyz" : "x\xE4%\xFF", random.below(40));
                arguments[i] = random.oneIn(9) ? kNull : Argument(std::string_view(texts[i]));
                format += "%s";
            } else {
                arguments[i] = Argument(random.bits() >> random.below(64));
                format += '%';
                format += kPrefixes[random.below(std::size(kPrefixes))];
                format += random.oneOf("diuxX");
            }
        }
        ArgumentList<TypeParam> list(arguments);
        const auto wanted = this->text(format);
        TypeParam ours[300];
        const int written = renderPlainFormat(ours, 300, wanted.c_str(), list.list());
        if (written < 0) {
            return;
        }
        ++plain;
        TypeParam expected[300];
        ASSERT_EQ(written, renderByRuntime(expected, 300, wanted.c_str(), list.list())) << format;
        EXPECT_TRUE(std::basic_string_view<TypeParam>(ours) == expected) << format;
    });
    EXPECT_GT(plain, 5000);
}

}  // namespace
