#include "algorithms/WideArithmetic.h"

#include <cstdint>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

using vorel::algorithms::BigInteger;
using vorel::algorithms::multiplyWide;

/// Computes the product by long multiplication. Returns it as columns of sixteen bits, the lowest column first.
std::vector<std::uint32_t> longProduct(std::uint64_t a, std::uint64_t b) {
    std::vector<std::uint32_t> columns(8);
    for (unsigned int i = 0; i < 4; ++i) {
        std::uint32_t carry = 0;
        for (unsigned int j = 0; j < 4; ++j) {
            const auto left = static_cast<std::uint32_t>(a >> 16 * i & 0xFFFF);
            const auto right = static_cast<std::uint32_t>(b >> 16 * j & 0xFFFF);
            const std::uint32_t sum = columns[i + j] + carry + left * right;
            columns[i + j] = sum & 0xFFFF;
            carry = sum >> 16;
        }
        columns[i + 4] += carry;
    }
    return columns;
}

TEST(WideArithmetic, MultiplyWide_ComputesAll128Bits) {
    std::mt19937_64 random(20261121);
    for (int count = 0; count < 100000; ++count) {
        const std::uint64_t a = random() >> random() % 64;
        const std::uint64_t b = count % 10 == 0 ? ~std::uint64_t{0} : random() >> random() % 64;
        const auto product = multiplyWide(a, b);
        const std::vector<std::uint32_t> wanted = longProduct(a, b);
        for (unsigned int column = 0; column < 8; ++column) {
            const std::uint64_t word = column < 4 ? product.low : product.high;
            ASSERT_EQ(word >> 16 * (column % 4) & 0xFFFF, wanted[column]) << a << " times " << b;
        }
    }
}

TEST(WideArithmetic, Compare_OrdersBigIntegers) {
    BigInteger one(1);
    BigInteger large(0xFFFFFFFFFFFFFFFF);
    EXPECT_LT(compare(one, large), 0);
    EXPECT_GT(compare(large, one), 0);
    EXPECT_EQ(compare(large, large), 0);
    one.shiftLeft(64);
    EXPECT_GT(compare(one, large), 0);
}

TEST(WideArithmetic, ShiftLeftMultipliesByPowersOfTwo) {
    for (unsigned int bits = 0; bits < 900; ++bits) {
        BigInteger shifted(0x9E3779B97F4A7C15);
        shifted.shiftLeft(bits);
        BigInteger multiplied(0x9E3779B97F4A7C15);
        for (unsigned int bit = 0; bit < bits; ++bit) {
            multiplied.multiply(2);
        }
        ASSERT_EQ(compare(shifted, multiplied), 0) << bits;
    }
}

TEST(WideArithmetic, MultiplyByPowerOfFiveEqualsRepeatedMultiplication) {
    BigInteger multiplied(7);
    for (unsigned int exponent = 0; exponent < 400; ++exponent, multiplied.multiply(5)) {
        BigInteger power(7);
        power.multiplyByPowerOfFive(exponent);
        ASSERT_EQ(compare(power, multiplied), 0) << exponent;
    }
}

}  // namespace
