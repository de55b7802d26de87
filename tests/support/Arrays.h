/// \file
/// Converts the library's arrays and strings to standard containers, for comparisons and failure messages, and converts
/// standard containers to arrays and strings of the library.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/Widths.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace test {

template <class T>
std::vector<T> valuesOf(const vorel::Array<T>& array) {
    return std::vector<T>(array.begin(), array.end());
}

template <class T>
vorel::Array<T> arrayOf(const std::vector<T>& values) {
    vorel::Array<T> array;
    for (const T value : values) {  // one by one, because the elements of std::vector<bool> are not contiguous
        array.append(value);
    }
    return array;
}

template <class T>
std::vector<std::basic_string<T>> textsOf(const vorel::Array<vorel::BaseString<T>>& strings) {
    std::vector<std::basic_string<T>> result;
    for (const vorel::BaseString<T>& string : strings) {
        result.emplace_back(string.view());
    }
    return result;
}

template <class T>
vorel::Array<vorel::BaseString<T>> stringsOf(const std::vector<std::basic_string<T>>& texts) {
    vorel::Array<vorel::BaseString<T>> result;
    for (const std::basic_string<T>& text : texts) {
        result.append(vorel::BaseString<T>(text.c_str()));
    }
    return result;
}

/// The narrow rows of a table, converted to the character type of the test.
template <class T>
std::vector<std::basic_string<T>> texts(const std::vector<std::string_view>& rows) {
    std::vector<std::basic_string<T>> result;
    for (const std::string_view row : rows) {
        result.push_back(text<T>(row));
    }
    return result;
}

/// The text of a row, or null for a row without text.
template <class T>
class OptionalText {
public:
    explicit OptionalText(const char* row) : m_text(row ? text<T>(row) : std::basic_string<T>()), m_isNull(!row) {}

    [[nodiscard]] const T* get() const { return m_isNull ? nullptr : m_text.c_str(); }

private:
    std::basic_string<T> m_text;
    bool m_isNull;
};

}  // namespace test
