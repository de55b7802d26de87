#include "vorel/values/NumberFormatting.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/CommaLocale.h"
#include "support/GuardedBuffer.h"
#include "support/WideText.h"

namespace {

using vorel::BaseString;
namespace util = vorel::util;
using util::FO_Default;
using util::FO_JSON;
using util::FormattingOptions;

constexpr double kInfinite = std::numeric_limits<double>::infinity();

double fromBits(std::uint64_t bits) {
    return std::bit_cast<double>(bits);
}

struct Row {
    double value;
    std::string plain;
    std::string json;
};

const std::vector<Row>& rows() {
    static const std::vector<Row> kRows = {
        {0.0, "0", "0"},
        {-0.0, "0", "0"},
        {1e20, "1e+020", "1.0e+020"},
        {123.456, "123.456", "123.456"},
        {0.1, "0.1", "0.1"},
        {-0.1, "-0.1", "-0.1"},
        {1234567890123456789.0, "1.23456789012346e+018", "1.23456789012346e+018"},
        {0.05, "5.e-002", "5.0e-002"},
        {0.012, "1.2e-002", "1.2e-002"},
        {1e-7, "1.e-007", "1.0e-007"},
        {-1e-7, "-1.e-007", "-1.0e-007"},
        {0.09999999999999999, "1.e-001", "1.0e-001"},
        {1e15, "1e+015", "1.0e+015"},
        {999999999999999.0, "999999999999999", "999999999999999"},
        {1e100, "1e+100", "1.0e+100"},
        {5e-324, "4.94065645841247e-324", "4.94065645841247e-324"},
        {std::numeric_limits<double>::max(), "1.79769313486232e+308", "1.79769313486232e+308"},
        // An exact tie is rounded to even for magnitudes of at least 0.1, and away from zero for smaller magnitudes.
        {-22351530439513.25, "-22351530439513.2", "-22351530439513.2"},
        {22351530439513.75, "22351530439513.8", "22351530439513.8"},
        {std::ldexp(1.0, -22), "2.38418579101563e-007", "2.38418579101563e-007"},
        {kInfinite, "Inf", "\"Infinity\""},
        {-kInfinite, "-Inf", "\"-Infinity\""},
        {fromBits(0x7FF80000000007A2), "NA", "\"NA\""},
        {fromBits(0xFFF80000000007A2), "NA", "\"NA\""},
        {std::numeric_limits<double>::quiet_NaN(), "NaN", "\"NaN\""},
        // Only one bit pattern, with either sign, means "not available". The following patterns are ordinary NaN
        // values.
        {fromBits(0x7FF80000000007A3), "NaN", "\"NaN\""},
        {fromBits(0x7FF80001000007A2), "NaN", "\"NaN\""},
        {fromBits(0xFFF80001000007A2), "NaN", "\"NaN\""},
        {fromBits(0x7FFC0000000007A2), "NaN", "\"NaN\""},
        {fromBits(0x7FF00000000007A2), "NaN", "\"NaN\""},
    };
    return kRows;
}

std::string narrow(double value, FormattingOptions options) {
    test::GuardedBuffer<char> buffer(64);
    EXPECT_EQ(util::doubleToString(value, buffer.data(), 64, options), buffer.data());
    EXPECT_TRUE(buffer.isIntact());
    return buffer.data();
}

std::wstring wide(double value, FormattingOptions options) {
    test::GuardedBuffer<wchar_t> buffer(64);
    EXPECT_EQ(util::doubleToString(value, buffer.data(), 64, options), buffer.data());
    EXPECT_TRUE(buffer.isIntact());
    return buffer.data();
}

TEST(NumberFormatting, DoubleToString_FormatsValues) {
    for (const Row& row : rows()) {
        EXPECT_EQ(narrow(row.value, FO_Default), row.plain);
        EXPECT_EQ(narrow(row.value, FO_JSON), row.json);
        EXPECT_EQ(wide(row.value, FO_Default), test::widened(row.plain));
        EXPECT_EQ(wide(row.value, FO_JSON), test::widened(row.json));
    }
}

TEST(NumberFormatting, DoubleToString_IgnoresUnknownOptions) {
    EXPECT_EQ(narrow(0.05, static_cast<FormattingOptions>(FO_JSON | 2)), "5.0e-002");
    EXPECT_EQ(wide(kInfinite, static_cast<FormattingOptions>(FO_JSON | 2)), L"\"Infinity\"");
    EXPECT_EQ(narrow(0.05, static_cast<FormattingOptions>(2)), "5.e-002");
}

TEST(NumberFormatting, DoubleToString_WritesZeroToNarrowBuffersForAnySize) {
    for (const double zero : {0.0, -0.0}) {
        for (const unsigned int size : {0u, 1u, 2u, 64u}) {
            test::GuardedBuffer<char> buffer(64);
            EXPECT_STREQ(util::doubleToString(zero, buffer.data(), size, FO_Default), "0");
            EXPECT_EQ(std::string(buffer.data() + 2, 62), std::string(62, buffer.kFill))
                << "the units after the terminator must not change";
        }
        test::GuardedBuffer<wchar_t> wideBuffer(1);
        util::doubleToString(zero, wideBuffer.data(), 1, FO_Default);
        EXPECT_EQ(wideBuffer.data()[0], L'0');
    }
}

TEST(NumberFormatting, DoubleToString_ZeroesTheLastUnitOfANarrowBufferOnlyForMagnitudesFrom0_1) {
    for (const double value : {0.05, -1e-7}) {
        test::GuardedBuffer<char> buffer(64);
        util::doubleToString(value, buffer.data(), 64, FO_Default);
        EXPECT_EQ(buffer.data()[63], buffer.kFill);
    }
    for (const double value : {0.1, -123.456, kInfinite}) {
        test::GuardedBuffer<char> buffer(64);
        util::doubleToString(value, buffer.data(), 64, FO_Default);
        EXPECT_EQ(buffer.data()[63], 0);
    }
}

TEST(NumberFormatting, DoubleToString_TruncatesSpecialTextsAndMagnitudesFrom0_1) {
    for (const double value : {123.456, kInfinite, -kInfinite, fromBits(0x7FF80000000007A2)}) {
        const std::string whole = narrow(value, FO_Default);
        for (unsigned int size = 1; size <= 64; ++size) {
            test::GuardedBuffer<char> buffer(size);
            util::doubleToString(value, buffer.data(), size, FO_Default);
            EXPECT_TRUE(buffer.isIntact());
            EXPECT_EQ(buffer.data()[size - 1], 0);
            EXPECT_EQ(std::string(buffer.data()), whole.substr(0, size - 1));
        }
    }
}

// The text is truncated first. Then the ".0" of JSON is added if it fits. Last, the third digit of the exponent is
// added if it still fits.
TEST(NumberFormatting, DoubleToString_NormalisesNarrowTextsAfterTruncation) {
    struct Cut {
        double value;
        unsigned int size;
        const char* plain;
        const char* json;
    };
    for (const Cut& cut :
         {Cut{1e20, 5, "1e+2", "1e+2"}, Cut{1e20, 6, "1e+20", "1e+20"}, Cut{1e20, 7, "1e+020", "1e+020"},
          Cut{1e20, 8, "1e+020", "1.0e+20"}, Cut{1e20, 9, "1e+020", "1.0e+020"},
          Cut{1.5e100, 31, "1.5e+100", "1.5e+100"}, Cut{-1.25e20, 5, "-1.2", "-1.2"},
          Cut{1.25e20, 7, "1.25e+", "1.25e+"}, Cut{1.25e20, 10, "1.25e+020", "1.25e+020"}}) {
        for (const FormattingOptions options : {FO_Default, FO_JSON}) {
            test::GuardedBuffer<char> buffer(cut.size);
            EXPECT_STREQ(util::doubleToString(cut.value, buffer.data(), cut.size, options),
                         options == FO_JSON ? cut.json : cut.plain)
                << cut.value << " in " << cut.size;
            EXPECT_TRUE(buffer.isIntact());
            EXPECT_EQ(buffer.data()[cut.size - 1], 0);
        }
    }
}

TEST(NumberFormatting, DoubleToString_DoesNotTruncateNarrowTextsOfMagnitudesBelow0_1) {
    struct Small {
        double value;
        unsigned int size;
        const char* plain;
        const char* json;
    };
    for (const Small& small : {Small{1e-7, 0, "1.e-07", "1.0e-07"}, Small{1e-7, 7, "1.e-07", "1.0e-07"},
                               Small{0.01, 5, "1.e-02", "1.0e-02"}, Small{-1e-7, 8, "-1.e-07", "-1.0e-07"},
                               Small{-1e-7, 9, "-1.e-007", "-1.0e-07"}, Small{-1e-7, 10, "-1.e-007", "-1.0e-007"},
                               Small{1e-300, 0, "1.e-300", "1.0e-300"}, Small{1e-7, 8, "1.e-007", "1.0e-07"},
                               Small{1e-7, 9, "1.e-007", "1.0e-007"}, Small{-0.0625, 1, "-6.25e-02", "-6.25e-02"},
                               Small{1e-300 / 3, 3, "3.33333333333333e-301", "3.33333333333333e-301"}}) {
        for (const FormattingOptions options : {FO_Default, FO_JSON}) {
            test::GuardedBuffer<char> buffer(64);
            EXPECT_STREQ(util::doubleToString(small.value, buffer.data(), small.size, options),
                         options == FO_JSON ? small.json : small.plain)
                << small.value << " in " << small.size;
        }
    }
}

TEST(NumberFormatting, DoubleToString_WritesTheSameTextForAllSizesFrom26) {
    for (const double value : {1e20, -1e-20 / 3, 123.456, -123456789012345.0, 1e300 / 3, 0.1, 0.05, 5e-324}) {
        for (const FormattingOptions options : {FO_Default, FO_JSON}) {
            const std::string whole = narrow(value, options);
            for (unsigned int size = 26; size <= 64; ++size) {
                test::GuardedBuffer<char> buffer(size);
                test::GuardedBuffer<wchar_t> wideBuffer(size);
                EXPECT_EQ(util::doubleToString(value, buffer.data(), size, options), whole) << size;
                EXPECT_EQ(util::doubleToString(value, wideBuffer.data(), size, options), test::widened(whole)) << size;
            }
        }
    }
}

TEST(NumberFormatting, DoubleToString_IgnoresTheLocale) {
    const test::CommaLocale locale;
    if (!locale.isSet()) {
        GTEST_SKIP() << "no locale with a decimal comma is available";
    }
    EXPECT_EQ(narrow(1.5, FO_Default), "1.5");
    EXPECT_EQ(wide(1.5e-7, FO_Default), L"1.5e-007");
}

TEST(NumberFormatting, DoubleToString_DoesNotTerminateTruncatedWideText) {
    const std::pair<double, std::wstring> texts[] = {{123.456, L"123.456"},
                                                     {0.05, L"5.0e-002"},
                                                     {kInfinite, L"\"Infinity\""},
                                                     {fromBits(0x7FF80000000007A2), L"\"NA\""}};
    for (const auto& [value, whole] : texts) {
        for (unsigned int size = 0; size <= 15; ++size) {
            test::GuardedBuffer<wchar_t> buffer(size);
            util::doubleToString(value, buffer.data(), size, FO_JSON);
            EXPECT_TRUE(buffer.isIntact());
            const std::size_t copied = std::min<std::size_t>(size, whole.size());
            EXPECT_EQ(std::wstring(buffer.data(), copied), whole.substr(0, copied));
            if (size > whole.size()) {
                EXPECT_EQ(buffer.data()[whole.size()], 0);
            }
        }
    }
    EXPECT_EQ(util::doubleToString(1.0, static_cast<wchar_t*>(nullptr), 64, FO_Default), nullptr);
}

TEST(NumberFormatting, AppendDoubleAndAppendInteger_AddToTheEnd) {
    BaseString<wchar_t> text(L"x=");
    util::appendDouble(text, 0.05);
    util::appendInteger(text, -2147483647 - 1);
    util::appendDouble(text, 0.0);
    util::appendDouble(text, -kInfinite);
    EXPECT_EQ(text, L"x=5.e-002-21474836480-Inf");
    for (const Row& row : rows()) {
        BaseString<wchar_t> alone;
        util::appendDouble(alone, row.value);
        EXPECT_EQ(alone, test::widened(row.plain).c_str());
    }
}

/// A number is written directly into the string if the remaining capacity is sufficient.
TEST(NumberFormatting, Append_GrowsTheStringOnlyIfTheNumberDoesNotFit) {
    for (unsigned int before = 0; before <= 40; ++before) {
        const std::wstring prefix(before, L'x');
        for (const unsigned int capacity : {16u, 32u, 64u, 128u}) {
            const auto expectAppended = [&](const std::wstring& appended, auto append) {
                BaseString<wchar_t> text;
                text.reserve(capacity - 1);
                text.append(prefix.c_str());
                append(text);
                EXPECT_EQ(text.view(), prefix + appended);
                EXPECT_EQ(text.c_str()[text.length()], 0);
                // A string grows only if the text does not fit. The new capacity is the next power of two.
                const auto needed = static_cast<unsigned int>(prefix.size() + appended.size() + 1);
                EXPECT_EQ(text.capacity(), std::max(capacity, std::bit_ceil(needed))) << before;
            };
            expectAppended(L"7", [](auto& text) { util::appendInteger(text, 7); });
            expectAppended(L"-2147483648", [](auto& text) { util::appendInteger(text, -2147483647 - 1); });
            expectAppended(L"-1.79769313486232e+308",
                           [](auto& text) { util::appendDouble(text, -std::numeric_limits<double>::max()); });
            expectAppended(L"0.5", [](auto& text) { util::appendDouble(text, 0.5); });
        }
    }
}

TEST(NumberFormatting, Integers_AreTruncatedAndAlwaysTerminated) {
    const auto expectCuts = [](const std::string& whole, auto write) {
        for (unsigned int size = 1; size <= 40; ++size) {
            test::GuardedBuffer<char> buffer(size);
            test::GuardedBuffer<wchar_t> wideBuffer(size);
            EXPECT_EQ(write(buffer.data(), size), whole.substr(0, size - 1));
            EXPECT_EQ(write(wideBuffer.data(), size), test::widened(whole.substr(0, size - 1)));
            EXPECT_TRUE(buffer.isIntact() && wideBuffer.isIntact());
            EXPECT_EQ(buffer.data()[size - 1], 0);
            EXPECT_EQ(wideBuffer.data()[size - 1], 0);
        }
    };
    expectCuts("-9223372036854775808", [](auto* buffer, unsigned int size) {
        return util::Int64ToStr(std::numeric_limits<long long>::min(), buffer, size);
    });
    expectCuts("-7", [](auto* buffer, unsigned int size) { return util::Int64ToStr(-7, buffer, size); });
    expectCuts("18446744073709551615",
               [](auto* buffer, unsigned int size) { return util::UInt64ToStr(18446744073709551615u, buffer, size); });
    expectCuts("7", [](auto* buffer, unsigned int size) { return util::UInt64ToStr(7, buffer, size); });
    char buffer[24];
    EXPECT_STREQ(util::UInt64ToStr(18446744073709551615u, buffer, 24), "18446744073709551615");
    EXPECT_STREQ(util::UInt64ToStr(0, buffer, 24), "0");
    EXPECT_EQ(util::Int64ToStr(1, static_cast<char*>(nullptr), 24), nullptr);
    EXPECT_EQ(util::UInt64ToStr(1, static_cast<wchar_t*>(nullptr), 24), nullptr);
    std::uint64_t power = 1;
    for (std::size_t digits = 1; digits < 20; ++digits, power *= 10) {
        EXPECT_EQ(util::UInt64ToStr(power, buffer, 24), "1" + std::string(digits - 1, '0'));
        EXPECT_EQ(util::Int64ToStr(-static_cast<long long>(power), buffer, 24), "-1" + std::string(digits - 1, '0'));
    }
}

TEST(NumberFormatting, SizeZero_WritesNothingForIntegersAndMagnitudesFrom0_1) {
    char buffer[] = "ab";
    wchar_t wideBuffer[] = L"ab";
    for (const double value : {1.5, -1e20, std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(util::doubleToString(value, buffer, 0, util::FO_Default), buffer);
        EXPECT_EQ(util::doubleToString(value, wideBuffer, 0, util::FO_Default), wideBuffer);
    }
    EXPECT_EQ(util::Int64ToStr(-7, buffer, 0), buffer);
    EXPECT_EQ(util::UInt64ToStr(7, wideBuffer, 0), wideBuffer);
    EXPECT_STREQ(buffer, "ab");
    EXPECT_STREQ(wideBuffer, L"ab");
}

/// Calls `write(buffer, size)`, which writes the text `whole`, with narrow and wide buffers of every size from `least`
/// to 80. `write` must not change the units after the terminator of the text, with one exception. It must set the last
/// unit of a narrow buffer to zero if `endsNarrow` is true, and the last unit of a wide buffer if `endsWide` is true.
template <class Write>
void expectOnlyTheText(const std::string& whole, bool endsNarrow, bool endsWide, unsigned int least, Write&& write) {
    const auto expectOnly = [&](auto& buffer, bool ends) {
        write(buffer.data(), static_cast<unsigned int>(buffer.size()));
        EXPECT_TRUE(buffer.isIntact());
        for (std::size_t at = whole.size() + 1; at < buffer.size(); ++at) {
            const bool isEnd = ends && at + 1 == buffer.size();
            EXPECT_EQ(buffer.data()[at], isEnd ? 0 : buffer.kFill) << whole << ", unit " << at;
        }
    };
    for (unsigned int size = least; size <= 80; ++size) {
        test::GuardedBuffer<char> narrowBuffer(size);
        test::GuardedBuffer<wchar_t> wideBuffer(size);
        expectOnly(narrowBuffer, endsNarrow);
        expectOnly(wideBuffer, endsWide);
    }
}

TEST(NumberFormatting, OnlyTheLastUnitMayChangeAfterTheTerminator) {
    for (const long long value : {0ll, 7ll, -7ll, 1234567890123456789ll, std::numeric_limits<long long>::min()}) {
        expectOnlyTheText(std::to_string(value), true, true, 1,
                          [=](auto* buffer, unsigned int size) { util::Int64ToStr(value, buffer, size); });
    }
    std::string digits;
    for (const char digit : std::string("12345678901234567890")) {  // creates a number of each length
        digits += digit;
        const unsigned long long value = std::stoull(digits);
        expectOnlyTheText(digits, true, true, 1,
                          [=](auto* buffer, unsigned int size) { util::UInt64ToStr(value, buffer, size); });
        if (digits.size() < 20) {
            const auto negative = -static_cast<long long>(value);
            expectOnlyTheText('-' + digits, true, true, 1,
                              [=](auto* buffer, unsigned int size) { util::Int64ToStr(negative, buffer, size); });
        }
    }
    expectOnlyTheText("18446744073709551615", true, true, 1,
                      [](auto* buffer, unsigned int size) { util::UInt64ToStr(18446744073709551615u, buffer, size); });
    for (const Row& row : rows()) {
        const bool endsBuffer = row.value != 0.0 && !(row.value < 0.1 && row.value > -0.1);
        for (const FormattingOptions options : {FO_Default, FO_JSON}) {
            expectOnlyTheText(
                options == FO_JSON ? row.json : row.plain, endsBuffer, false, 64,
                [&](auto* buffer, unsigned int size) { util::doubleToString(row.value, buffer, size, options); });
        }
    }
}

TEST(NumberFormatting, Round_RoundsHalvesDown) {
    const double rounded[][2] = {{0.5, 0.0}, {1.5, 1.0},   {-0.5, -1.0}, {1.6, 2.0},
                                 {2.5, 2.0}, {-2.5, -3.0}, {3.0, 3.0},   {-1.4, -1.0}};
    for (const auto& [value, expected] : rounded) {
        EXPECT_EQ(util::round(value), expected) << value;
    }
}

/// The cases include zeros of both signs, and values to which 0.5 cannot be added without rounding.
TEST(NumberFormatting, Round_IsExact) {
    const double rounded[][2] = {{0.3, 0.0},
                                 {0.5, 0.0},
                                 {0.49999999999999994, 0.0},
                                 {-0.2, -0.0},
                                 {-0.0, -0.0},
                                 {2251799813685248.5, 2251799813685248.0},
                                 {-2251799813685248.5, -2251799813685249.0},
                                 {4503599627370497.0, 4503599627370497.0},
                                 {-4503599627370497.0, -4503599627370497.0},
                                 {9007199254740991.0, 9007199254740991.0},
                                 {1e300, 1e300},
                                 {kInfinite, kInfinite},
                                 {-kInfinite, -kInfinite}};
    for (const auto& [value, expected] : rounded) {
        EXPECT_EQ(std::bit_cast<std::uint64_t>(util::round(value)), std::bit_cast<std::uint64_t>(expected)) << value;
    }
    EXPECT_TRUE(std::isnan(util::round(std::numeric_limits<double>::quiet_NaN())));
}

TEST(NumberFormatting, DoubleHashCode_HashesTheBytes) {
    EXPECT_EQ(util::doubleHashCode(0.0), 0u);
    EXPECT_EQ(util::doubleHashCode(1.0), 7503u);
    EXPECT_EQ(util::doubleHashCode(-0.0), 128u);
}

}  // namespace
