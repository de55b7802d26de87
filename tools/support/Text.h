/// \file
/// Texts of the tools: wide inside, as the arguments and the names of files are, and UTF-8 outside.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "vorel/core/BaseString.h"

namespace tools {

/// The UTF-8 form of `text`, zero units included. A surrogate that is not part of a pair becomes "?".
std::string toUtf8(std::wstring_view text);

/// The wide form of `text`, zero bytes included; nothing when a byte starts no sequence. All well-formed text is taken,
/// also the sequences that begin with F1 and F3, which the library does not take. Overlong forms, encoded surrogates
/// and wrong trailing bytes are taken as the library takes them.
std::optional<std::wstring> fromUtf8(std::string_view text);

/// The printf-style rendering of `format`; wide text goes under %ls.
/// \throws vorel::Exception when the format cannot be rendered.
template <class... Values>
std::wstring formatted(const wchar_t* format, Values... values) {
    vorel::BaseString<wchar_t> text;
    text.format(format, values...);
    return std::wstring(text.view());
}

}  // namespace tools
