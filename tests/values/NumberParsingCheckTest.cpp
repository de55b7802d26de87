// The functions that check whether a text is a number: `try` functions, which store the number, and `canCoerce`
// functions, which do not.

#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Scans.h"
#include "support/Widths.h"
#include "vorel/values/NumberParsing.h"

namespace {

namespace util = vorel::util;

template <class T>
class NumberParsingCheck : public ::testing::Test {};
TYPED_TEST_SUITE(NumberParsingCheck, test::CharacterTypes, test::CharacterNames);

template <class Value>
struct Case {
    const char* text;
    bool result;
    Value value;  ///< the variable after the call; before the call, the variable is 99
};

template <class T, class Value>
void expectCases(bool (*function)(const T*, Value&) noexcept, const std::vector<Case<Value>>& rows) {
    for (const Case<Value>& row : rows) {
        Value value = 99;
        EXPECT_EQ(function(test::text<T>(row.text).c_str(), value), row.result) << row.text;
        EXPECT_TRUE(test::isSame(value, row.value)) << value << " from " << row.text;
    }
}

TYPED_TEST(NumberParsingCheck, TryStringToInteger_AcceptsIntegers) {
    constexpr int kSmallest = std::numeric_limits<int>::min();
    expectCases<TypeParam, int>(util::tryStringToInteger,
                                {{"0", true, 0},
                                 {"42", true, 42},
                                 {" \t\r\n42 \t\r\n", true, 42},
                                 {"+42", true, 42},
                                 {"-42", true, -42},
                                 {"-0", true, 0},
                                 {"007", true, 7},
                                 {"-42 ", true, -42},
                                 {"2147483647", true, 2147483647},
                                 {"-2147483648", true, kSmallest},
                                 {"2147483648", true, kSmallest},
                                 {"4294967297", true, 1},
                                 {"-4294967297", true, -1},
                                 {"12345678901234567890123456789012", true, static_cast<int>(0x90A03A14)}});
}

TYPED_TEST(NumberParsingCheck, TryStringToInteger_AcceptsAFractionOfZeros) {
    expectCases<TypeParam, int>(util::tryStringToInteger, {{"12.", true, 12},
                                                           {"12.0", true, 12},
                                                           {"12.000 ", true, 12},
                                                           {"-12.00", true, -12},
                                                           {"0.0", true, 0},
                                                           {"12.5", false, 12},
                                                           {"12.05", false, 12},
                                                           {"12.0.0", false, 12},
                                                           {"12..", false, 12},
                                                           {"12 .0", false, 12},
                                                           {"-12.5", false, -12},
                                                           {"12.0e0", false, 12}});
}

TYPED_TEST(NumberParsingCheck, TryStringToInteger_StoresTheNumberEvenOnFailure) {
    expectCases<TypeParam, int>(util::tryStringToInteger, {{"", false, 0},
                                                           {"  ", false, 0},
                                                           {"-", false, 0},
                                                           {"+", false, 0},
                                                           {".", false, 0},
                                                           {".0", false, 0},
                                                           {"-.0", false, 0},
                                                           {"x", false, 0},
                                                           {"+-5", false, 0},
                                                           {"- 5", false, 0},
                                                           {"5x", false, 5},
                                                           {"-3x", false, -3},
                                                           {"-3 x", false, -3},
                                                           {"1 2", false, 1},
                                                           {"1,000", false, 1},
                                                           {"1e3", false, 1},
                                                           {"0x10", false, 0}});
}

TYPED_TEST(NumberParsingCheck, TryStringToDouble_AcceptsNumbers) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    expectCases<TypeParam, double>(util::tryStringToDouble, {{" 3.25 ", true, 3.25},
                                                             {" \t\r\n-.5 \t\r\n", true, -0.5},
                                                             {"5.", true, 5.0},
                                                             {"+5", true, 5.0},
                                                             {"0", true, 0.0},
                                                             {"-0", true, -0.0},
                                                             {"1e2", true, 100.0},
                                                             {"1E+2 ", true, 100.0},
                                                             {"-1e-2", true, -1.0 / 100.0},
                                                             {"1e33", true, 0x1.8a6e32246c99dp+109},
                                                             {"1e999", true, kInfinite},
                                                             {"-1e999", true, -kInfinite},
                                                             {"1e-999", true, 0.0},
                                                             {"1e4294967298", true, 100.0},
                                                             {"0.000000000000000000001", true, 0.0}});
}

TYPED_TEST(NumberParsingCheck, TryStringToDouble_StoresTheNumberBeforeInvalidText) {
    expectCases<TypeParam, double>(util::tryStringToDouble, {{"3.25x", false, 3.25},
                                                             {"-3.25x", false, -3.25},
                                                             {"1.5 x", false, 1.5},
                                                             {"1.5.5", false, 1.5},
                                                             {"1e2x", false, 100.0},
                                                             {"-1e2 x", false, -100.0},
                                                             {"1e5e5", false, 1e5},
                                                             {"1e2.0", false, 100.0},
                                                             {"1 e2", false, 1.0},
                                                             {"1,5", false, 1.0},
                                                             {"0x10", false, 0.0}});
}

TYPED_TEST(NumberParsingCheck, TryStringToDouble_StoresNothingWithoutDigits) {
    for (const char* const text : {"", " ", "-", "+", ".", "-.", "  .", ".e5", "e5", "x", "--1", "NaN", "-Inf"}) {
        expectCases<TypeParam, double>(util::tryStringToDouble, {{text, false, 99}});
    }
}

/// The stored value is the integer that consists of the first eighteen digits of the mantissa, without its sign and its
/// decimal point.
TYPED_TEST(NumberParsingCheck, TryStringToDouble_RejectsAMissingOrZeroExponentAndStoresTheMantissa) {
    expectCases<TypeParam, double>(util::tryStringToDouble, {{"1e0", false, 1.0},
                                                             {"1e", false, 1.0},
                                                             {"1e+", false, 1.0},
                                                             {"1e-", false, 1.0},
                                                             {"1ex", false, 1.0},
                                                             {"1e 5", false, 1.0},
                                                             {"1E000", false, 1.0},
                                                             {"-2e", false, 2.0},
                                                             {"-1e0", false, 1.0},
                                                             {"2.5E-00", false, 25.0},
                                                             {" -1.25e+00 ", false, 125.0},
                                                             {"1e4294967296", false, 1.0},  // the exponent wraps to 0
                                                             {"1234567890123456789e0", false, 123456789012345678.0}});
}

TYPED_TEST(NumberParsingCheck, NullTextIsRejectedAndNothingIsStored) {
    const TypeParam* const null = nullptr;
    int integer = 99;
    double number = 99;
    EXPECT_FALSE(util::tryStringToInteger(null, integer));
    EXPECT_FALSE(util::tryStringToDouble(null, number));
    EXPECT_EQ(integer, 99);
    EXPECT_EQ(number, 99);
    for (const bool allow : {false, true}) {
        EXPECT_FALSE(util::canCoerceToInteger(null, allow));
        EXPECT_FALSE(util::canCoerceToDouble(null, allow));
    }
}

template <class T>
using Check = bool (*)(const T*, bool) noexcept;

/// Expects that `check` returns `strict` if leading zeros are not allowed, and `lenient` if they are allowed.
template <class T>
void expectAnswers(Check<T> check, const std::vector<const char*>& texts, bool strict, bool lenient) {
    for (const char* const row : texts) {
        const std::basic_string<T> text = test::text<T>(row);
        EXPECT_EQ(check(text.c_str(), false), strict) << row;
        EXPECT_EQ(check(text.c_str(), true), lenient) << row;
    }
}

TYPED_TEST(NumberParsingCheck, CanCoerceToInteger_AcceptsDigitsAndAFractionOfZeros) {
    expectAnswers<TypeParam>(util::canCoerceToInteger,
                             {"0", "7", "42", "+42", "-42", " \t\r\n+5 \t\r\n", "-5 ", "12.", "12.0", "12.000 ",
                              "99999999999999999999999999", "10", "100"},
                             true, true);
}

TYPED_TEST(NumberParsingCheck, CanCoerceToInteger_RejectsOtherText) {
    expectAnswers<TypeParam>(util::canCoerceToInteger,
                             {"",      " ",      "+",     "-",   ".",     ".0",     "-.0",  "x",     "1x",
                              "0x1",   "0123x",  "- 5",   "+-5", "5 5",   "0 1",    "12.5", "12.05", "12..",
                              "12 .0", "12.0.0", "12.0x", "1e0", "1,000", "0123.5", "NaN"},
                             false, false);
}

TYPED_TEST(NumberParsingCheck, CanCoerceToInteger_RejectsLeadingZerosUnlessAllowed) {
    expectAnswers<TypeParam>(util::canCoerceToInteger, {"0123", "-0123", "+0123", " 01 ", "010", "0001"}, false, true);
    // A number that consists only of zeros is accepted, and leading zeros are accepted before a decimal point.
    expectAnswers<TypeParam>(util::canCoerceToInteger, {"00", "-000", "0.0", "00.", "0123.0", "0123.", "-01.00 "}, true,
                             true);
}

TYPED_TEST(NumberParsingCheck, CanCoerceToDouble_AcceptsAFractionAndAnExponent) {
    expectAnswers<TypeParam>(util::canCoerceToDouble,
                             {"0",
                              "7",
                              "-7",
                              "+7",
                              ".5",
                              "5.",
                              "+.5",
                              "-5.",
                              "1.5",
                              "0.5",
                              ".0",
                              "1e5",
                              "1E+5",
                              "1e-05",
                              "1.5e5",
                              "5.e1",
                              ".5e1",
                              "1e0",
                              "1e00",
                              " -1.5e-3 ",
                              " \t\r\n1 \t\r\n",
                              "1e99999999999999",
                              "10"},
                             true, true);
}

TYPED_TEST(NumberParsingCheck, CanCoerceToDouble_RejectsOtherText) {
    expectAnswers<TypeParam>(util::canCoerceToDouble,
                             {"",     " ",    "+",   "-",   ".",    "-.",   "..",    "5..",     "1.5.2",
                              ".e5",  "e5",   "1e",  "1e+", "1e-",  "1e ",  "1e+-5", "1e5.0",   "1e5e5",
                              "1e 5", "1 e5", "1x",  "1 x", "1.5x", "1e5x", "007e",  "007x",    "0x10",
                              "1,5",  "--1",  "- 1", "NaN", "nan",  "Inf",  "-Inf",  "Infinity"},
                             false, false);
}

TYPED_TEST(NumberParsingCheck, CanCoerceToDouble_RejectsLeadingZerosUnlessAllowed) {
    expectAnswers<TypeParam>(util::canCoerceToDouble, {"007", "-07", "+07", " 07 ", "010"}, false, true);
    // A number that consists only of zeros is accepted, and leading zeros are accepted before a decimal point or an
    // exponent.
    expectAnswers<TypeParam>(util::canCoerceToDouble,
                             {"00", "0000", "007.5", "007.", "000.5", "007e1", "07e0", "007.5e1", "00.0"}, true, true);
}

TEST(NumberParsingCheckWidths, NoBreakSpaceIsWhiteSpaceOnlyInWideText) {
    constexpr const char* kBefore = "\xA0"
                                    "7";
    constexpr const char* kAfter = "7\xA0";
    expectCases<wchar_t, int>(util::tryStringToInteger, {{kBefore, true, 7}, {kAfter, true, 7}});
    expectCases<char, int>(util::tryStringToInteger, {{kBefore, false, 0}, {kAfter, false, 7}});
    expectCases<wchar_t, double>(util::tryStringToDouble, {{kBefore, true, 7}, {kAfter, true, 7}});
    expectCases<char, double>(util::tryStringToDouble, {{kBefore, false, 99}, {kAfter, false, 7}});
    expectAnswers<wchar_t>(util::canCoerceToInteger, {kBefore, kAfter}, true, true);
    expectAnswers<char>(util::canCoerceToInteger, {kBefore, kAfter}, false, false);
    expectAnswers<wchar_t>(util::canCoerceToDouble, {kBefore, kAfter}, true, true);
    expectAnswers<char>(util::canCoerceToDouble, {kBefore, kAfter}, false, false);
}

}  // namespace
