// Doubles: significant digits, exponent and the order of the arithmetic. All bits of a result are compared. An expected
// value is the number itself, or the result of the multiplications and divisions that the parser must use, in their
// order.

#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/CommaLocale.h"
#include "support/Scans.h"
#include "support/Widths.h"
#include "vorel/values/NumberParsing.h"

namespace {

using test::scan;
using test::Scanned;
namespace util = vorel::util;

template <class T>
class NumberParsingDouble : public ::testing::Test {};
TYPED_TEST_SUITE(NumberParsingDouble, test::CharacterTypes, test::CharacterNames);

constexpr double kInfinite = std::numeric_limits<double>::infinity();

struct Row {
    const char* text;
    double value;
    std::ptrdiff_t read;  ///< the number of units that the parser reads
};

template <class T>
void expectRows(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        EXPECT_EQ((scan<T, double>(row.text, util::stringToDouble)), (Scanned<double>{row.value, row.read}))
            << row.text;
    }
}

TYPED_TEST(NumberParsingDouble, ReadsSignDigitsAndDecimalPoint) {
    expectRows<TypeParam>({
        {"0", 0.0, 1},
        {"7", 7.0, 1},
        {"1.5", 1.5, 3},
        {"+1.5", 1.5, 4},
        {"-1.5", -1.5, 4},
        {" \t\r\n2.25", 2.25, 8},
        {".5", 0.5, 2},
        {"-.5", -0.5, 3},
        {"5.", 5.0, 2},
        {"-5.", -5.0, 3},
        {"007.50", 7.5, 6},
        {"0.1", 1.0 / 10.0, 3},
        {"-0", -0.0, 2},
        {"-0.0", -0.0, 4},
        {"+0", 0.0, 2},
    });
}

TYPED_TEST(NumberParsingDouble, StopsDirectlyAfterTheNumber) {
    expectRows<TypeParam>({
        {" 7 ", 7.0, 2},
        {"1.5 ", 1.5, 3},
        {"1e2 ", 100.0, 3},
        {"1.2.3", 12.0 / 10.0, 3},
        {"1..2", 1.0, 2},
        {"1,5", 1.0, 1},
        {"1-2", 1.0, 1},
        {"1x", 1.0, 1},
        {"1d5", 1.0, 1},
        {"1f", 1.0, 1},
        {"0x10", 0.0, 1},
        {"0x1p3", 0.0, 1},
        {"1 e5", 1.0, 1},
    });
}

TYPED_TEST(NumberParsingDouble, WithoutDigitsNothingIsRead) {
    expectRows<TypeParam>({
        {"", 0.0, 0},
        {"  ", 0.0, 0},
        {"+", 0.0, 0},
        {"-", -0.0, 0},
        {"  -", -0.0, 0},
        {".", 0.0, 0},
        {"  .", 0.0, 0},
        {"-.", -0.0, 0},
        {"..", 0.0, 0},
        {".e5", 0.0, 0},
        {"e5", 0.0, 0},
        {"-e5", -0.0, 0},
        {"--1", -0.0, 0},
        {"+-1", 0.0, 0},
        {"- 1", -0.0, 0},
        {"x", 0.0, 0},
        {" -x", -0.0, 0},
        {",5", 0.0, 0},
    });
}

TYPED_TEST(NumberParsingDouble, RejectsNaNAndInfinity) {
    for (const char* const word : {"NaN", "nan", "Inf", "inf", "Infinity", "INFINITY"}) {
        expectRows<TypeParam>({{word, 0.0, 0}});
        expectRows<TypeParam>({{(std::string("-") + word).c_str(), -0.0, 0}});
    }
}

TYPED_TEST(NumberParsingDouble, ReadsAnExponentEvenWithoutDigits) {
    expectRows<TypeParam>({
        {"1.5e3x", 1500.0, 5},   {"1E5", 1e5, 3},       {"1e+05", 1e5, 5},   {"1e-5", 1.0 / 1e5, 4},
        {"5.e1", 50.0, 4},       {".5e1", 5.0, 4},      {"-2e2", -200.0, 4}, {"1e0", 1.0, 3},
        {"25e-1", 2.5, 5},       {"2e", 2.0, 2},        {"2E", 2.0, 2},      {"2e+", 2.0, 3},
        {"2.5e-", 2.5, 5},       {"2ex", 2.0, 2},       {"2e 5", 2.0, 2},    {"1e+-5", 1.0, 3},
        {"1e--5", 1.0, 3},       {"1e5e5", 1e5, 3},     {"1e5.5", 1e5, 3},   {"1e000000000000000000003", 1000.0, 23},
        {"1e-0003", 1 / 1e3, 7}, {"12.5e1 ", 125.0, 6},
    });
}

/// The number is scaled by the product of the powers 1e1, 1e2, 1e4 … 1e256 for the bits that are set in the exponent.
TYPED_TEST(NumberParsingDouble, MultipliesPowersOfTenInTheOrderOfTheExponentBits) {
    const double factor308 = 1.0e4 * 1.0e16 * 1.0e32 * 1.0e256;
    expectRows<TypeParam>({
        {"1e22", 1e22, 4},
        {"1e33", 0x1.8a6e32246c99dp+109, 4},     // not the nearest double, which ends in 9c
        {"1e-24", 0x1.357c299a88ea8p-80, 5},     // the nearest double ends in a7
        {"-1e-37", -0x1.1039d428a8b8ep-123, 6},  // the nearest double ends in 8f
        {"1e308", factor308, 5},
        {"0.1e309", factor308, 7},
        {"1e-308", 1.0 / factor308, 6},
        {"17976931348623157e292", 17976931348623157.0 * (1.0e4 * 1.0e32 * 1.0e256), 21},
        {"1.7976931348623157e308", 17976931348623157.0 * (1.0e4 * 1.0e32 * 1.0e256), 22},
    });
}

/// If the absolute value of the exponent used for the scaling is above 308, the power of ten is infinite. So a division
/// by this power gives 0, even if the number is in the range of a double.
TYPED_TEST(NumberParsingDouble, ExponentsOutOfRangeGiveInfinityOrZero) {
    expectRows<TypeParam>({
        {"1e309", kInfinite, 5},
        {"2e308", kInfinite, 5},
        {"1e511", kInfinite, 5},
        {"1e512", kInfinite, 5},
        {"1e999", kInfinite, 5},
        {"-1e999", -kInfinite, 6},
        {"1e1024", kInfinite, 6},
        {"1e2147483647", kInfinite, 12},
        {"1e-309", 0.0, 6},  // the divisor 1e309 is infinite
        {"10e-309", 0.0, 7},
        {"123456789012345678e-320", 0.0, 23},
        {"1e-512", 0.0, 6},
        {"1e-999", 0.0, 6},
        {"-1e-999", -0.0, 7},
        {"1e-2147483647", 0.0, 13},
        {"0e308", 0.0, 5},  // in range
        {"0e-999", 0.0, 6},
        {"-0e-999", -0.0, 7},
    });
}

TYPED_TEST(NumberParsingDouble, ZeroTimesAnInfiniteFactorIsNaN) {
    for (const char* const text : {"0e309", "0e999", "-0e999", "0.0e311"}) {
        const std::basic_string<TypeParam> units = test::text<TypeParam>(text);
        TypeParam* end = nullptr;
        const double value = util::stringToDouble(units.c_str(), &end);
        EXPECT_NE(value, value) << text;
        EXPECT_EQ(*end, 0) << text;
    }
}

TYPED_TEST(NumberParsingDouble, ExponentsWrapAroundAt32Bits) {
    expectRows<TypeParam>({
        {"1e4294967296", 1.0, 12},
        {"1e4294967298", 100.0, 12},
        {"1e-4294967298", 1.0 / 100.0, 13},
        {"1e4294967294", 1.0 / 100.0, 12},  // the exponent wraps to -2
        {"1e-4294967294", 100.0, 13},
        {"1e18446744073709551618", 100.0, 22},
        {"1e2147483648", 0.0, 12},          // the exponent wraps to the smallest int
        {"1e-2147483648", 0.0, 13},         // negating the smallest int gives the same value
        {"1.5e2147483648", kInfinite, 14},  // subtracting 1 for the digit of the fraction gives the largest int
        {"1.5e-2147483648", kInfinite, 15},
        {"1.5e4294967297", 15.0, 14},
    });
}

TYPED_TEST(NumberParsingDouble, OnlyTheFirstEighteenDigitsAreUsed) {
    const double eighteen = 123456789.0 * 1.0e9 + 12345678.0;
    expectRows<TypeParam>({
        {"123456789012345678", eighteen, 18},
        {"1234567890123456789", eighteen * 1e1, 19},
        {"123456789012345678901", eighteen * (1e1 * 1e2), 21},
        {"-123456789012345678999e2", -eighteen * (1e1 * 1e4), 24},
        {"123456789.0123456789", eighteen / (1e1 * 1e8), 20},
        {"1.00000000000000000000000009", 1.0, 28},
        {"0.000000000000000000001", 0.0, 23},  // leading zeros count as digits
        {"000000000000000000001", 0.0, 21},
        {"-0000000000000000001", -0.0, 20},
        {"000000000000000001", 1.0, 18},
        {"0.00000000000000001", 1.0 / (1e1 * 1e16), 19},
        {"0.000000000000000019", 1.0 / (1e1 * 1e16), 20},
        {"0.123456789012345678", 12345678901234567.0 / (1e1 * 1e16), 20},
    });
}

TYPED_TEST(NumberParsingDouble, CombinesTwoGroupsOfNineDigits) {
    expectRows<TypeParam>({
        {"999999999", 999999999.0, 9},
        {"9999999999", 9999999999.0, 10},
        {"1000000000", 1000000000.0, 10},
        {"9007199254740993", 9007199254740992.0, 16},  // a tie is rounded to even
        {"9007199254740995", 9007199254740996.0, 16},
        {"999999999999999999", 1.0e18, 18},
    });
}

TYPED_TEST(NumberParsingDouble, ReadsTextsOfAnyLength) {
    const std::string zeros(500, '0');
    const std::string manyWhole = "1" + zeros;
    const std::string manyFraction = "1." + zeros + "e2";
    const std::string balanced = "1" + zeros + "e-500";
    expectRows<TypeParam>({
        {manyWhole.c_str(), kInfinite, 501},
        {manyFraction.c_str(), 100.0, 504},
        {balanced.c_str(), 1.0, 506},  // the number of unused zeros is added to the exponent before scaling
    });
}

TYPED_TEST(NumberParsingDouble, IgnoresTheDecimalCommaOfALocale) {
    const test::CommaLocale locale;
    if (!locale.isSet()) {
        GTEST_SKIP() << "no locale with a decimal comma is available";
    }
    expectRows<TypeParam>({{"1.5", 1.5, 3}, {"1,5", 1.0, 1}, {"1.234,5", 1234.0 / 1e3, 5}});
    double value = 99;
    EXPECT_TRUE(util::tryStringToDouble(test::text<TypeParam>("1.5").c_str(), value));
    EXPECT_EQ(value, 1.5);
    EXPECT_FALSE(util::tryStringToDouble(test::text<TypeParam>("1,5").c_str(), value));
    EXPECT_TRUE(util::canCoerceToDouble(test::text<TypeParam>("1.5").c_str(), false));
    EXPECT_FALSE(util::canCoerceToDouble(test::text<TypeParam>("1,5").c_str(), false));
}

TEST(NumberParsingDoubleWidths, NoBreakSpaceIsWhiteSpaceOnlyInWideText) {
    constexpr const char* kText = "\xA0"
                                  "2.5\xA0";
    expectRows<wchar_t>({{kText, 2.5, 4}});
    expectRows<char>({{kText, 0.0, 0}, {"2.5\xA0", 2.5, 3}});
}

TEST(NumberParsingDoubleWidths, WideUnitsAreNotTruncated) {
    const auto scanned = [](const std::wstring& text) {
        return test::scanUnits<wchar_t, double>(text, util::stringToDouble);
    };
    EXPECT_EQ(scanned(L"1\u0131"), (Scanned<double>{1.0, 1}));    // low byte '1'
    EXPECT_EQ(scanned(L"1\u012E5"), (Scanned<double>{1.0, 1}));   // low byte '.'
    EXPECT_EQ(scanned(L"1\u01655"), (Scanned<double>{1.0, 1}));   // low byte 'e'
    EXPECT_EQ(scanned(L"1e\u012D5"), (Scanned<double>{1.0, 2}));  // low byte '-'
    EXPECT_EQ(scanned(L"1.\uFF15"), (Scanned<double>{1.0, 2}));
    EXPECT_EQ(scanned(L"\u012D5"), (Scanned<double>{0.0, 0}));
}

}  // namespace
