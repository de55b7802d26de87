/// \file
/// Text from logs, files and command lines in a form that is safe to show: it cannot send commands to a terminal,
/// reorder or hide other text, or end a line early.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tools {

/// Whether a terminal may interpret the code point instead of showing it: control characters (tab and line ends too),
/// line separators, bidirectional controls, and characters without a width.
constexpr bool needsEscape(std::uint32_t codePoint) noexcept {
    return codePoint < 0x20 || (codePoint >= 0x7F && codePoint <= 0x9F) || codePoint == 0x061C ||
           (codePoint >= 0x200B && codePoint <= 0x200F) || (codePoint >= 0x2028 && codePoint <= 0x202E) ||
           (codePoint >= 0x2060 && codePoint <= 0x2069) || codePoint == 0xFEFF;
}

/// Appends `text` as well-formed UTF-8. Tabs stay; each byte of another character that needs an escape, and each byte
/// that is not UTF-8, becomes "\x1B". Backslashes stay, so that the form of a form is the same.
void appendVisible(std::string& out, std::string_view text);

/// The same for wide text, whose lines stay: only a line feed, alone or after carriage returns, is kept. A surrogate
/// that is not part of a pair becomes "?".
std::wstring visibleLines(std::wstring_view text);

}  // namespace tools
