/// \file
/// Decodes hexadecimal text of either width: whole blocks at once, and other pairs by one of two rules for invalid
/// characters.
#pragma once

#include <cstddef>

#include "algorithms/Characters.h"
#include "algorithms/HexDigits.h"

namespace vorel::algorithms {

/// Decodes pairs of digits: whole blocks at once, and the others by `decodePair(first, second, byte)`, which returns
/// whether to continue. The last character of an odd number is paired with the terminator.
template <class T, class DecodePair>
bool decodeHexPairs(const T* text, std::size_t length, unsigned char* out, DecodePair&& decodePair) {
    constexpr std::size_t kBlock = 16;  // digits
    for (std::size_t at = 0; at < length;) {
        const std::size_t blocks = decodeHex(text + at, (length - at) / kBlock, out + at / 2);
        at += blocks * kBlock;
        for (std::size_t end = at + kBlock; at < length && at < end; at += 2) {
            if (!decodePair(text[at], text[at + 1], out + at / 2)) {
                return false;
            }
        }
    }
    return true;
}

/// The value of a unit under the rule of the decoder that returns a status; a digit has 0 to 15.
template <class T>
int hexValueWithStatus(T unit) noexcept {
    const bool isSmallLetter = unit >= 'a' && unit <= 'z';
    const int character = (isSmallLetter ? unit - 'a' + 'A' : unit) & 0xFF;
    return character < '9' + 1 ? character - '0' : character - 'A' + 10;
}

/// Decodes up to the first invalid pair. Returns whether all pairs were valid.
template <class T>
bool decodeHexWithStatus(const T* text, std::size_t length, unsigned char* out) noexcept {
    return decodeHexPairs(text, length, out, [](T first, T second, unsigned char* byte) {
        const int high = hexValueWithStatus(first);
        const int low = hexValueWithStatus(second);
        if (high < 0 || high > 15 || low < 0 || low > 15) {
            return false;
        }
        *byte = static_cast<unsigned char>(high * 16 + low);
        return true;
    });
}

/// Decodes an even number of characters. Invalid characters count as 0.
template <class T>
void decodeHexLenient(const T* text, std::size_t length, unsigned char* out) noexcept {
    const auto valueOrZero = [](T c) {
        const unsigned int value = hexDigitValue(c);
        return value < 16 ? value : 0;
    };
    decodeHexPairs(text, length, out, [&](T first, T second, unsigned char* byte) {
        *byte = static_cast<unsigned char>(valueOrZero(first) << 4 | valueOrZero(second));
        return true;
    });
}

}  // namespace vorel::algorithms
