/// \file
/// `std::formatter` for strings and exceptions, if the standard library has `<format>`. The standard library of GCC 12
/// does not have it; this header then defines nothing. `vorelCore.h` does not include this header, because `<format>`
/// is large.
///
///     std::format("{:>10}", vorel::BaseString<char>("right"))   // "     right"
///     std::format(L"{}", exception)
///
/// Strings and exceptions have the same format specifications as `std::string_view`. A string of `char` needs a format
/// of `char`, and a string of `wchar_t` a format of `wchar_t`. Threads may use different objects at the same time.
#pragma once

#if __has_include(<format>)

#include <concepts>
#include <format>
#include <string_view>

#include "vorel/Trail.h"
#include "vorel/core/BaseString.h"
#include "vorel/exceptions/Exception.h"

/// Formats the text of a string.
template <class T>
struct std::formatter<vorel::BaseString<T>, T> : std::formatter<std::basic_string_view<T>, T> {
    template <class Context>
    auto format(const vorel::BaseString<T>& text, Context& context) const {
        return std::formatter<std::basic_string_view<T>, T>::format(text.view(), context);
    }
};

/// Formats all messages of an exception, oldest first, separated by "; ": in UTF-8 for `char`, in UTF-16 for `wchar_t`.
/// The exception does not change.
/// \throws MemoryException if the text cannot be allocated.
template <std::derived_from<vorel::Exception> Failure, class T>
struct std::formatter<Failure, T> : std::formatter<std::basic_string_view<T>, T> {
    template <class Context>
    auto format(const vorel::Exception& exception, Context& context) const {
        const vorel::BaseString<T> trail = vorel::detail::trailOf<T>(exception);
        return std::formatter<std::basic_string_view<T>, T>::format(trail.view(), context);
    }
};

#endif
