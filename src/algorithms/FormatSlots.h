/// \file
/// Counts the arguments of a printf-style format.
#pragma once

#include <string_view>

namespace vorel::algorithms {

/// The number of arguments of `fmt`: one for each conversion, and one for each `*` as width or precision. "%%" takes
/// none.
///
///     "%d of %*s%%"  →  3
template <class T>
constexpr unsigned int countFormatSlots(const T* fmt) noexcept {
    constexpr std::string_view kBeforeConversion = "-+ #0123456789.*hlLwIjztT";
    unsigned int slots = 0;
    while (*fmt) {
        if (*fmt++ != '%') {
            continue;
        }
        if (*fmt == '%') {
            ++fmt;
            continue;
        }
        for (; *fmt && *fmt < 128 && kBeforeConversion.find(static_cast<char>(*fmt)) != std::string_view::npos; ++fmt) {
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
