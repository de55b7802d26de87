/// \file
/// Classifies, folds and compares ASCII characters in text of either width. Locales do not affect the result.
#pragma once

#include <cstdint>
#include <string_view>
#include <type_traits>

namespace vorel::algorithms {

/// The white space of the parsers of numbers, booleans and lists: space, tab, line feed and carriage return; in wide
/// text also the no-break space U+00A0. By design, the byte 0xA0 is not white space, because its meaning depends on the
/// code page.
template <class T>
constexpr bool isSpace(T c) noexcept {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || (sizeof(T) > 1 && c == 0xA0);
}

template <class T>
constexpr bool isDigit(T c) noexcept {
    return c >= '0' && c <= '9';
}

/// Whether `c` is from 0x01 to 0x7F.
template <class T>
constexpr bool isAsciiText(T c) noexcept {
    return static_cast<unsigned int>(c) - 1u < 0x7F;
}

/// Whether `c` is one of `characters`. `characters` must be ASCII.
template <class T>
constexpr bool isOneOf(T c, std::string_view characters) noexcept {
    for (const char wanted : characters) {
        if (c == static_cast<T>(wanted)) {
            return true;
        }
    }
    return false;
}

// ---- Case -----------------------------------------------------------------------------------------------------------

/// Distance between the two cases of a letter.
inline constexpr unsigned int kCaseBit = 'a' - 'A';

/// Maps 'A'..'Z' to 'a'..'z' and leaves every other character unchanged.
template <class T>
constexpr T foldCase(T c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<T>(c + ('a' - 'A')) : c;
}

/// Maps 'a'..'z' to 'A'..'Z' and leaves every other character unchanged.
template <class T>
constexpr T foldToUpperCase(T c) noexcept {
    return c >= 'a' && c <= 'z' ? static_cast<T>(c - ('a' - 'A')) : c;
}

template <class T>
constexpr bool isLetter(T c) noexcept {
    const T folded = foldCase(c);
    return folded >= 'a' && folded <= 'z';
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

// ---- Text -----------------------------------------------------------------------------------------------------------

/// Removes white space from both ends of a text.
template <class T>
constexpr std::basic_string_view<T> trimmed(std::basic_string_view<T> text) noexcept {
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

/// Whether the whole zero-terminated text is `word`, ignoring the case of 'A'..'Z'. `word` must be in lower case.
template <class T>
constexpr bool equalsWord(const T* text, std::string_view word) noexcept {
    for (const char c : word) {
        if (foldCase(*text) != static_cast<T>(c)) {
            return false;
        }
        ++text;
    }
    return *text == 0;
}

/// A polynomial hash of a name, ignoring the case of 'A'..'Z'. It is 0 for an empty name and for null.
template <class T>
constexpr std::uint32_t nameHash(const T* name) noexcept {
    constexpr std::uint32_t kMultiplier = 31;
    std::uint32_t hash = 0;
    for (; name && *name; ++name) {
        hash = hash * kMultiplier + static_cast<std::make_unsigned_t<T>>(foldCase(*name));
    }
    return hash;
}

}  // namespace vorel::algorithms
