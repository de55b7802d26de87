/// \file
/// Text conversions of the tools. Arguments, file names and messages are wide text; input and output are UTF-8.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "vorel/core/BaseString.h"

namespace tools {

/// Converts `text` to UTF-8, zero units included. A surrogate that is not part of a pair becomes "?".
std::string toUtf8(std::wstring_view text);

/// Converts UTF-8 to wide text, zero bytes included. All well-formed text is accepted, including sequences that begin
/// with F1 or F3, which the library rejects. Returns nullopt if a sequence begins with a byte that is not a lead byte,
/// or if a sequence that begins with F1 or F3 is malformed. In other sequences, overlong forms, encoded surrogates and
/// invalid trailing bytes are decoded as the library decodes them.
std::optional<std::wstring> fromUtf8(std::string_view text);

/// Formats in printf style; `%ls` takes wide text.
/// \throws vorel::Exception if the text cannot be formatted.
template <class... Values>
std::wstring formatted(const wchar_t* format, Values... values) {
    vorel::BaseString<wchar_t> text;
    text.format(format, values...);
    return std::wstring(text.view());
}

}  // namespace tools
