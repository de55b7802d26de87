/// \file
/// Converts texts of both widths to one narrow form, so that there is only one version of the reference parsers. ASCII
/// characters except zero and DEL are kept, a no-break space in wide text becomes a space, and all other characters
/// become question marks.
#pragma once

#include <string>
#include <string_view>

namespace test {

inline constexpr std::string_view kBlanks = " \t\n\r";

/// The no-break space is white space in wide text only.
template <class T>
std::string shapeOf(std::basic_string_view<T> text) {
    std::string shape;
    for (const T unit : text) {
        if (sizeof(T) > 1 && unit == static_cast<T>(0xA0)) {
            shape += ' ';
        } else {
            shape += unit > 0 && unit < 0x7F ? static_cast<char>(unit) : '?';
        }
    }
    return shape;
}

}  // namespace test
