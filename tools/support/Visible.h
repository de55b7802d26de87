/// \file
/// Makes text from logs, files and command lines safe to show: the text cannot send commands to a terminal, or reorder
/// or hide other text. Except with `visibleLines`, it cannot end a line either.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tools {

/// Whether a terminal may interpret the code point instead of showing it: control characters (including tab and line
/// ends), line separators, bidirectional controls, and zero-width characters.
constexpr bool needsEscape(std::uint32_t codePoint) noexcept {
    return codePoint < 0x20 || (codePoint >= 0x7F && codePoint <= 0x9F) || codePoint == 0x061C ||
           (codePoint >= 0x200B && codePoint <= 0x200F) || (codePoint >= 0x2028 && codePoint <= 0x202E) ||
           (codePoint >= 0x2060 && codePoint <= 0x2069) || codePoint == 0xFEFF;
}

/// Appends `text` as well-formed UTF-8. Each byte of a character that needs an escape, except tab, and each byte that
/// is not valid UTF-8 becomes an escape such as "\x1B". Backslashes are not escaped, so applying the function twice has
/// no further effect.
void appendVisible(std::string& out, std::string_view text);

/// Returns wide text with the same escapes. Line feeds are kept, and carriage returns before a line feed are removed. A
/// surrogate that is not part of a pair becomes "?".
std::wstring visibleLines(std::wstring_view text);

}  // namespace tools
