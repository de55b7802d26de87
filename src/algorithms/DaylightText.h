/// \file
/// Daylight text of either width: groups of four characters, then a digit that gives the number of bytes in the last
/// group. The text of no bytes consists only of the digit 3.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>

#include "algorithms/Processor.h"
#include "algorithms/Sextets.h"
#include "algorithms/SimdBlocks.h"

namespace vorel::algorithms {

/// Length of the text for `count` bytes.
constexpr std::size_t daylightLength(std::size_t count) noexcept {
    return (count + 2) / 3 * 4 + 1;
}

/// Encodes `count` bytes and returns the end.
template <class T>
T* encodeDaylight(const unsigned char* bytes, std::size_t count, T* out) noexcept {
    out = encodeAllGroups(bytes, count, {kDaylightAlphabet.data(), SextetOrder::Daylight}, out);
    const std::size_t rest = count % 3;
    *out = static_cast<T>(rest == 0 ? '3' : '0' + rest);
    return out + 1;
}

/// The value of a character; 0 for a character without a value.
template <class T>
unsigned int daylightValueOf(T unit) noexcept {
    const std::size_t index = static_cast<std::make_unsigned_t<T>>(unit);
    const bool isKnown =
        index < std::size(kDaylightValues.values) && kDaylightValues.values[index] != SextetValues::kNone;
    return isKnown ? kDaylightValues.values[index] : 0;
}

/// Tables that look up the values of many characters at once. The upper four bits of a character select a row, the
/// lower four bits select a column. In each row except `kIrregularRow`, all characters have the same distance to their
/// values. See Wojciech Muła, "SIMDized check which bytes are in a set".
struct SextetRows {
    static constexpr unsigned int kIrregularRow = 2;  // the characters from 0x20 to 0x2F

    std::uint8_t rowsOfColumn[16];     ///< one bit for each row in which the column has a value
    std::uint8_t offsetOfRow[16];      ///< the value minus the character
    std::uint8_t irregularOffset[16];  ///< the value minus the character, by column of the irregular row
};

inline constexpr SextetRows kDaylightRows = [] {
    SextetRows rows = {};
    for (unsigned int character = 0; character != 128; ++character) {
        if (kDaylightValues.values[character] == SextetValues::kNone) {
            continue;
        }
        const unsigned int row = character / 16;
        const unsigned int column = character % 16;
        const auto offset = static_cast<std::uint8_t>(kDaylightValues.values[character] - character);
        rows.rowsOfColumn[column] = static_cast<std::uint8_t>(rows.rowsOfColumn[column] | 1u << row);
        (row == SextetRows::kIrregularRow ? rows.irregularOffset[column] : rows.offsetOfRow[row]) = offset;
    }
    return rows;
}();

/// Decodes `groups` groups of four characters to three bytes each, with AVX2. `groups` must be at least 8. A character
/// without a value counts as 0.
void decodeDaylightAvx2(const char* text, std::size_t groups, unsigned char* out) noexcept;
void decodeDaylightAvx2(const WideUnit* text, std::size_t groups, unsigned char* out) noexcept;

/// Decodes `count` characters. `count` must be a multiple of four, because each group of four characters gives three
/// bytes.
template <class T>
void decodeDaylightGroups(const T* text, std::size_t count, unsigned char* out) noexcept {
    if (Processor::usesAvx2() && count >= kSextetBlockCharacters) {
        decodeDaylightAvx2(text, count / 4, out);
        return;
    }
    for (const T* const end = text + count; text != end; text += 4, out += 3) {
        decodeFour(daylightValueOf(text[0]), daylightValueOf(text[1]), daylightValueOf(text[2]),
                   daylightValueOf(text[3]), out);
    }
}

/// The number of bytes, 1 to 3, that the final digit gives for the last group; 0 for any other unit.
template <class T>
unsigned int bytesOfLastGroup(T unit) noexcept {
    return unit >= '1' && unit <= '3' ? static_cast<unsigned int>(unit - '0') : 0;
}

}  // namespace vorel::algorithms
