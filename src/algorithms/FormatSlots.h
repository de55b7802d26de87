/// \file
/// Counts the arguments of a printf-style format.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace vorel::algorithms {

/// The ASCII characters that may occur between "%" and the conversion character.
inline constexpr auto kBeforeConversion = [] {
    std::array<bool, 128> characters = {};
    for (const char c : std::string_view("-+ #0123456789.*hlLwIjztT")) {
        characters[static_cast<unsigned char>(c)] = true;
    }
    return characters;
}();

/// The number of arguments of `fmt`: one for each conversion except "%%", and one for each `*` as width or precision.
///
///     "%d of %*s%%"  →  3
template <class T>
constexpr unsigned int countFormatSlots(const T* fmt) noexcept {
    unsigned int slots = 0;
    while (*fmt) {
        if (*fmt++ != '%') {
            continue;
        }
        if (*fmt == '%') {
            ++fmt;
            continue;
        }
        for (; *fmt > 0 && *fmt < 128 && kBeforeConversion[static_cast<unsigned char>(*fmt)]; ++fmt) {
            slots += *fmt == '*';
        }
        if (*fmt) {
            ++slots;
            ++fmt;
        }
    }
    return slots;
}

}  // namespace vorel::algorithms
