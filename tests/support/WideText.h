/// \file
/// Conversion of narrow text to wide text, and the reverse, unit by unit.
#pragma once

#include <string>
#include <string_view>

namespace test {

/// `units` in the character type `T`. Each unit keeps its value from 0 to 255.
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

/// `units` as narrow text, which contains only the low byte of each unit.
inline std::string narrowed(std::wstring_view units) {
    std::string result;
    result.reserve(units.size());
    for (const wchar_t unit : units) {
        result += static_cast<char>(unit);
    }
    return result;
}

}  // namespace test
