/// \file
/// Powers of ten with 128 bits, to scale a double to a given number of digits.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vorel::algorithms {

/// A power of ten: the 128-bit integer (high, low), whose top bit is set, times two to the power of
/// `powerOfTenExponent`. The value is truncated, so it is never too large, and too small by less than one unit of its
/// last bit.
struct PowerOfTen {
    std::uint64_t high;
    std::uint64_t low;
};

inline constexpr int kLowestPowerOfTen = -300;
inline constexpr int kHighestPowerOfTen = 345;

namespace detail {

/// The first 256 significant bits of a number, as 32-bit words, highest first. The top bit is set. Each multiplication
/// and division is rounded. A few hundred roundings affect only the lowest bits, so the upper 128 bits stay exact.
struct LongNumber {
    std::array<std::uint32_t, 8> words = {0x80000000u};

    constexpr void shiftRight(unsigned int bits) noexcept {
        std::uint32_t carry = 0;
        for (std::uint32_t& word : words) {
            const std::uint32_t next = word << (32 - bits);
            word = word >> bits | carry;
            carry = next;
        }
    }

    constexpr void normalize() noexcept {
        while ((words[0] & 0x80000000u) == 0) {
            for (std::size_t word = 0; word + 1 < words.size(); ++word) {
                words[word] = words[word] << 1 | words[word + 1] >> 31;
            }
            words.back() <<= 1;
        }
    }

    constexpr void multiplyByTen() noexcept {
        shiftRight(4);
        std::uint64_t carry = 0;
        for (std::size_t word = words.size(); word-- != 0;) {
            carry += std::uint64_t{words[word]} * 10;
            words[word] = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
        normalize();
    }

    constexpr void divideByTen() noexcept {
        std::uint64_t rest = 0;
        for (std::uint32_t& word : words) {
            rest = rest << 32 | word;
            word = static_cast<std::uint32_t>(rest / 10);
            rest %= 10;
        }
        normalize();
    }

    [[nodiscard]] constexpr PowerOfTen upperHalf() const noexcept {
        return {std::uint64_t{words[0]} << 32 | words[1], std::uint64_t{words[2]} << 32 | words[3]};
    }
};

}  // namespace detail

inline constexpr auto kPowersOfTen = [] {
    std::array<PowerOfTen, kHighestPowerOfTen - kLowestPowerOfTen + 1> powers = {};
    detail::LongNumber up;
    for (int power = 0; power <= kHighestPowerOfTen; ++power, up.multiplyByTen()) {
        powers[static_cast<std::size_t>(power - kLowestPowerOfTen)] = up.upperHalf();
    }
    detail::LongNumber down;
    for (int power = 0; power >= kLowestPowerOfTen; --power, down.divideByTen()) {
        powers[static_cast<std::size_t>(power - kLowestPowerOfTen)] = down.upperHalf();
    }
    return powers;
}();

/// The binary exponent of a power of ten: power * log2(10), rounded down, minus 127, which is the number of bits after
/// the top bit of the integer. `power` must be from kLowestPowerOfTen to kHighestPowerOfTen.
constexpr int powerOfTenExponent(int power) noexcept {
    constexpr int kLog2Of10 = 217706;  // times 2^16, rounded up; rounded down, it would give a wrong result for 146
    return (power * kLog2Of10 >> 16) - 127;
}

constexpr const PowerOfTen& powerOfTen(int power) noexcept {
    return kPowersOfTen[static_cast<std::size_t>(power - kLowestPowerOfTen)];
}

}  // namespace vorel::algorithms
