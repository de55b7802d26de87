#include "vorel/values/NumberParsing.h"

#include <bit>
#include <clocale>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/Widths.h"

namespace {

namespace util = vorel::util;

template <class T>
class NumberParsing : public ::testing::Test {};
TYPED_TEST_SUITE(NumberParsing, test::CharacterTypes, test::CharacterNames);

/// What a scan gave, and how many characters it went through.
template <class Value>
struct Scanned {
    Value value;
    std::ptrdiff_t read;
    bool operator==(const Scanned&) const = default;
};

template <class T, class Value>
Scanned<Value> scan(std::string_view units, Value (*function)(const T*, T**) noexcept) {
    const std::basic_string<T> text = test::text<T>(units);
    T* end = nullptr;
    const Value value = function(text.c_str(), &end);
    EXPECT_EQ(function(text.c_str(), nullptr), value);
    return {value, end - text.c_str()};
}

template <class Value>
struct Row {
    std::string_view text;
    Value value;
    std::ptrdiff_t read;
};

constexpr int kSmallest = std::numeric_limits<int>::min();

TYPED_TEST(NumberParsing, StringToInt_ReadsBlanksSignDigitsAndBlanks) {
    const std::vector<Row<int>> rows = {
        {" \t42  ", 42, 6},
        {"+7", 7, 2},
        {"-7x", -7, 2},
        {"", 0, 0},
        {" \r\n", 0, 3},
        {"  -x", 0, 3},
        {"--1", 0, 1},
        {"1,000", 1, 1},
        {"4294967297", 1, 10},
        {"-2147483648", kSmallest, 11},
        {"2147483648", kSmallest, 10},
    };
    for (const Row<int>& row : rows) {
        EXPECT_EQ((scan<TypeParam, int>(row.text, util::stringToInt)), (Scanned<int>{row.value, row.read})) << row.text;
    }
}

TYPED_TEST(NumberParsing, StringToUInt_StopsAtAMinus) {
    EXPECT_EQ((scan<TypeParam, unsigned int>("-5", util::stringToUInt)), (Scanned<unsigned int>{0, 0}));
    EXPECT_EQ((scan<TypeParam, unsigned int>("+5 ", util::stringToUInt)), (Scanned<unsigned int>{5, 3}));
    EXPECT_EQ((scan<TypeParam, unsigned int>("4294967295", util::stringToUInt)),
              (Scanned<unsigned int>{4294967295u, 10}));
    EXPECT_EQ((scan<TypeParam, unsigned long long>(" -5", util::stringToUInt64)), (Scanned<unsigned long long>{0, 1}));
    EXPECT_EQ((scan<TypeParam, unsigned long long>("18446744073709551617", util::stringToUInt64)),
              (Scanned<unsigned long long>{1, 20}));
}

TYPED_TEST(NumberParsing, StringToInt64_WrapsAroundAt64Bits) {
    EXPECT_EQ((scan<TypeParam, long long>("-9223372036854775808", util::stringToInt64)),
              (Scanned<long long>{std::numeric_limits<long long>::min(), 20}));
    EXPECT_EQ((scan<TypeParam, long long>("9223372036854775808", util::stringToInt64)),
              (Scanned<long long>{std::numeric_limits<long long>::min(), 19}));
}

TYPED_TEST(NumberParsing, TrailingBlanksAreSkippedOnlyWhenAskedFor) {
    const std::basic_string<TypeParam> text = test::text<TypeParam>("42  ");
    const TypeParam* end = nullptr;
    EXPECT_EQ(util::stringToInteger(text.c_str(), &end, false), 42);
    EXPECT_EQ(end - text.c_str(), 2);
    EXPECT_EQ(util::stringToInteger64(text.c_str(), &end, true), 42);
    EXPECT_EQ(end - text.c_str(), 4);
    EXPECT_EQ(util::stringToUnsignedInteger64(text.c_str(), &end, false), 42u);
    EXPECT_EQ(end - text.c_str(), 2);
}

TYPED_TEST(NumberParsing, NullIsZeroWithANullEnd) {
    const TypeParam* const null = nullptr;
    TypeParam character = 0;
    TypeParam* end = &character;
    EXPECT_EQ(util::stringToInt(null, &end), 0);
    EXPECT_EQ(end, nullptr);
    EXPECT_EQ(util::stringToDouble(null, nullptr), 0.0);
    EXPECT_EQ(util::hexToInt(null, nullptr), 0);
    int integer = 5;
    double number = 5;
    EXPECT_FALSE(util::tryStringToInteger(null, integer));
    EXPECT_FALSE(util::tryStringToDouble(null, number));
    EXPECT_EQ(integer, 5);
    EXPECT_EQ(number, 5);
    EXPECT_FALSE(util::canCoerceToInteger(null, true));
    EXPECT_FALSE(util::canCoerceToDouble(null, true));
}

TEST(NumberParsingWidths, NoBreakSpaceIsWhiteSpaceInWideTextOnly) {
    wchar_t* wideEnd = nullptr;
    EXPECT_EQ(util::stringToInt(L"\u00A07", &wideEnd), 7);
    const char* const narrow = "\xA0"
                               "7";
    char* end = nullptr;
    EXPECT_EQ(util::stringToInt(narrow, &end), 0);
    EXPECT_EQ(end, narrow);
}

TYPED_TEST(NumberParsing, HexToInteger_TakesNeitherSignNorPrefix) {
    const std::vector<Row<int>> rows = {{"ff", 255, 2},
                                        {" Ab ", 171, 4},
                                        {"-1", 0, 0},
                                        {"0x1F", 0, 1},
                                        {"FFFFFFFF", -1, 8},
                                        {"g", 0, 0},
                                        {"12345678 ", 0x12345678, 9}};
    for (const Row<int>& row : rows) {
        EXPECT_EQ((scan<TypeParam, int>(row.text, util::hexToInteger)), (Scanned<int>{row.value, row.read}))
            << row.text;
        EXPECT_EQ((scan<TypeParam, int>(row.text, util::hexToInt)), (Scanned<int>{row.value, row.read})) << row.text;
    }
}

TEST(NumberParsingWidths, HexDigitLimitsDiffer) {
    EXPECT_EQ((scan<wchar_t, int>("1234567890", util::hexToInteger)), (Scanned<int>{0x12345678, 8}));
    EXPECT_EQ((scan<char, int>("1234567890", util::hexToInteger)), (Scanned<int>{0x34567890, 10}));
    EXPECT_EQ((scan<char, int>("12345678901234567", util::hexToInteger)),
              (Scanned<int>{static_cast<int>(0x90123456), 16}));
}

std::uint64_t bitsOf(double value) {
    return std::bit_cast<std::uint64_t>(value);
}

TYPED_TEST(NumberParsing, StringToDouble_FollowsItsArithmetic) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    const std::vector<Row<double>> rows = {
        {"1.5e3x", 1500.0, 5},
        {"2e", 2.0, 2},
        {"2e+", 2.0, 3},
        {"1e999", kInfinite, 5},
        {"-1e999", -kInfinite, 6},
        {"1e-999", 0.0, 6},
        {"-", -0.0, 0},
        {"  .", 0.0, 0},
        {"NaN", 0.0, 0},
        {"Inf", 0.0, 0},
        {".5", 0.5, 2},
        {"5.", 5.0, 2},
        {"1.2.3", 1.2, 3},
        {"0x10", 0.0, 1},
        {"0.000000000000000000001", 0.0, 23},
        {" 7 ", 7.0, 2},
        {"123456789012345678901", 123456789012345678.0 * 1000.0, 21},
    };
    for (const Row<double>& row : rows) {
        const Scanned<double> scanned = scan<TypeParam, double>(row.text, util::stringToDouble);
        EXPECT_EQ(bitsOf(scanned.value), bitsOf(row.value)) << row.text << " " << scanned.value;
        EXPECT_EQ(scanned.read, row.read) << row.text;
    }
}

TYPED_TEST(NumberParsing, StringToDouble_ZeroTimesAnInfiniteFactorIsNotANumber) {
    const std::basic_string<TypeParam> text = test::text<TypeParam>("0e999");
    EXPECT_NE(util::stringToDouble(text.c_str(), nullptr), util::stringToDouble(text.c_str(), nullptr));
}

TYPED_TEST(NumberParsing, DecimalCommaOfALocaleMeansNothing) {
    for (const char* locale : {"de-DE", "German_Germany", "fr-FR"}) {
        if (std::setlocale(LC_ALL, locale)) {
            break;
        }
    }
    EXPECT_EQ((scan<TypeParam, double>("1.5", util::stringToDouble)), (Scanned<double>{1.5, 3}));
    EXPECT_EQ((scan<TypeParam, double>("1,5", util::stringToDouble)), (Scanned<double>{1.0, 1}));
    std::setlocale(LC_ALL, "C");
}

template <class Value>
struct Attempt {
    std::string_view text;
    bool result;
    Value value;  ///< what the caller's variable holds afterwards; it held 99
};

TYPED_TEST(NumberParsing, TryStringToInteger_WantsTheWholeText) {
    const std::vector<Attempt<int>> rows = {
        {" 42 ", true, 42}, {"-12.00", true, -12}, {"12.", true, 12},  {"12.5", false, 12}, {".0", false, 0},
        {"", false, 0},     {"-", false, 0},       {"-3x", false, -3}, {"007", true, 7},    {"4294967297", true, 1},
    };
    for (const Attempt<int>& row : rows) {
        int value = 99;
        EXPECT_EQ(util::tryStringToInteger(test::text<TypeParam>(row.text).c_str(), value), row.result) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
    }
}

TYPED_TEST(NumberParsing, TryStringToDouble_RefusesAZeroExponent) {
    const std::vector<Attempt<double>> rows = {
        {" 3.25 ", true, 3.25},   {"3.25x", false, 3.25}, {"1e0", false, 1.0},     {"-2e", false, 2.0},
        {"2.5E-00", false, 25.0}, {"1e2", true, 100.0},   {"-1.5", true, -1.5},    {"", false, 99},
        {".", false, 99},         {"-", false, 99},       {"1e2 x", false, 100.0},
    };
    for (const Attempt<double>& row : rows) {
        double value = 99;
        EXPECT_EQ(util::tryStringToDouble(test::text<TypeParam>(row.text).c_str(), value), row.result) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
    }
}

struct Coercion {
    std::string_view text;
    bool strict;   ///< without leading zeros
    bool lenient;  ///< with them
};

TYPED_TEST(NumberParsing, CanCoerceToInteger_KnowsLeadingZeros) {
    const std::vector<Coercion> rows = {
        {"0123", false, true},  {"0", true, true},    {"00", true, true},     {"0.0", true, true},
        {"0123.0", true, true}, {"12.0", true, true}, {"12.5", false, false}, {"-5 ", true, true},
        {"", false, false},     {".0", false, false}, {"1x", false, false},   {"+", false, false},
    };
    for (const Coercion& row : rows) {
        const std::basic_string<TypeParam> text = test::text<TypeParam>(row.text);
        EXPECT_EQ(util::canCoerceToInteger(text.c_str(), false), row.strict) << row.text;
        EXPECT_EQ(util::canCoerceToInteger(text.c_str(), true), row.lenient) << row.text;
    }
}

TYPED_TEST(NumberParsing, CanCoerceToDouble_AcceptsAZeroExponent) {
    const std::vector<Coercion> rows = {
        {"1e0", true, true},    {"1e", false, false},  {"1e+", false, false}, {"NaN", false, false},
        {"007", false, true},   {"007.5", true, true}, {"007e1", true, true}, {".5", true, true},
        {"5.", true, true},     {".", false, false},   {"+", false, false},   {" -1.5e-3 ", true, true},
        {"1.5x", false, false},
    };
    for (const Coercion& row : rows) {
        const std::basic_string<TypeParam> text = test::text<TypeParam>(row.text);
        EXPECT_EQ(util::canCoerceToDouble(text.c_str(), false), row.strict) << row.text;
        EXPECT_EQ(util::canCoerceToDouble(text.c_str(), true), row.lenient) << row.text;
    }
}

}  // namespace
