/// \file
/// Classifies characters by their numeric code. Locales do not affect the result.
#pragma once

namespace vorel::algorithms {

/// The white space of every parser: space, tab, line feed and carriage return; in wide text the no-break space U+00A0
/// too. The byte 0xA0 is not white space, by design: in most narrow code pages it is part of another character.
template <class T>
constexpr bool isSpace(T c) noexcept {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || (sizeof(T) > 1 && c == 0xA0);
}

template <class T>
constexpr bool isDigit(T c) noexcept {
    return c >= '0' && c <= '9';
}

/// Distance between the two cases of a letter.
inline constexpr unsigned int kCaseBit = 'a' - 'A';

/// Folds A to Z to a to z, nothing else.
template <class T>
constexpr T foldCase(T c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<T>(c + ('a' - 'A')) : c;
}

/// The value of a hexadecimal digit, 16 for any other character.
template <class T>
constexpr unsigned int hexDigitValue(T c) noexcept {
    if (isDigit(c)) {
        return static_cast<unsigned int>(c - '0');
    }
    const T folded = foldCase(c);
    return folded >= 'a' && folded <= 'f' ? static_cast<unsigned int>(folded - 'a') + 10 : 16;
}

}  // namespace vorel::algorithms
