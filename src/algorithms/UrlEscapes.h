/// \file
/// Tables of the percent-encoding of a URL (RFC 3986, section 2.1), one for each use of the encoder. The sets of
/// escaped characters are this library's own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vorel::algorithms {

/// What the encoded text is used for.
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

/// The encoded form of a byte: `length` characters of `text`, which has four so that one store writes them.
struct UrlEscape {
    char text[4];
    std::uint32_t length;
};

/// The encoded form of each byte, and the unchanged bytes as rows and columns for lookups of many at once: the upper
/// four bits of a byte select a row, the lower four a column. Bytes from 128 on are always escaped. See Wojciech Muła,
/// "SIMDized check which bytes are in a set".
struct UrlTable {
    UrlEscape bytes[256];
    std::uint8_t plainRowsOfColumn[16];  ///< one bit for each row in which the byte of the column is unchanged
};

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

constexpr UrlTable urlTableFor(UrlUse use, bool spaceAsPlus) noexcept {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    UrlTable table = {};
    for (unsigned int byte = 0; byte != 256; ++byte) {
        if (byte == ' ' && spaceAsPlus) {
            table.bytes[byte] = {{'+'}, 1};
        } else if (isEscapedIn(use, byte)) {
            table.bytes[byte] = {{'%', kDigits[byte / 16], kDigits[byte % 16]}, 3};
        } else {
            table.bytes[byte] = {{static_cast<char>(byte)}, 1};
            std::uint8_t& rows = table.plainRowsOfColumn[byte % 16];
            rows = static_cast<std::uint8_t>(rows | 1u << byte / 16);
        }
    }
    return table;
}

struct UrlTables {
    UrlTable tables[kUrlUses][2];
};

}  // namespace detail

/// For each use: with a space as "%20", and as '+'.
inline constexpr detail::UrlTables kUrlTables = [] {
    detail::UrlTables all = {};
    for (std::size_t use = 0; use != kUrlUses; ++use) {
        all.tables[use][0] = detail::urlTableFor(static_cast<UrlUse>(use), false);
        all.tables[use][1] = detail::urlTableFor(static_cast<UrlUse>(use), true);
    }
    return all;
}();

constexpr const UrlTable& urlTable(UrlUse use, bool spaceAsPlus) noexcept {
    return kUrlTables.tables[static_cast<std::size_t>(use)][spaceAsPlus ? 1 : 0];
}

}  // namespace vorel::algorithms
