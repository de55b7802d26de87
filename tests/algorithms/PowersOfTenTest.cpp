#include "algorithms/PowersOfTen.h"

#include <bit>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace {

/// A natural number as 32-bit words, the lowest first.
class Words {
public:
    explicit Words(std::size_t highestBit) : m_words(highestBit / 32 + 1) { m_words.back() = 1u << highestBit % 32; }

    void multiplyByTen() {
        std::uint64_t carry = 0;
        for (std::uint32_t& word : m_words) {
            carry += std::uint64_t{word} * 10;
            word = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
        if (carry != 0) {
            m_words.push_back(static_cast<std::uint32_t>(carry));
        }
    }

    /// Rounds down. N such divisions have the same result as one division by 10^N, rounded down.
    void divideByTen() {
        std::uint64_t rest = 0;
        for (std::size_t word = m_words.size(); word-- != 0;) {
            rest = rest << 32 | m_words[word];
            m_words[word] = static_cast<std::uint32_t>(rest / 10);
            rest %= 10;
        }
        while (m_words.back() == 0) {
            m_words.pop_back();
        }
    }

    [[nodiscard]] int highestBit() const {
        return static_cast<int>(m_words.size() * 32) - 1 - std::countl_zero(m_words.back());
    }

    /// Returns the bits from bit `from` down to bit `from` - 63. Bits below bit 0 are zero.
    [[nodiscard]] std::uint64_t bitsFrom(int from) const {
        std::uint64_t bits = 0;
        for (int bit = from; bit > from - 64; --bit) {
            const bool set = bit >= 0 && (m_words[static_cast<std::size_t>(bit / 32)] >> bit % 32 & 1) != 0;
            bits = bits << 1 | (set ? 1u : 0u);
        }
        return bits;
    }

private:
    std::vector<std::uint32_t> m_words;
};

/// Expects that the table's entry for `power` has the highest 128 bits of `number`, which is 10^`power` times 2^`unit`,
/// rounded down.
void expectPower(int power, const Words& number, int unit) {
    const auto& entry = vorel::algorithms::powerOfTen(power);
    const int top = number.highestBit();
    EXPECT_EQ(entry.high, number.bitsFrom(top)) << power;
    EXPECT_EQ(entry.low, number.bitsFrom(top - 64)) << power;
    EXPECT_EQ(vorel::algorithms::powerOfTenExponent(power), top - 127 - unit) << power;
}

TEST(PowersOfTen, AreExactPowersTruncatedTo128Bits) {
    Words up(0);
    for (int power = 0; power <= vorel::algorithms::kHighestPowerOfTen; ++power, up.multiplyByTen()) {
        expectPower(power, up, 0);
    }
    constexpr int kUnit = 1600;  // scaling by 2^kUnit leaves far more than 128 bits for the smallest power
    Words down(kUnit);
    for (int power = 0; power >= vorel::algorithms::kLowestPowerOfTen; --power, down.divideByTen()) {
        expectPower(power, down, kUnit);
    }
}

}  // namespace
