/// \file
/// Formats an integer as decimal text.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include <emmintrin.h>

#include "algorithms/DigitCharacters.h"

namespace vorel::algorithms {

/// The longest text of a 64-bit number: twenty digits, or a sign and nineteen.
inline constexpr std::size_t kMaxIntegerCharacters = 20;

/// Shifts sixteen bytes towards the front by `count`, at most 15. The bytes shifted in at the end are unspecified.
inline __m128i moveToFront(__m128i bytes, unsigned int count) noexcept {
    const auto first = static_cast<std::uint64_t>(_mm_cvtsi128_si64(bytes));
    const auto second = static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(bytes, bytes)));
    const std::uint64_t from = count < 8 ? first : second;
    const unsigned int bits = count % 8 * 8;
    const std::uint64_t carried = second << 1 << (63 - bits);  // two shifts, because a shift by 64 bits is undefined
    return _mm_set_epi64x(static_cast<std::int64_t>(second >> bits), static_cast<std::int64_t>(from >> bits | carried));
}

/// Writes a number below 10,000 and returns the end. Each leading zero is overwritten by the next digit.
template <class T>
T* writeFewDigits(unsigned int number, T* out) noexcept {
    *out = static_cast<T>('0' + number / 1000);
    out += number >= 1000 ? 1 : 0;
    *out = static_cast<T>('0' + number / 100 % 10);
    out += number >= 100 ? 1 : 0;
    *out = static_cast<T>('0' + number / 10 % 10);
    out += number >= 10 ? 1 : 0;
    *out = static_cast<T>('0' + number % 10);
    return out + 1;
}

/// Writes `number` without a terminator and returns the end. `out` has space for twenty digits, or for nineteen if the
/// number has no more. At least sixteen characters are written; those after the number are unspecified.
template <class T>
T* writeInteger(std::uint64_t number, T* out) noexcept {
    constexpr std::uint64_t kSixteenDigits = 10000000000000000;
    const __m128i digits = sixteenDigits(number % kSixteenDigits);
    if (number >= kSixteenDigits) {
        out = writeFewDigits(static_cast<unsigned int>(number / kSixteenDigits), out);
        storeCharacters(digits, out);
        return out + 16;
    }
    constexpr std::uint32_t kLastDigit = 1 << 15;  // kept even if it is zero
    const auto zeros = static_cast<unsigned int>(std::countr_zero(nonZeroMask(digits) | kLastDigit));
    storeCharacters(moveToFront(digits, zeros), out);
    return out + (16 - zeros);
}

}  // namespace vorel::algorithms
