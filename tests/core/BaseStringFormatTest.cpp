/// \file
/// Formatting into a string: rendering, growth, arguments that point into the string, and invalid formats.

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "core/StringFields.h"
#include "support/ExhaustedStreams.h"
#include "support/Expect.h"
#include "support/Widths.h"
#include "vorel/core/BaseString.h"
#include "vorel/exceptions/Exception.h"

namespace {

using test::capacityFor;
using test::expectThrows;
using vorel::BaseString;
using vorel::Exception;

/// The message for a format that cannot be rendered; it ends with the runtime's text for `error`.
std::wstring unableToFormat(const wchar_t* format, int error) {
    const char* const reason = std::strerror(error);
    return std::wstring(L"Unable to format: ") + format + L" (" + std::wstring(reason, reason + std::strlen(reason)) +
           L")";
}

template <class T>
class BaseStringFormat : public ::testing::Test {
protected:
    using String = BaseString<T>;
    using Text = std::basic_string<T>;

    static Text text(std::string_view units) { return test::text<T>(units); }

    /// Formats a text of `count` digits '0'.
    static void fill(String& string, unsigned int count) {
        if (count == 0) {
            string.format(text("%s").c_str(), text("").c_str());
        } else {
            string.format(text("%0*d").c_str(), static_cast<int>(count), 0);
        }
    }

    static void expectZeros(const String& string, unsigned int count) {
        EXPECT_EQ(test::fieldsOf(string).length, count);
        EXPECT_TRUE(string.view() == Text(count, T{'0'})) << count;
        EXPECT_EQ(string.c_str()[count], T{});
    }

    static String& callVformat(String& string, const T* format, ...) {
        va_list args;
        va_start(args, format);
        String& result = string.vformat(format, args);
        va_end(args);
        return result;
    }
};

TYPED_TEST_SUITE(BaseStringFormat, test::CharacterTypes, test::CharacterNames);

// ---- Rendering ------------------------------------------------------------------------------------------------------

TYPED_TEST(BaseStringFormat, Format_RendersAndReturnsTheString) {
    BaseString<TypeParam> string;
    EXPECT_EQ(&string.format(this->text("%d of %u: %s%%").c_str(), -3, 7u, this->text("ok").c_str()), &string);
    EXPECT_TRUE(string.view() == this->text("-3 of 7: ok%"));
    EXPECT_TRUE(test::knowsLength(string));
}

TYPED_TEST(BaseStringFormat, HsAndLs_RenderNarrowAndWideArguments) {
    BaseString<TypeParam> string;
    string.format(this->text("%hs|%ls|%s").c_str(), "narrow", L"wide", this->text("own").c_str());
    EXPECT_TRUE(string.view() == this->text("narrow|wide|own"));
}

TYPED_TEST(BaseStringFormat, ZeroUnitFromAnArgument_IsPartOfTheText) {
    BaseString<TypeParam> string;
    string.format(this->text("a%cb").c_str(), 0);
    EXPECT_TRUE(string.view() == this->text(std::string_view("a\0b", 3)));
}

TYPED_TEST(BaseStringFormat, Vformat_RendersAnArgumentList) {
    BaseString<TypeParam> string;
    EXPECT_EQ(&this->callVformat(string, this->text("%x %g").c_str(), 255, 0.5), &string);
    EXPECT_TRUE(string.view() == this->text("ff 0.5"));
}

TYPED_TEST(BaseStringFormat, NullFormat_ReleasesTheBuffer) {
    BaseString<TypeParam> string(this->text("text").c_str());
    const TypeParam* const null = nullptr;
    EXPECT_EQ(&string.format(null), &string);
    EXPECT_EQ(string.c_str(), nullptr);
    EXPECT_EQ(string.capacity(), 0u);
    EXPECT_EQ(test::fieldsOf(string).length, 0xFFFFFFFFu);
    string.format(null);
    EXPECT_EQ(string.c_str(), nullptr);
}

// ---- Growth ---------------------------------------------------------------------------------------------------------

// A string without a buffer reserves space for the text, one more unit and the terminator.
TYPED_TEST(BaseStringFormat, FirstBuffer_FitsTheText) {
    for (unsigned int count = 0; count <= 1030; count += count == 140 ? 360 : 1) {
        BaseString<TypeParam> string;
        this->fill(string, count);
        this->expectZeros(string, count);
        EXPECT_EQ(string.capacity(), capacityFor(count + 1)) << count;
    }
}

// A text that fits with its terminator is rendered into the existing buffer. A text that fills the buffer exactly
// leaves no space for the terminator, so the string grows.
TYPED_TEST(BaseStringFormat, Buffer_GrowsWhenTextAndTerminatorDoNotFit) {
    for (const unsigned int start : {16u, 32u, 64u}) {
        for (unsigned int count = 0; count <= 140; ++count) {
            BaseString<TypeParam> string;
            string.reserve(start - 1, true);
            ASSERT_EQ(string.capacity(), start);
            const TypeParam* const buffer = string.c_str();
            this->fill(string, count);
            this->expectZeros(string, count);
            if (count < start) {
                EXPECT_EQ(string.c_str(), buffer) << count;
            }
            EXPECT_EQ(string.capacity(), count < start ? start : capacityFor(count + 1)) << count;
        }
    }
}

TYPED_TEST(BaseStringFormat, TextThatFillsTheBufferExactly_GrowsItOnce) {
    BaseString<TypeParam> string(this->text("x").c_str());
    ASSERT_EQ(string.capacity(), 16u);
    this->fill(string, 16);
    this->expectZeros(string, 16);
    EXPECT_EQ(string.capacity(), 32u);
}

TYPED_TEST(BaseStringFormat, LongTexts_AreNotTruncated) {
    for (const unsigned int count : {8000u, 65536u, 1048576u}) {
        BaseString<TypeParam> string;
        const std::basic_string<TypeParam> argument(count, TypeParam{'y'});
        string.format(this->text("%s!").c_str(), argument.c_str());
        EXPECT_TRUE(string.view() == argument + TypeParam{'!'}) << count;
    }
}

// ---- Arguments that point into the string ---------------------------------------------------------------------------

TYPED_TEST(BaseStringFormat, ArgumentsInTheString_AreReadBeforeTheyAreOverwritten) {
    for (unsigned int length = 1; length <= 40; ++length) {
        for (unsigned int from = 0; from <= length; ++from) {
            std::basic_string<TypeParam> model;
            for (unsigned int i = 0; i < length; ++i) {
                model += static_cast<TypeParam>('A' + i);
            }
            BaseString<TypeParam> string(model.c_str());
            string.format(this->text("<%d:%s:%s>").c_str(), 5, string.c_str() + from, string.c_str());
            const auto expected = this->text("<5:") + model.substr(from) + this->text(":") + model + this->text(">");
            ASSERT_TRUE(string.view() == expected) << length << " units, from " << from;
            string = model.c_str();
            string.format(this->text("<%s>").c_str(), string.c_str() + from);  // only the tail is an argument
            ASSERT_TRUE(string.view() == this->text("<") + model.substr(from) + this->text(">"));
        }
    }
}

TYPED_TEST(BaseStringFormat, ArgumentsInTheString_MayFollowStarsAndDoubles) {
    BaseString<TypeParam> string(this->text("abcdef").c_str());
    string.format(this->text("%*.*f %.*s").c_str(), 5, 1, 2.5, 3, string.c_str() + 1);
    EXPECT_TRUE(string.view() == this->text("  2.5 bcd"));
}

// If an argument is in the string, the capacity must become the same as with an argument outside the string.
TYPED_TEST(BaseStringFormat, ArgumentsInTheString_GrowTheBufferLikeArgumentsOutsideIt) {
    for (const unsigned int start : {16u, 64u}) {
        for (const unsigned int count : {2u, 14u, 15u, 16u, 17u, 31u, 32u, 63u, 64u, 127u, 511u, 512u, 1023u}) {
            BaseString<TypeParam> string;
            string.reserve(start - 1, true);
            string = this->text("0").c_str();
            ASSERT_EQ(string.capacity(), start);
            string.format(this->text("%0*d%s").c_str(), static_cast<int>(count - 1), 0, string.c_str());
            this->expectZeros(string, count);
            EXPECT_EQ(string.capacity(), count < start ? start : capacityFor(count + 1)) << count;
        }
    }
}

TYPED_TEST(BaseStringFormat, FormatInTheString_IsReadBeforeItIsOverwritten) {
    BaseString<TypeParam> string(this->text("value %d").c_str());
    string.format(string.c_str(), 42);
    EXPECT_TRUE(string.view() == this->text("value 42"));

    string = this->text("%s and %s, said the format itself").c_str();
    string.format(string.c_str(), string.c_str() + 29, this->text("more").c_str());
    EXPECT_TRUE(string.view() == this->text("self and more, said the format itself"));
}

TYPED_TEST(BaseStringFormat, FormatAndArgumentsOutsideTheString_ReuseTheBuffer) {
    BaseString<TypeParam> string(this->text("0123456789").c_str());
    const TypeParam* const buffer = string.c_str();
    const BaseString<TypeParam> other(this->text("other").c_str());
    string.format(this->text("%s").c_str(), other.c_str());
    EXPECT_TRUE(string == other);
    EXPECT_EQ(string.c_str(), buffer);
}

// ---- Formats that cannot be rendered --------------------------------------------------------------------------------

// U+4E00 has no narrow form in the "C" locale.
constexpr wchar_t kUnconvertible[] = L"ab\x4E00";

TEST(BaseStringFormatOfNarrowText, UnconvertibleWideArgument_ThrowsTheRuntimesReason) {
    for (const unsigned int units : {0u, 1u, 15u, 100u}) {
        BaseString<char> string(std::string(units, 'x').c_str());
        expectThrows<Exception>([&] { string.format("%ls", kUnconvertible); }, {unableToFormat(L"%ls", EILSEQ)});
        EXPECT_TRUE(string.empty()) << units;
    }
}

TEST(BaseStringFormatOfNarrowText, UnconvertibleWideArgumentAfterLongText_ThrowsAndEmptiesTheString) {
    BaseString<char> string("text");
    expectThrows<Exception>([&] { string.format("%0100d%ls", 1, kUnconvertible); },
                            {unableToFormat(L"%0100d%ls", EILSEQ)});
    EXPECT_TRUE(string.empty());
    string.format("%d", 12);  // the string remains usable
    EXPECT_TRUE(string == "12");
}

TYPED_TEST(BaseStringFormat, ConversionRejectedByTheRuntime_Throws) {
    // The runtime rejects %n as an invalid parameter. The library's handler for invalid parameters lets the program
    // continue, so the print function fails with EINVAL.
    int count = 77;
    for (const bool allocated : {false, true}) {
        BaseString<TypeParam> string;
        if (allocated) {
            string = this->text("text").c_str();
        }
        expectThrows<Exception>([&] { string.format(this->text("a%n").c_str(), &count); },
                                {unableToFormat(L"a%n", EINVAL)});
        EXPECT_TRUE(string.empty());
    }
    EXPECT_EQ(count, 77);
}

TYPED_TEST(BaseStringFormat, InvalidFormatInTheString_LeavesTheStringUnchanged) {
    int count = 77;
    BaseString<TypeParam> string(this->text("a%n").c_str());
    expectThrows<Exception>([&] { string.format(string.c_str(), &count); }, {unableToFormat(L"a%n", EINVAL)});
    EXPECT_TRUE(string.view() == this->text("a%n"));
}

TYPED_TEST(BaseStringFormat, Format_ClearsErrno) {
    BaseString<TypeParam> string;
    for (int round = 0; round < 2; ++round) {  // without a buffer, and with one
        errno = ENOENT;
        string.format(this->text("%d").c_str(), 1);
        EXPECT_EQ(errno, 0);
    }
}

// The library measures a long text by rendering it to the null device. If the program has no free streams, the null
// device cannot be opened. The library then formats only texts that need no measurement.
TYPED_TEST(BaseStringFormat, WithoutTheNullDevice_FirstBufferFitsTheRenderedText) {
    const test::ExhaustedStreams none;
    for (const unsigned int count : {0u, 5u, 15u}) {
        BaseString<TypeParam> string;
        this->fill(string, count);
        this->expectZeros(string, count);
        EXPECT_EQ(string.capacity(), capacityFor(count + 1)) << count;
    }
}

TYPED_TEST(BaseStringFormat, WithoutTheNullDevice_LongTextsThrow) {
    BaseString<TypeParam> string(this->text("text").c_str());
    const test::ExhaustedStreams none;
    this->fill(string, 15);
    this->expectZeros(string, 15);
    this->fill(string, 16);  // the attempt to render into the buffer returns the length
    this->expectZeros(string, 16);
    ASSERT_EQ(string.capacity(), 32u);
    expectThrows<Exception>([&] { this->fill(string, 33); }, {unableToFormat(L"%0*d", EINVAL)});
    EXPECT_TRUE(string.empty());
    EXPECT_EQ(string.capacity(), 32u);
}

}  // namespace
