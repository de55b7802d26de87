/// \file
/// Computes the fifteen significant decimal digits of a double, rounded from its exact value.
#pragma once

#include <bit>
#include <cstdint>

#include "algorithms/Attributes.h"
#include "algorithms/PowersOfTen.h"
#include "algorithms/WideArithmetic.h"

namespace vorel::algorithms {

/// How to round a value that lies exactly between two decimal texts.
enum class Tie {
    ToEven,
    AwayFromZero,
};

/// A value as `digits` times ten to the power of `exponent - 14`, with 10^14 <= digits < 10^15.
struct DecimalDigits {
    std::uint64_t digits;
    int exponent;
};

inline constexpr std::uint64_t kDigitsLimit = 1000000000000000;  // 10^15
inline constexpr int kFractionDigits = 14;

/// A positive finite double as an integer times a power of two.
struct BinaryParts {
    constexpr explicit BinaryParts(double value) noexcept {
        constexpr unsigned int kFractionBits = 52;
        constexpr int kBias = 1075;
        const auto bits = std::bit_cast<std::uint64_t>(value);
        const auto biased = static_cast<int>(bits >> kFractionBits & 0x7FF);
        const std::uint64_t fraction = bits & ((std::uint64_t{1} << kFractionBits) - 1);
        significand = biased == 0 ? fraction : fraction | std::uint64_t{1} << kFractionBits;
        exponent = (biased == 0 ? 1 : biased) - kBias;
    }

    std::uint64_t significand;
    int exponent;
};

/// Compares `value` * 10^`power` with `digits` + 1/2. Returns a number below 0, 0 (a tie), or a number above 0. The
/// comparison is exact. It is called only in the rare cases that the first 64 bits after the point do not decide.
VOREL_COLD constexpr int compareWithHalf(const BinaryParts& value, int power, std::uint64_t digits) noexcept {
    BigInteger left(value.significand);
    BigInteger right(2 * digits + 1);
    const int twos = value.exponent + power + 1;
    if (power >= 0) {
        left.multiplyByPowerOfFive(static_cast<unsigned int>(power));
    } else {
        right.multiplyByPowerOfFive(static_cast<unsigned int>(-power));
    }
    if (twos >= 0) {
        left.shiftLeft(static_cast<unsigned int>(twos));
    } else {
        right.shiftLeft(static_cast<unsigned int>(-twos));
    }
    return compare(left, right);
}

constexpr bool roundsUp(int comparison, std::uint64_t digits, Tie tie) noexcept {
    if (comparison != 0) {
        return comparison > 0;
    }
    return tie == Tie::AwayFromZero || digits % 2 != 0;
}

/// An estimate of a value's decimal exponent. It is exact or one too low. It is computed as log10(2) times a lower
/// bound of the value's log2. The lower bound is interpolated linearly between powers of two.
constexpr int estimateExponent(int log2, std::uint64_t normalized) noexcept {
    constexpr unsigned int kFractionBits = 20;
    constexpr std::int64_t kLog10Of2 = 1292913986;  // times 2^32, truncated
    const std::uint64_t fraction = (normalized << 1) >> (64 - kFractionBits);
    const std::int64_t approximation = (std::int64_t{log2} << kFractionBits) + static_cast<std::int64_t>(fraction);
    return static_cast<int>(approximation * kLog10Of2 >> (32 + kFractionBits));
}

/// The digits of a positive finite value.
///
/// The value is multiplied by a power of ten, so that the product has fifteen digits before the point. Only its upper
/// 128 bits are computed. They are too small by less than two units of their lowest bit. The first 64 bits after the
/// point decide the rounding unless they are one half, or one unit less than one half. In these two cases the exact
/// comparison decides.
VOREL_ALWAYS_INLINE constexpr DecimalDigits decimalDigits(double value, Tie tie) noexcept {
    const BinaryParts parts(value);
    const int leadingZeros = std::countl_zero(parts.significand);
    const std::uint64_t normalized = parts.significand << leadingZeros;
    const int log2 = parts.exponent + 63 - leadingZeros;
    for (int exponent = estimateExponent(log2, normalized);; ++exponent) {
        const int power = kFractionDigits - exponent;
        const PowerOfTen& scale = powerOfTen(power);
        const Product upper = multiplyWide(normalized, scale.high);
        const std::uint64_t carried = multiplyWide(normalized, scale.low).high;
        const std::uint64_t middle = upper.low + carried;
        const std::uint64_t high = upper.high + (middle < carried ? 1 : 0);
        // The number of bits before the point. `value` is `normalized` * 2^(log2 - 63). So `value` * 10^`power` is the
        // 192-bit product of `normalized` and `scale`, times 2^(powerOfTenExponent(power) + log2 - 63).
        const int whole = 192 + powerOfTenExponent(power) + log2 - 63;
        std::uint64_t digits = high >> (64 - whole);
        if (digits >= kDigitsLimit) {
            continue;  // the estimate was one too low
        }
        const std::uint64_t fraction = high << whole | middle >> (64 - whole);
        constexpr std::uint64_t kHalf = std::uint64_t{1} << 63;
        if (fraction == kHalf || fraction == kHalf - 1) {
            digits += roundsUp(compareWithHalf(parts, power, digits), digits, tie) ? 1u : 0u;
        } else {
            digits += fraction >> 63;
        }
        if (digits == kDigitsLimit) {
            return {kDigitsLimit / 10, exponent + 1};
        }
        return {digits, exponent};
    }
}

}  // namespace vorel::algorithms
