/// \file
/// Texts of a log that may be damaged: whether they are strict UTF-8, and a form that shows what is not.
#pragma once

#include <string>
#include <string_view>

namespace vorellog {

bool isUtf8(std::string_view text) noexcept;

/// Appends `text` for people: tabs stay, other control characters and bytes that are no UTF-8 become "\x1B", so that
/// nothing in a log gives orders to a terminal.
void appendVisible(std::string& out, std::string_view text);

}  // namespace vorellog
