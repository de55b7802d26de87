#include "algorithms/DecimalDigits.h"

#include <bit>
#include <cmath>
#include <cstdint>

#include <gtest/gtest.h>

#include "algorithms/NumberText.h"
#include "support/DoubleTextReference.h"
#include "support/RandomText.h"

namespace {

namespace algorithms = vorel::algorithms;
using algorithms::Tie;

TEST(DecimalDigits, TiesAreRoundedByTheTieRule) {
    const auto expectDigits = [](double value, Tie tie, std::uint64_t digits, int exponent) {
        const auto decimal = algorithms::decimalDigits(value, tie);
        EXPECT_EQ(decimal.digits, digits) << value;
        EXPECT_EQ(decimal.exponent, exponent) << value;
    };
    const double even = 22351530439513.25;  // the fifteenth digit is 2, an even digit
    expectDigits(even, Tie::ToEven, 223515304395132, 13);
    expectDigits(even, Tie::AwayFromZero, 223515304395133, 13);
    const double odd = 22351530439513.75;  // the fifteenth digit is 7, an odd digit
    expectDigits(odd, Tie::ToEven, 223515304395138, 13);
    expectDigits(odd, Tie::AwayFromZero, 223515304395138, 13);
    const double small = std::ldexp(1.0, -22);  // 2.384185791015625e-7
    expectDigits(small, Tie::ToEven, 238418579101562, -7);
    expectDigits(small, Tie::AwayFromZero, 238418579101563, -7);
    expectDigits(std::nextafter(small, 1.0), Tie::ToEven, 238418579101563, -7);
    expectDigits(999999999999999.5, Tie::ToEven, 100000000000000, 15);  // is rounded up to 10^15
}

TEST(DecimalDigits, ExponentEstimateIsAtMostOneTooLow) {
    const auto expectEstimate = [](double value) {
        const algorithms::BinaryParts parts(value);
        const int zeros = std::countl_zero(parts.significand);
        const int exponent = test::ExactDecimal(value).exponent;
        const int estimate = algorithms::estimateExponent(parts.exponent + 63 - zeros, parts.significand << zeros);
        EXPECT_TRUE(estimate == exponent || estimate == exponent - 1) << value;
    };
    for (int exponent = -1074; exponent < 1024; ++exponent) {
        const double power = std::ldexp(1.0, exponent);
        expectEstimate(power);
        expectEstimate(std::nextafter(power, 0.0) == 0 ? power : std::nextafter(power, 0.0));
    }
    for (int exponent = -323; exponent < 309; ++exponent) {
        const double power = std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr);
        expectEstimate(power);
        expectEstimate(std::nextafter(power, HUGE_VAL));
    }
}

TEST(DecimalDigits, CompareWithHalf_IsExact) {
    // 2^-22 times 10^21 is 238418579101562.5.
    const algorithms::BinaryParts half(std::ldexp(1.0, -22));
    EXPECT_EQ(algorithms::compareWithHalf(half, 21, 238418579101562), 0);
    EXPECT_GT(algorithms::compareWithHalf(half, 21, 238418579101561), 0);
    EXPECT_LT(algorithms::compareWithHalf(half, 21, 238418579101563), 0);
    const algorithms::BinaryParts above(std::nextafter(std::ldexp(1.0, -22), 1.0));
    EXPECT_GT(algorithms::compareWithHalf(above, 21, 238418579101562), 0);
    // 12345678901234550 times 10^-2 is 123456789012345.5.
    const algorithms::BinaryParts large(12345678901234550.0);
    EXPECT_EQ(algorithms::compareWithHalf(large, -2, 123456789012345), 0);
}

TEST(DecimalDigits, OnlyTiesUseTheTieRule) {
    for (const algorithms::Tie tie : {algorithms::Tie::ToEven, algorithms::Tie::AwayFromZero}) {
        for (const std::uint64_t digits : {std::uint64_t{123456789012344}, std::uint64_t{123456789012345}}) {
            EXPECT_TRUE(algorithms::roundsUp(1, digits, tie));
            EXPECT_FALSE(algorithms::roundsUp(-1, digits, tie));
        }
        EXPECT_TRUE(algorithms::roundsUp(0, 123456789012345, tie));
        EXPECT_EQ(algorithms::roundsUp(0, 123456789012344, tie), tie == algorithms::Tie::AwayFromZero);
    }
}

TEST(DigitCharacters, SixteenDigitsHaveLeadingZeros) {
    test::RandomText random(20261121);
    for (int count = 0; count < 200000; ++count) {
        const std::uint64_t number = random.bits() >> (11 + random.below(53));
        char characters[16];
        algorithms::storeCharacters(algorithms::sixteenDigits(number % 10000000000000000), characters);
        const std::string digits = std::to_string(number % 10000000000000000);
        ASSERT_EQ(std::string(characters, 16), std::string(16 - digits.size(), '0') + digits);
    }
}

}  // namespace
