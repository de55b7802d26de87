/// \file
/// Parses decimal numbers with a fraction and an exponent from zero-terminated text of either width: character by
/// character, or in blocks for numbers of the usual length.
///
/// The result is defined bit for bit, so the order of operations is fixed. The significant digits are read as an
/// integer, converted to double, and multiplied or divided by one power of ten.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "algorithms/Ascii.h"
#include "algorithms/Attributes.h"
#include "algorithms/DigitBlock.h"
#include "algorithms/NumberScanner.h"

namespace vorel::algorithms {

/// The mantissa of a decimal number. Only the first 18 digits, including leading zeros, are significant.
struct Mantissa {
    std::uint64_t used = 0;      ///< value of the significant digits
    std::uint32_t digits = 0;    ///< number of all digits, without the point
    std::uint32_t exponent = 0;  ///< decimal exponent of the last significant digit, modulo 2^32
};

inline constexpr std::uint32_t kMantissaDigits = 18;

/// Parses digits with at most one point.
template <class T>
constexpr Mantissa parseMantissa(const T*& cursor) noexcept {
    Mantissa mantissa;
    const T* const start = cursor;
    const T* point = nullptr;
    for (;; ++cursor) {
        if (isDigit(*cursor)) {
            if (mantissa.digits < kMantissaDigits) {
                mantissa.used = mantissa.used * 10 + static_cast<std::uint64_t>(*cursor - '0');
            }
            ++mantissa.digits;
        } else if (*cursor == '.' && !point) {
            point = cursor;
        } else {
            break;
        }
    }
    const std::uint32_t beforePoint = point ? static_cast<std::uint32_t>(point - start) : mantissa.digits;
    const std::uint32_t counted = mantissa.digits < kMantissaDigits ? mantissa.digits : kMantissaDigits;
    mantissa.exponent = beforePoint - counted;
    return mantissa;
}

/// Significant digits as a double. The result must have the same bits as in other components, which compute
/// high * 1e9 + low from two halves of nine digits. In this computation the halves are exact, and so is the product,
/// because it has at most 51 significant bits. Only the addition of the low half rounds. The conversion of the whole
/// integer also rounds only once, so it gives the same bits.
constexpr double mantissaValue(std::uint64_t used) noexcept {
    return static_cast<double>(static_cast<std::int64_t>(used));
}

/// A parsed exponent: 'e' or 'E', an optional sign, and digits. The marker and the sign are consumed even if no digits
/// follow.
struct Exponent {
    std::uint32_t value = 0;  ///< without its sign, modulo 2^32
    bool negative = false;
    bool hasMarker = false;
    bool hasDigits = false;
};

template <class T>
constexpr bool isExponentMarker(T c) noexcept {
    return c == 'e' || c == 'E';
}

template <class T>
Exponent parseExponent(const T*& cursor) noexcept {
    Exponent exponent;
    if (isExponentMarker(*cursor)) {
        ++cursor;
        exponent.hasMarker = true;
        exponent.negative = consumeSign(cursor);
        const T* const digits = cursor;
        exponent.value = parseDigits<std::uint32_t>(cursor);
        exponent.hasDigits = cursor != digits;
    }
    return exponent;
}

inline constexpr std::uint32_t kLargestScale = 511;

/// The powers of ten with exponents from 0 to 511. Each is the product of the factors 1e1, 1e2, 1e4 … 1e256 that belong
/// to the set bits of its exponent, lowest bit first. Other components multiply these factors in the same order and
/// must get the same bits, so the order is fixed. From 309 on, the powers are infinite.
inline constexpr auto kScaleFactors = [] {
    constexpr std::array<double, 9> kSquares = {1.0e1, 1.0e2, 1.0e4, 1.0e8, 1.0e16, 1.0e32, 1.0e64, 1.0e128, 1.0e256};
    std::array<double, kLargestScale + 1> factors = {};
    for (std::uint32_t power = 0; power <= kLargestScale; ++power) {
        double factor = 1.0;
        for (std::uint32_t bit = 0; bit < kSquares.size(); ++bit) {
            if ((power >> bit & 1) == 0) {
                continue;
            }
            const bool fits = factor <= std::numeric_limits<double>::max() / kSquares[bit];
            factor = fits ? factor * kSquares[bit] : std::numeric_limits<double>::infinity();
        }
        factors[power] = factor;
    }
    return factors;
}();

/// `value`, negated if `negative`, without a branch.
constexpr double withSign(double value, bool negative) noexcept {
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) ^ static_cast<std::uint64_t>(negative) << 63);
}

/// Returns `used * 10^exponent`, negated if `negative`. `exponent` is a signed number modulo 2^32. For an exponent
/// below -308, the result is 0. For an exponent above 308, the result is infinity, or NaN if `used` is 0, because the
/// power of ten is infinite. Signs are unpredictable, so the code does not branch on the sign of the exponent. Instead,
/// it multiplies `used` by one power of ten and divides the product by another power of ten. At least one of the two
/// powers is 1.
inline double scaled(std::uint64_t used, std::uint32_t exponent, bool negative) noexcept {
    const bool isBelowOne = exponent >> 31 != 0;
    const std::uint32_t magnitude = negatedIf(isBelowOne, exponent);
    const std::uint32_t power = magnitude < kLargestScale ? magnitude : kLargestScale;
    const std::uint32_t down = power & (0 - std::uint32_t{isBelowOne});
    return withSign(mantissaValue(used) * kScaleFactors[power - down] / kScaleFactors[down], negative);
}

inline double scaled(const Mantissa& mantissa, const Exponent& exponent, bool negative) noexcept {
    return scaled(mantissa.used, mantissa.exponent + negatedIf(exponent.negative, exponent.value), negative);
}

/// A mantissa whose digits are all significant. The last `fraction` digits are after the point.
struct ShortMantissa {
    std::uint64_t used = 0;
    std::uint64_t fraction = 0;
};

/// Parses a mantissa with less than one block of digits before the point and at most one block after it. Returns false
/// if the mantissa has another form, more than `kMantissaDigits` digits, or no digits. The blocks around `cursor` must
/// lie in one page (see `areDigitBlocksInPage`).
template <class T>
VOREL_ALWAYS_INLINE bool parseShortMantissa(const T*& cursor, ShortMantissa& mantissa) noexcept {
    std::uint64_t mask = digitMask(cursor);
    const std::uint64_t whole = leadingDigits(mask);
    if (whole == kDigitBlock) {
        return false;
    }
    if (cursor[whole] != '.') {
        mantissa.used = valueOfDigits(cursor, whole);
        cursor += whole;
        return whole != 0;
    }
    std::uint64_t fraction = leadingDigits(mask >> whole >> 1);
    if (whole + 1 + fraction < kDigitBlock) {
        mantissa.used = valueAcrossPoint(cursor, whole, fraction);
    } else {
        mask |= digitMask(cursor + kDigitBlock) << kDigitBlock;
        fraction = leadingDigits(mask >> whole >> 1);
        if (fraction > kDigitBlock || whole + fraction > kMantissaDigits) {
            return false;
        }
        mantissa.used =
            valueOfDigits(cursor, whole) * kIntegerPowersOfTen[fraction] + valueOfDigits(cursor + whole + 1, fraction);
    }
    mantissa.fraction = fraction;
    cursor += whole + 1 + fraction;
    return whole + fraction != 0;
}

/// Parses a number of the usual length without a branch for each digit. Returns false and consumes nothing if the
/// number must be parsed character by character.
template <class T>
VOREL_ALWAYS_INLINE bool parseShortDecimal(const T*& start, double& value) noexcept {
    const T* cursor = start;
    skipSpaces(cursor);
    const bool negative = consumeSign(cursor);
    ShortMantissa mantissa;
    if (!areDigitBlocksInPage(cursor) || !parseShortMantissa(cursor, mantissa)) {
        return false;
    }
    if (!isExponentMarker(*cursor)) {
        value = withSign(mantissaValue(mantissa.used) / kScaleFactors[mantissa.fraction], negative);
        start = cursor;
        return true;
    }
    ++cursor;
    const bool isBelowOne = consumeSign(cursor);
    if (!areDigitBlocksInPage(cursor)) {
        return false;
    }
    const std::uint64_t digits = leadingDigits(digitMask(cursor));
    if (digits == kDigitBlock) {
        return false;
    }
    const auto exponent = static_cast<std::uint32_t>(valueOfDigits(cursor, digits));
    const auto fraction = static_cast<std::uint32_t>(mantissa.fraction);
    value = scaled(mantissa.used, negatedIf(isBelowOne, exponent) - fraction, negative);
    start = cursor + digits;
    return true;
}

}  // namespace vorel::algorithms
