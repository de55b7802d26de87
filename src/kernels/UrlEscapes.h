/// \file
/// Which bytes are escaped in a URL, and the escapes: tables for each use of the encoder.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vorel::kernels {

/// What the text is encoded for.
enum class UrlUse : std::uint8_t {
    Plain,
    Reserved,
    Path,
    PathSegment,
    Query,
    QueryParameter,
    OtherComponent,
};

inline constexpr std::size_t kUrlUses = 7;

/// What becomes of a byte: `length` characters of `text`, which has four, so that they can be written at once.
struct UrlEscape {
    char text[4];
    std::uint32_t length;
};

/// What becomes of each byte.
using UrlEscapes = std::array<UrlEscape, 256>;

namespace detail {

constexpr bool isOneOf(unsigned int byte, std::string_view characters) noexcept {
    for (const char c : characters) {
        if (byte == static_cast<unsigned char>(c)) {
            return true;
        }
    }
    return false;
}

constexpr bool isEscapedIn(UrlUse use, unsigned int byte) noexcept {
    if (byte >= 128 || byte == ' ' || isOneOf(byte, "\"#%<>[\\]^`{|}")) {
        return true;
    }
    switch (use) {
    case UrlUse::Plain: return byte == '~';
    case UrlUse::Reserved: return isOneOf(byte, "~$&+,/:;=?@");
    case UrlUse::Path: return byte == '?';
    case UrlUse::PathSegment: return isOneOf(byte, "/?");
    case UrlUse::Query: return byte == '+';
    case UrlUse::QueryParameter: return isOneOf(byte, "+&=");
    case UrlUse::OtherComponent: break;
    }
    return false;
}

constexpr UrlEscapes urlEscapesFor(UrlUse use, bool spaceAsPlus) noexcept {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    UrlEscapes escapes = {};
    for (unsigned int byte = 0; byte != escapes.size(); ++byte) {
        if (byte == ' ' && spaceAsPlus) {
            escapes[byte] = {{'+'}, 1};
        } else if (isEscapedIn(use, byte)) {
            escapes[byte] = {{'%', kDigits[byte / 16], kDigits[byte % 16]}, 3};
        } else {
            escapes[byte] = {{static_cast<char>(byte)}, 1};
        }
    }
    return escapes;
}

}  // namespace detail

/// For each use, with a space as "%20" and as '+'.
inline constexpr auto kUrlEscapes = [] {
    std::array<std::array<UrlEscapes, 2>, kUrlUses> all = {};
    for (std::size_t use = 0; use != all.size(); ++use) {
        all[use][0] = detail::urlEscapesFor(static_cast<UrlUse>(use), false);
        all[use][1] = detail::urlEscapesFor(static_cast<UrlUse>(use), true);
    }
    return all;
}();

constexpr const UrlEscapes& urlEscapes(UrlUse use, bool spaceAsPlus) noexcept {
    return kUrlEscapes[static_cast<std::size_t>(use)][spaceAsPlus ? 1 : 0];
}

}  // namespace vorel::kernels
