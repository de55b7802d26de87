/// \file
/// One form for texts of both widths, so that the references of the parsers are written once: what means something to
/// a parser stands for itself, white space of the width is a blank, and everything else a question mark.
#pragma once

#include <string>
#include <string_view>

namespace test {

inline constexpr std::string_view kBlanks = " \t\n\r";

/// The no-break space is a blank in wide text only.
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
