/// \file
/// Reference implementation of URL escapes: character by character, with the documented character sets.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

namespace test {

/// The characters that every version of the encoder escapes, in addition to the space and all characters outside ASCII.
inline constexpr std::string_view kUrlAlwaysEscaped = "\"#%<>[\\]^`{|}";
inline constexpr std::string_view kUrlReserved = "$&+,/:;=?@";

/// A version of the encoder: the additional characters that it escapes, and how it writes a space.
struct UrlRule {
    std::string also;
    bool spaceAsPlus;
};

inline std::string urlEncoded(std::string_view text, const UrlRule& rule) {
    const std::string escaped = std::string(kUrlAlwaysEscaped) + rule.also;
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == ' ') {
            result += rule.spaceAsPlus ? "+" : "%20";
        } else if (byte >= 128 || (c != 0 && escaped.find(c) != std::string::npos)) {
            char escape[4];
            std::snprintf(escape, sizeof escape, "%%%2.2X", static_cast<unsigned int>(byte));
            result += escape;
        } else {
            result += c;
        }
    }
    return result;
}

inline std::string urlDecoded(std::string_view text, bool plusIsSpace) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::string pair(text.substr(at + 1 < text.size() ? at + 1 : at, 2));
        if (text[at] == '%' && at + 2 < text.size() &&
            pair.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos) {
            result += static_cast<char>(std::stoul(pair, nullptr, 16));
            at += 2;
        } else {
            result += plusIsSpace && text[at] == '+' ? ' ' : text[at];
        }
    }
    return result;
}

}  // namespace test
