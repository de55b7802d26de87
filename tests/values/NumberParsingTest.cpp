// The parsers of integers of every width, decimal and hexadecimal. Of `stringToDouble`, only the null text is tested
// here. Its other tests, and the tests of the `try` and `canCoerce` functions, are in separate files.

#include "vorel/values/NumberParsing.h"

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/PageEdge.h"
#include "support/Scans.h"
#include "support/Widths.h"

namespace {

using test::scan;
using test::Scanned;
namespace util = vorel::util;

template <class T>
class NumberParsing : public ::testing::Test {};
TYPED_TEST_SUITE(NumberParsing, test::CharacterTypes, test::CharacterNames);

/// A text, its 64-bit value (the lower half is its 32-bit value), and the number of units read with and without the
/// white space after the number.
struct Row {
    std::string text;
    std::uint64_t value;
    std::ptrdiff_t read;
    std::ptrdiff_t readWithoutBlanks;

    Row(std::string units, std::uint64_t expected, std::ptrdiff_t end, std::ptrdiff_t endWithoutBlanks)
        : text(std::move(units)), value(expected), read(end), readWithoutBlanks(endWithoutBlanks) {}
    /// A row whose whole text is read.
    Row(std::string units, std::uint64_t expected)
        : text(std::move(units)),
          value(expected),
          read(static_cast<std::ptrdiff_t>(text.size())),
          readWithoutBlanks(read) {}
};

template <class Value>
Scanned<Value> scanned(const Row& row, bool skipTrailingSpace) {
    return {static_cast<Value>(row.value), skipTrailingSpace ? row.read : row.readWithoutBlanks};
}

template <class T>
void expectSigned(const Row& row) {
    SCOPED_TRACE(row.text);
    for (const bool skip : {false, true}) {
        EXPECT_EQ((scan<T, int>(row.text, util::stringToInteger, skip)), scanned<int>(row, skip));
        EXPECT_EQ((scan<T, long long>(row.text, util::stringToInteger64, skip)), scanned<long long>(row, skip));
    }
    EXPECT_EQ((scan<T, int>(row.text, util::stringToInt)), scanned<int>(row, true));
    EXPECT_EQ((scan<T, long long>(row.text, util::stringToInt64)), scanned<long long>(row, true));
}

template <class T>
void expectUnsigned(const Row& row) {
    using Large = unsigned long long;
    SCOPED_TRACE(row.text);
    for (const bool skip : {false, true}) {
        EXPECT_EQ((scan<T, Large>(row.text, util::stringToUnsignedInteger64, skip)), scanned<Large>(row, skip));
    }
    EXPECT_EQ((scan<T, unsigned int>(row.text, util::stringToUInt)), scanned<unsigned int>(row, true));
    EXPECT_EQ((scan<T, Large>(row.text, util::stringToUInt64)), scanned<Large>(row, true));
}

/// Expects the same result from signed and unsigned parsers.
template <class T>
void expectBoth(const Row& row) {
    expectSigned<T>(row);
    expectUnsigned<T>(row);
}

TYPED_TEST(NumberParsing, Integers_ReadWhiteSpaceSignAndDigits) {
    for (const Row& row : {Row("0", 0), Row("7", 7), Row("0123456789", 123456789), Row("0007", 7), Row("+7", 7),
                           Row(" \t\r\n42", 42), Row(" +42", 42), Row("1234567890123456", 1234567890123456)}) {
        expectBoth<TypeParam>(row);
    }
}

TYPED_TEST(NumberParsing, Integers_SkipTrailingWhiteSpaceOnRequest) {
    for (const Row& row :
         {Row("42  ", 42, 4, 2), Row(" 42 \t\r\nx", 42, 7, 3), Row("42 7", 42, 3, 2), Row("+ 7", 0, 2, 1)}) {
        expectBoth<TypeParam>(row);
    }
}

TYPED_TEST(NumberParsing, Integers_StopAtNonDigitsWithoutRollback) {
    for (const Row& row :
         {Row("", 0), Row(" \t\r\n", 0), Row("x12", 0, 0, 0), Row("  x", 0, 2, 2), Row("  +x", 0, 3, 3), Row("+", 0),
          Row("++1", 0, 1, 1), Row("12x", 12, 2, 2), Row("1,000", 1, 1, 1), Row("1.5", 1, 1, 1), Row("1e3", 1, 1, 1),
          Row("0x10", 0, 1, 1), Row("5/", 5, 1, 1), Row("5:", 5, 1, 1), Row("7-", 7, 1, 1)}) {
        expectBoth<TypeParam>(row);
    }
}

TYPED_TEST(NumberParsing, Integers_StopAtControlCharactersExceptTabAndLineEnds) {
    for (const Row& row : {Row("\v7", 0, 0, 0), Row("\f7", 0, 0, 0), Row("\b7", 0, 0, 0),
                           Row("\x1F"
                               "7",
                               0, 0, 0),
                           Row("7\v", 7, 1, 1), Row("7\f", 7, 1, 1), Row("7\x0E", 7, 1, 1)}) {
        expectBoth<TypeParam>(row);
    }
}

TYPED_TEST(NumberParsing, Integers_WrapAround) {
    const std::string zeros(64, '0');
    for (const Row& row :
         {Row("2147483647", 2147483647), Row("2147483648", 2147483648), Row("4294967295", 4294967295),
          Row("4294967296", 4294967296), Row("4294967297", 4294967297),
          Row("9223372036854775807", 9223372036854775807u), Row("9223372036854775808", 9223372036854775808u),
          Row("18446744073709551615", 18446744073709551615u), Row("18446744073709551616", 0),
          Row("18446744073709551617", 1), Row("100000000000000000000", 7766279631452241920u), Row("1" + zeros, 0),
          Row("1" + zeros + "77", 77), Row(zeros + "77", 77), Row("+" + zeros + "18446744073709551618 ", 2, 86, 85)}) {
        expectBoth<TypeParam>(row);
    }
}

TYPED_TEST(NumberParsing, SignedIntegers_AcceptOneMinus) {
    constexpr std::uint64_t kHighest = std::uint64_t{1} << 63;
    const auto minus = [](std::uint64_t value) { return ~value + 1; };
    for (const Row& row : {Row("-7", minus(7)), Row("-0", 0), Row("  -x", 0, 3, 3), Row("-", 0), Row("--1", 0, 1, 1),
                           Row("+-1", 0, 1, 1), Row("-+1", 0, 1, 1), Row("- 1", 0, 2, 1), Row("-42 ", minus(42), 4, 3),
                           Row("-2147483648", minus(2147483648)), Row("-2147483649", minus(2147483649)),
                           Row("-4294967297", minus(4294967297)), Row("-9223372036854775808", kHighest),
                           Row("-9223372036854775809", kHighest - 1), Row("-18446744073709551615", 1)}) {
        expectSigned<TypeParam>(row);
    }
}

TYPED_TEST(NumberParsing, SignedIntegers_ReachBothLimits) {
    constexpr int kSmallest = std::numeric_limits<int>::min();
    constexpr long long kSmallest64 = std::numeric_limits<long long>::min();
    EXPECT_EQ((scan<TypeParam, int>("-2147483648", util::stringToInt)), (Scanned<int>{kSmallest, 11}));
    EXPECT_EQ((scan<TypeParam, int>("2147483648", util::stringToInt)), (Scanned<int>{kSmallest, 10}));
    EXPECT_EQ((scan<TypeParam, int>("-2147483649", util::stringToInt)), (Scanned<int>{2147483647, 11}));
    EXPECT_EQ((scan<TypeParam, int>("4294967297", util::stringToInt)), (Scanned<int>{1, 10}));
    EXPECT_EQ((scan<TypeParam, long long>("-9223372036854775808", util::stringToInt64)),
              (Scanned<long long>{kSmallest64, 20}));
    EXPECT_EQ((scan<TypeParam, long long>("9223372036854775808", util::stringToInt64)),
              (Scanned<long long>{kSmallest64, 19}));
}

TYPED_TEST(NumberParsing, UnsignedIntegers_StopAtAMinus) {
    for (const Row& row : {Row("-5", 0, 0, 0), Row(" -5", 0, 1, 1), Row("+-5", 0, 1, 1), Row("-", 0, 0, 0),
                           Row("- ", 0, 0, 0), Row(" +5 ", 5, 4, 3)}) {
        expectUnsigned<TypeParam>(row);
    }
}

/// Expects that a parser returns 0 and sets the end to null if the text is null.
template <class T, class Value>
void expectNothingForNull(Value (*function)(const T*, T**) noexcept) {
    T character = 0;
    T* end = &character;
    EXPECT_TRUE(test::isSame(function(nullptr, &end), Value{}));
    EXPECT_EQ(end, nullptr);
    EXPECT_TRUE(test::isSame(function(nullptr, nullptr), Value{}));
}

template <class T, class Value>
void expectNothingForNull(Value (*function)(const T*, const T**, bool) noexcept) {
    for (const bool skip : {false, true}) {
        const T character = 0;
        const T* end = &character;
        EXPECT_EQ(function(nullptr, &end, skip), Value{});
        EXPECT_EQ(end, nullptr);
        EXPECT_EQ(function(nullptr, nullptr, skip), Value{});
    }
}

TYPED_TEST(NumberParsing, NullTextIsZeroAndSetsTheEndToNull) {
    expectNothingForNull<TypeParam, int>(util::stringToInteger);
    expectNothingForNull<TypeParam, long long>(util::stringToInteger64);
    expectNothingForNull<TypeParam, unsigned long long>(util::stringToUnsignedInteger64);
    expectNothingForNull<TypeParam, int>(util::stringToInt);
    expectNothingForNull<TypeParam, unsigned int>(util::stringToUInt);
    expectNothingForNull<TypeParam, long long>(util::stringToInt64);
    expectNothingForNull<TypeParam, unsigned long long>(util::stringToUInt64);
    expectNothingForNull<TypeParam, int>(util::hexToInteger);
    expectNothingForNull<TypeParam, int>(util::hexToInt);
    expectNothingForNull<TypeParam, double>(util::stringToDouble);
}

TEST(NumberParsingWidths, NoBreakSpaceIsWhiteSpaceOnlyInWideText) {
    const Row between("\xA0\xA0"
                      "7\xA0 x",
                      7, 5, 3);
    expectBoth<wchar_t>(between);
    const Row before("\xA0"
                     "7",
                     0, 0, 0);
    expectBoth<char>(before);
    const Row after(" 7 \xA0", 7, 3, 2);
    expectBoth<char>(after);
    EXPECT_EQ((scan<wchar_t, int>("\xA0"
                                  "1f\xA0",
                                  util::hexToInteger)),
              (Scanned<int>{0x1F, 4}));
    EXPECT_EQ((scan<char, int>("\xA0"
                               "1f",
                               util::hexToInteger)),
              (Scanned<int>{0, 0}));
    EXPECT_EQ((scan<char, int>("1f\xA0", util::hexToInteger)), (Scanned<int>{0x1F, 2}));
}

/// The digits lie in two pages, so they are not parsed in blocks.
template <class T>
void expectHexAcrossPages(std::size_t digits, int value) {
    constexpr std::size_t kPageUnits = 4096 / sizeof(T);
    test::PageEdge<T> pages(2 * kPageUnits);
    const std::basic_string<T> text = test::text<T>("0123456789ABCDEF0123");
    for (std::size_t before = 1; before != digits; ++before) {
        T* const position = pages.firstElement() + kPageUnits - before;
        text.copy(position, text.size());
        T* end = nullptr;
        EXPECT_EQ(util::hexToInteger(position, &end), value) << before;
        EXPECT_EQ(end - position, static_cast<std::ptrdiff_t>(digits)) << before;
    }
}

TEST(NumberParsingWidths, HexDigitsHaveTheSameLimitsAcrossPages) {
    expectHexAcrossPages<char>(16, static_cast<int>(0x89ABCDEF));
    expectHexAcrossPages<wchar_t>(8, 0x01234567);
}

TEST(NumberParsingWidths, WideUnitsAreNotTruncated) {
    // Units whose low byte is a digit, a space or a minus; digits and spaces of other scripts; units that are not
    // characters; the control character U+0085.
    for (const wchar_t unit : {L'\u0131', L'\uFF11', L'\u0661', L'\u2003', L'\u3000', L'\u0120', L'\u012D', L'\xD831',
                               L'\uFFFF', L'\u0085'}) {
        const std::wstring text = std::wstring(L"4") + unit + L"2";
        EXPECT_EQ((test::scanUnits<wchar_t, int>(text, util::stringToInt)), (Scanned<int>{4, 1})) << int{unit};
        EXPECT_EQ((test::scanUnits<wchar_t, int>(text, util::hexToInteger)), (Scanned<int>{4, 1})) << int{unit};
        EXPECT_EQ((test::scanUnits<wchar_t, int>(text.substr(1), util::stringToInt)), (Scanned<int>{0, 0}))
            << int{unit};
    }
}

struct HexRow {
    std::string_view text;
    std::uint32_t value;
    std::ptrdiff_t read;
};

template <class T>
void expectHex(const HexRow& row) {
    const Scanned<int> wanted = {static_cast<int>(row.value), row.read};
    EXPECT_EQ((scan<T, int>(row.text, util::hexToInteger)), wanted) << row.text;
    EXPECT_EQ((scan<T, int>(row.text, util::hexToInt)), wanted) << row.text;
}

TYPED_TEST(NumberParsing, HexToInteger_ReadsDigitsInEitherCase) {
    for (const HexRow& row :
         {HexRow{"0", 0, 1}, HexRow{"9", 9, 1}, HexRow{"ff", 255, 2}, HexRow{"abcdef", 0xABCDEF, 6},
          HexRow{"ABCDEF", 0xABCDEF, 6}, HexRow{"deadBEEF", 0xDEADBEEF, 8}, HexRow{" \t\r\n1F \t\r\n", 0x1F, 10},
          HexRow{"7FFFFFFF", 0x7FFFFFFF, 8}, HexRow{"80000000", 0x80000000, 8}, HexRow{"FFFFFFFF", 0xFFFFFFFF, 8},
          HexRow{"1 2", 1, 2}, HexRow{"1g", 1, 1}, HexRow{"", 0, 0}, HexRow{"  ", 0, 2}}) {
        expectHex<TypeParam>(row);
    }
}

TYPED_TEST(NumberParsing, HexToInteger_RejectsSignAndPrefix) {
    for (const HexRow& row : {HexRow{"-1", 0, 0}, HexRow{"+1", 0, 0}, HexRow{" -1", 0, 1}, HexRow{"0x1F", 0, 1},
                              HexRow{"x1F", 0, 0}, HexRow{"#1F", 0, 0}, HexRow{"1Fh", 0x1F, 2}}) {
        expectHex<TypeParam>(row);
    }
    for (const char* const neighbour : {"/", ":", "@", "G", "`", "g"}) {
        expectHex<TypeParam>({neighbour, 0, 0});
    }
}

TEST(NumberParsingWidths, HexToInteger_ReadsEightWideDigits) {
    for (const HexRow& row :
         {HexRow{"1234567890", 0x12345678, 8}, HexRow{"123456789", 0x12345678, 8}, HexRow{"12345678 9", 0x12345678, 9},
          HexRow{"0000000012", 0, 8}, HexRow{"FFFFFFFFF", 0xFFFFFFFF, 8}}) {
        expectHex<wchar_t>(row);
    }
}

TEST(NumberParsingWidths, HexToInteger_ReadsSixteenNarrowDigitsAndUsesTheLastEight) {
    for (const HexRow& row : {HexRow{"1234567890", 0x34567890, 10}, HexRow{"123456789", 0x23456789, 9},
                              HexRow{"1234567890abcdef", 0x90ABCDEF, 16}, HexRow{"1234567890abcdef0", 0x90ABCDEF, 16},
                              HexRow{"1234567890ABCDEF 0", 0x90ABCDEF, 17}, HexRow{"000000000000000012", 0, 16},
                              HexRow{"100000000", 0, 9}}) {
        expectHex<char>(row);
    }
}

}  // namespace
