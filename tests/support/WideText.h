/// \file
/// Narrow text as wide text, and the reverse. Each unit keeps its value.
#pragma once

#include <string>
#include <string_view>

namespace test {

/// `units` in the character type `T`.
template <class T>
std::basic_string<T> text(std::string_view units) {
    std::basic_string<T> result;
    result.reserve(units.size());
    for (const char unit : units) {
        result += static_cast<T>(static_cast<unsigned char>(unit));
    }
    return result;
}

inline std::wstring widened(std::string_view units) {
    return text<wchar_t>(units);
}

/// Only the low byte of each unit is kept.
inline std::string narrowed(std::wstring_view units) {
    std::string result;
    result.reserve(units.size());
    for (const wchar_t unit : units) {
        result += static_cast<char>(unit);
    }
    return result;
}

}  // namespace test
