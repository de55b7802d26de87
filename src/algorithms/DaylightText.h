/// \file
/// Daylight text of either width: groups of four characters, and a final digit that gives the number of bytes in the
/// last group.
#pragma once

#include <cstddef>
#include <iterator>
#include <type_traits>

#include "algorithms/Sextets.h"

namespace vorel::algorithms {

/// Length of the text for `count` bytes.
constexpr std::size_t daylightLength(std::size_t count) noexcept {
    return (count + 2) / 3 * 4 + 1;
}

/// Encodes `count` bytes and returns the end.
template <class T>
T* encodeDaylight(const unsigned char* bytes, std::size_t count, T* out) noexcept {
    out = encodeAllGroups(bytes, count, kDaylightAlphabet.data(), out);
    const std::size_t rest = count % 3;
    *out = static_cast<T>(rest == 0 ? '3' : '0' + rest);
    return out + 1;
}

/// The value of a character, 0 if it has none.
template <class T>
unsigned int daylightValueOf(T unit) noexcept {
    const std::size_t index = static_cast<std::make_unsigned_t<T>>(unit);
    const bool isKnown =
        index < std::size(kDaylightValues.values) && kDaylightValues.values[index] != SextetValues::kNone;
    return isKnown ? kDaylightValues.values[index] : 0;
}

/// Decodes `count` characters, a multiple of four, to three bytes for each four.
template <class T>
void decodeDaylightGroups(const T* text, std::size_t count, unsigned char* out) noexcept {
    constexpr std::size_t kGroupsBetweenBlocks = 8;
    while (count != 0) {
        const std::size_t blocks =
            decodeWholeBlocks(text, kDaylightRows, InvalidCharacters::AsZero, out, count / 4 * 3);
        text += blocks * kSextetBlockCharacters;
        count -= blocks * kSextetBlockCharacters;
        out += blocks * kSextetBlockBytes;
        for (std::size_t group = 0; group < kGroupsBetweenBlocks && count != 0; ++group, out += 3) {
            decodeFour(daylightValueOf(text[0]), daylightValueOf(text[1]), daylightValueOf(text[2]),
                       daylightValueOf(text[3]), out);
            text += 4;
            count -= 4;
        }
    }
}

/// The number of bytes, 1 to 3, that the final digit gives for the last group; 0 for any other unit.
template <class T>
unsigned int bytesOfLastGroup(T unit) noexcept {
    return unit >= '1' && unit <= '3' ? static_cast<unsigned int>(unit - '0') : 0;
}

}  // namespace vorel::algorithms
