/// \file
/// Formats integers, and doubles with fifteen significant digits, as decimal text of either width. Sixteen digits are
/// computed in one register. Text for a buffer of the caller is truncated to its size.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <emmintrin.h>

#include "algorithms/DecimalDigits.h"
#include "algorithms/DigitBlock.h"
#include "algorithms/SimdBlocks.h"

namespace vorel::algorithms {

// ---- Integers -------------------------------------------------------------------------------------------------------

/// A number below 10^8 as two groups of four digits, the upper group in the lower half.
constexpr std::uint64_t groupsOfFour(std::uint64_t number) noexcept {
    return number / 10000 | number % 10000 << 32;
}

/// The sixteen digits of a number below 10^16, with leading zeros.
inline __m128i sixteenDigits(std::uint64_t number) noexcept {
    constexpr std::uint64_t kHalf = 100000000;
    const auto upper = static_cast<std::int64_t>(groupsOfFour(number / kHalf));
    const auto lower = static_cast<std::int64_t>(groupsOfFour(number % kHalf));
    const __m128i fours = _mm_set_epi64x(lower, upper);
    // Division by multiplication (Granlund and Montgomery, "Division by Invariant Integers using Multiplication"): x *
    // 5243 / 2^19 is x / 100 below 10,000, and x * 6554 / 2^16 is x / 10 below 100.
    const __m128i hundreds = _mm_srli_epi16(_mm_mulhi_epu16(fours, _mm_set1_epi32(5243)), 3);
    const __m128i belowHundred = _mm_sub_epi16(fours, _mm_mullo_epi16(hundreds, _mm_set1_epi32(100)));
    const __m128i twos = _mm_or_si128(hundreds, _mm_slli_epi32(belowHundred, 16));
    const __m128i tens = _mm_mulhi_epu16(twos, _mm_set1_epi16(6554));
    const __m128i ones = _mm_sub_epi16(twos, _mm_mullo_epi16(tens, _mm_set1_epi16(10)));
    return _mm_add_epi8(_mm_or_si128(tens, _mm_slli_epi16(ones, 8)), _mm_set1_epi8('0'));
}

/// One bit for each of sixteen characters, lowest first: whether it is not '0'.
inline std::uint32_t nonZeroMask(__m128i digits) noexcept {
    const int zeros = _mm_movemask_epi8(_mm_cmpeq_epi8(digits, _mm_set1_epi8('0')));
    return static_cast<std::uint32_t>(zeros) ^ 0xFFFF;
}

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

/// Writes a 64-bit number to `out`, which has space for `kMaxIntegerCharacters`. Returns the end.
template <class T>
T* writeSigned(std::uint64_t magnitude, bool negative, T* out) noexcept {
    *out = '-';
    return writeInteger(magnitude, out + (negative ? 1 : 0));
}

/// The absolute value. It holds that of the lowest number too.
constexpr std::uint64_t magnitudeOf(std::int64_t value) noexcept {
    const auto bits = static_cast<std::uint64_t>(value);
    return value < 0 ? 0 - bits : bits;
}

// ---- Doubles --------------------------------------------------------------------------------------------------------

/// The form of mantissa and exponent.
enum class DoubleForm {
    Raw,    ///< "1e+20", "1.5e-07", "1.e-07": the form of the print functions
    Plain,  ///< as `Raw`, with at least three exponent digits
    Json,   ///< as `Plain`, with at least one digit after the point of every mantissa: "1.0e+020"
};

/// Capacity for the text of any double, including the characters written temporarily after its end.
inline constexpr std::size_t kDoubleCapacity = 32;

/// Fifteen digits as characters, and their number without trailing zeros.
struct DigitText {
    explicit DigitText(std::uint64_t digits) noexcept
        : characters(sixteenDigits(digits * 10)),
          significant(static_cast<int>(std::bit_width(nonZeroMask(characters)))) {}

    __m128i characters;
    int significant;
};

/// Sixteen characters: the digits with a point after the first `whole` of them, 1 to 15.
inline __m128i insertDecimalPoint(__m128i digits, int whole) noexcept {
    const auto after = static_cast<std::uint64_t>(15 - whole);
    const __m128i fromPoint = lastBytes(after + 1);
    const __m128i afterPoint = lastBytes(after);
    const __m128i point = _mm_and_si128(_mm_andnot_si128(afterPoint, fromPoint), _mm_set1_epi8('.'));
    const __m128i fraction = _mm_and_si128(_mm_slli_si128(digits, 1), afterPoint);
    return _mm_or_si128(_mm_or_si128(_mm_andnot_si128(fromPoint, digits), point), fraction);
}

/// Writes "e+020". `Raw` writes two digits if two are enough.
template <class T>
T* writeExponent(int exponent, DoubleForm form, T* out) noexcept {
    const auto magnitude = static_cast<unsigned int>(exponent < 0 ? -exponent : exponent);
    out[0] = 'e';
    out[1] = exponent < 0 ? '-' : '+';
    out[2] = static_cast<T>('0' + magnitude / 100);
    out += form == DoubleForm::Raw && magnitude < 100 ? 2 : 3;
    out[0] = static_cast<T>('0' + magnitude / 10 % 10);
    out[1] = static_cast<T>('0' + magnitude % 10);
    return out + 2;
}

/// Writes a finite value other than 0 without a terminator and returns the end. From a magnitude of 0.1 on, the digits
/// are those of "%.15g". Smaller values always have an exponent and keep the point. `out` has space for
/// `kDoubleCapacity` characters.
template <class T>
T* writeDouble(double value, DoubleForm form, T* out) noexcept {
    *out = '-';
    out += std::signbit(value) ? 1 : 0;
    value = std::fabs(value);
    const bool isSmall = value < 0.1;
    const DecimalDigits decimal = decimalDigits(value, isSmall ? Tie::AwayFromZero : Tie::ToEven);
    const DigitText text(decimal.digits);
    if (isSmall || decimal.exponent > kFractionDigits) {
        const int singleDigitLength = form == DoubleForm::Json ? 3 : isSmall ? 2 : 1;  // "1.0", "1.", "1"
        storeCharacters(insertDecimalPoint(text.characters, 1), out);
        out += text.significant > 1 ? text.significant + 1 : singleDigitLength;
        return writeExponent(decimal.exponent, form, out);
    }
    if (decimal.exponent < 0) {
        out[0] = '0';
        out[1] = '.';
        storeCharacters(text.characters, out + 2);
        return out + 2 + text.significant;
    }
    const int whole = decimal.exponent + 1;
    storeCharacters(insertDecimalPoint(text.characters, whole), out);
    return out + (text.significant > whole ? text.significant + 1 : whole);
}

// ---- Buffers of a caller -----------------------------------------------------------------------------------------

/// Copies a short text that does not overlap the target. A call of the runtime would take longer.
template <class T>
void copyShortText(const T* text, std::size_t length, T* to) noexcept {
    const auto* const from = reinterpret_cast<const unsigned char*>(text);
    auto* const out = reinterpret_cast<unsigned char*>(to);
    const std::size_t bytes = length * sizeof(T);
    const auto copy = [=](auto block, std::size_t at) {
        std::memcpy(&block, from + at, sizeof block);
        std::memcpy(out + at, &block, sizeof block);
    };
    // The last block may overlap the one before it.
    const auto copyBlocks = [&](auto block) {
        for (std::size_t at = 0; at + sizeof block < bytes; at += sizeof block) {
            copy(block, at);
        }
        copy(block, bytes - sizeof block);
    };
    if (bytes >= sizeof(std::uint64_t)) {
        copyBlocks(std::uint64_t{});
    } else if (bytes >= sizeof(std::uint32_t)) {
        copyBlocks(std::uint32_t{});
    } else {
        std::copy_n(from, bytes, out);
    }
}

/// Copies as much of a text as fits into `size` characters. The last of them becomes a terminator.
template <class T>
void copyTruncatedText(const T* text, std::size_t length, T* buffer, unsigned long long size) noexcept {
    if (size == 0) {
        return;
    }
    const std::size_t copied = std::min<unsigned long long>(length, size - 1);
    copyShortText(text, copied, buffer);
    buffer[copied] = 0;
    buffer[size - 1] = 0;
}

/// Writes a number and a terminator to `size` characters, truncated to them, and a terminator to the last one. Returns
/// the buffer, which may be null.
template <class T>
T* writeBoundedInteger(std::uint64_t magnitude, bool negative, T* buffer, unsigned long long size) noexcept {
    if (!buffer) {
        return nullptr;
    }
    // Formatted in a local buffer, because the units after the terminator must stay unchanged.
    T text[kMaxIntegerCharacters];
    const T* const end = writeSigned(magnitude, negative, text);
    copyTruncatedText(text, static_cast<std::size_t>(end - text), buffer, size);
    return buffer;
}

}  // namespace vorel::algorithms
