/// \file
/// Strict UTF-8, to tell sound text from damage: no overlong forms, no surrogates, nothing above U+10FFFF. (The
/// library's decoder takes such forms on purpose, and so cannot tell.)
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vorellog {

/// The bytes of the sequence that `text` begins with, 1 to 4; 0 when it begins with none, or is empty.
std::size_t sequenceSize(std::string_view text) noexcept;

bool isUtf8(std::string_view text) noexcept;

/// Appends `text` for people: tabs stay, other control characters and bytes that are no UTF-8 become "\x1B", so that
/// nothing in a log gives orders to a terminal.
void appendVisible(std::string& out, std::string_view text);

}  // namespace vorellog
