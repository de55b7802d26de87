/// \file
/// Integers of more than 64 bits: products of two 64-bit integers, and large integers for exact rounding.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vorel::algorithms {

struct Product {
    std::uint64_t high;
    std::uint64_t low;
};

/// The 128-bit product of `a` and `b`. If the compiler has no 128-bit type, the product is computed by schoolbook
/// multiplication (Knuth, "The Art of Computer Programming", volume 2, 4.3.1, algorithm M).
constexpr Product multiplyWide(std::uint64_t a, std::uint64_t b) noexcept {
#if defined(__SIZEOF_INT128__)
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(a) * b;
    return {static_cast<std::uint64_t>(product >> 64), static_cast<std::uint64_t>(product)};
#else
    constexpr std::uint64_t kLow = 0xFFFFFFFFu;
    const std::uint64_t lowLow = (a & kLow) * (b & kLow);
    const std::uint64_t highLow = (a >> 32) * (b & kLow);
    const std::uint64_t lowHigh = (a & kLow) * (b >> 32);
    const std::uint64_t middle = (lowLow >> 32) + (highLow & kLow) + (lowHigh & kLow);
    return {(a >> 32) * (b >> 32) + (highLow >> 32) + (lowHigh >> 32) + (middle >> 32), middle << 32 | (lowLow & kLow)};
#endif
}

/// An unsigned integer of up to 1,024 bits. This is enough for the products in `compareWithHalf` (DecimalDigits.h).
/// Overflow is a bug of the caller and is not detected.
class BigInteger {
public:
    constexpr explicit BigInteger(std::uint64_t value) noexcept {
        m_words[0] = static_cast<std::uint32_t>(value);
        m_words[1] = static_cast<std::uint32_t>(value >> 32);
    }

    constexpr void multiply(std::uint32_t factor) noexcept {
        std::uint64_t carry = 0;
        for (std::uint32_t& word : m_words) {
            carry += std::uint64_t{word} * factor;
            word = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
    }

    constexpr void multiplyByPowerOfFive(unsigned int exponent) noexcept {
        constexpr unsigned int kAtOnce = 13;
        constexpr std::uint32_t kFiveToThe13th = 1220703125;
        for (; exponent >= kAtOnce; exponent -= kAtOnce) {
            multiply(kFiveToThe13th);
        }
        for (; exponent != 0; --exponent) {
            multiply(5);
        }
    }

    constexpr void shiftLeft(unsigned int bits) noexcept {
        const std::size_t words = bits / 32;
        const unsigned int rest = bits % 32;
        for (std::size_t to = kWords; to-- != 0;) {
            const std::uint64_t upper = to >= words ? m_words[to - words] : 0;
            const std::uint64_t lower = to >= words + 1 ? m_words[to - words - 1] : 0;
            m_words[to] = static_cast<std::uint32_t>((upper << 32 | lower) << rest >> 32);
        }
    }

    /// Returns a number below 0, 0, or above 0 if `a` is less than, equal to, or greater than `b`.
    friend constexpr int compare(const BigInteger& a, const BigInteger& b) noexcept {
        for (std::size_t word = kWords; word-- != 0;) {
            if (a.m_words[word] != b.m_words[word]) {
                return a.m_words[word] < b.m_words[word] ? -1 : 1;
            }
        }
        return 0;
    }

private:
    static constexpr std::size_t kWords = 32;

    std::array<std::uint32_t, kWords> m_words = {};
};

}  // namespace vorel::algorithms
