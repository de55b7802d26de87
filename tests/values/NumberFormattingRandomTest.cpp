// Formats about a million doubles of several kinds. Each text must be equal to the text of a reference implementation,
// which rounds the exact digits of the value. The texts of integers of every length are compared with `std::to_chars`,
// and the hashes of doubles with a polynomial.

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "support/CaseName.h"
#include "support/DoubleTextReference.h"
#include "support/RandomInputs.h"
#include "support/RandomText.h"
#include "support/WideText.h"
#include "vorel/values/NumberFormatting.h"

namespace {

namespace util = vorel::util;
using test::RandomText;

constexpr std::size_t kCapacity = 64;

double ofBits(std::uint64_t bits) {
    return std::bit_cast<double>(bits);
}

std::uint64_t bitsOf(double value) {
    return std::bit_cast<std::uint64_t>(value);
}

/// `value`, one of the next three doubles above it, or one of the next three doubles below it.
double neighbour(double value, RandomText& random) {
    return ofBits(bitsOf(value) + random.below(7) - 3);
}

double decimal(RandomText& random) {
    const std::string digits = random.digits(1 + random.below(17));
    const int exponent = static_cast<int>(random.below(45)) - 30;
    return std::strtod((digits + "e" + std::to_string(exponent)).c_str(), nullptr);
}

double powerOfTen(RandomText& random) {
    const int exponent = static_cast<int>(random.below(632)) - 323;
    return neighbour(std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr), random);
}

double powerOfTwo(RandomText& random) {
    return neighbour(std::ldexp(1.0, static_cast<int>(random.below(2098)) - 1074), random);
}

/// An odd number below 2^53, divided by a power of two from 2^1 to 2^22. Most of these values have sixteen significant
/// digits. The last digit is 5, so the value is halfway between two numbers of fifteen digits. If the divisor is 2^17
/// or more, a value of sixteen digits is below 0.1. Some values, mostly with the highest powers, have seventeen digits
/// and are not halfway.
double tie(RandomText& random) {
    const int twos = 1 + static_cast<int>(random.below(22));
    double least = 1e15;
    for (int two = 0; two < twos; ++two) {
        least /= 5;
    }
    const auto first = static_cast<std::uint64_t>(std::ceil(least));
    const std::uint64_t odd = (first + random.bits() % (first * 9)) | 1;
    return std::ldexp(static_cast<double>(odd), -twos);
}

/// An integer halfway between two numbers of fifteen significant digits: it has seventeen digits, and the last two are
/// 50.
double largeTie(RandomText& random) {
    return static_cast<double>((100000000000000 + random.bits() % 80000000000000) * 100 + 50);
}

struct Kind {
    const char* name;
    int count;
    double (*next)(RandomText&);
};

void PrintTo(const Kind& kind, std::ostream* out) {
    *out << kind.name;
}

class NumberFormattingRandom : public ::testing::TestWithParam<Kind> {};

TEST_P(NumberFormattingRandom, TextsAgreeWithTheReference) {
    char narrow[kCapacity];
    wchar_t wide[kCapacity];
    vorel::BaseString<wchar_t> appended;
    test::forEachRandomInput(GetParam().count, [&](RandomText& random) {
        const double magnitude = GetParam().next(random);
        const double value = random.oneIn(2) ? magnitude : -magnitude;
        if (value == 0 || !std::isfinite(value)) {
            return;
        }
        for (const bool json : {false, true}) {
            const auto options = json ? util::FO_JSON : util::FO_Default;
            const std::string wanted = test::textOfDouble(value, json);
            ASSERT_EQ(util::doubleToString(value, narrow, kCapacity, options), wanted) << "bits " << bitsOf(value);
            const std::wstring wideWanted = test::widened(wanted);
            ASSERT_EQ(util::doubleToString(value, wide, kCapacity, options), wideWanted);
            if (!json) {
                appended.clear();
                util::appendDouble(appended, value);
                ASSERT_EQ(appended.view(), wideWanted);
            }
        }
    });
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, NumberFormattingRandom,
    ::testing::Values(Kind{"Bits", 150000, [](RandomText& random) { return ofBits(random.bits() >> 1); }},
                      Kind{"Decimals", 200000, decimal},
                      Kind{"Integers", 200000,
                           [](RandomText& random) { return static_cast<double>(random.bits() >> random.below(64)); }},
                      Kind{"PowersOfTen", 100000, powerOfTen}, Kind{"PowersOfTwo", 100000, powerOfTwo},
                      Kind{"Subnormals", 50000,
                           [](RandomText& random) { return ofBits(random.bits() >> (12 + random.below(52))); }},
                      Kind{"Ties", 200000, tie}, Kind{"LargeTies", 50000, largeTie}),
    test::caseName);

TEST(NumberFormattingIntegers, AgreeWithTheStandardLibrary) {
    char narrow[kCapacity];
    wchar_t wide[kCapacity];
    char wanted[kCapacity];
    test::forEachRandomInput(300000, [&](RandomText& random) {
        const std::uint64_t bits = random.bits() >> random.below(64);
        *std::to_chars(wanted, wanted + kCapacity, bits).ptr = 0;
        ASSERT_STREQ(util::UInt64ToStr(bits, narrow, kCapacity), wanted);
        ASSERT_EQ(util::UInt64ToStr(bits, wide, kCapacity), test::widened(wanted));
        const auto value = static_cast<long long>(random.oneIn(2) ? bits : 0 - bits);
        *std::to_chars(wanted, wanted + kCapacity, value).ptr = 0;
        ASSERT_STREQ(util::Int64ToStr(value, narrow, kCapacity), wanted);
        ASSERT_EQ(util::Int64ToStr(value, wide, kCapacity), test::widened(wanted));
        vorel::BaseString<wchar_t> text;
        *std::to_chars(wanted, wanted + kCapacity, static_cast<int>(value)).ptr = 0;
        util::appendInteger(text, static_cast<int>(value));
        ASSERT_EQ(text, test::widened(wanted).c_str());
    });
}

TEST(NumberFormattingHash, IsAPolynomialOfTheBytes) {
    test::forEachRandomInput(100000, [](RandomText& random) {
        const std::uint64_t bits = random.bits();
        std::uint32_t wanted = 0;
        std::uint32_t power = 1;
        for (int byte = 7; byte >= 0; --byte, power *= 31) {
            wanted += static_cast<std::uint32_t>(bits >> 8 * byte & 0xFF) * power;
        }
        ASSERT_EQ(util::doubleHashCode(ofBits(bits)), wanted) << bits;
    });
}

}  // namespace
