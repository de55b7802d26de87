/// \file
/// Percent-encoding of URLs (RFC 3986, section 2.1): the encoded form of each byte, then encoding and decoding of
/// narrow text. Measuring and encoding call AVX2 versions if the processor has AVX2 (see Processor.h).
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "algorithms/Ascii.h"
#include "algorithms/Attributes.h"
#include "algorithms/HexText.h"
#include "algorithms/Processor.h"
#include "algorithms/Sse2.h"

namespace vorel::algorithms {

/// The use of the encoded text. It decides which bytes are escaped, and whether a space becomes '+' or "%20".
enum class UrlUse : std::uint8_t {
    Plain,
    PlainWithPlus,
    Reserved,
    ReservedWithPlus,
    Path,
    PathSegment,
    Query,
    QueryParameter,
    OtherComponent,
};

inline constexpr std::size_t kUrlUses = 9;

/// The encoded form of a byte: the first `length` characters of `text`. The struct has four bytes, so that one
/// store writes the characters. The store also writes the length after the characters.
struct UrlEscape {
    char text[3];
    std::uint8_t length;
};

/// The encoded form of each byte, and a table with which vector instructions find the bytes that encoding does not
/// change. The upper four bits of a byte select a row of this table, and the lower four bits select a column. Bytes
/// from 128 on are always escaped. See Wojciech Muła, "SIMDized check which bytes are in a set".
struct UrlTable {
    UrlEscape bytes[256];
    std::uint8_t plainRowsOfColumn[16];  ///< one bit for each row in which the byte of the column is unchanged
};

namespace detail {

constexpr bool isEscapedIn(UrlUse use, unsigned int byte) noexcept {
    if (byte >= 128 || byte == ' ' || isOneOf(byte, "\"#%<>[\\]^`{|}")) {
        return true;
    }
    switch (use) {
    case UrlUse::Plain:
    case UrlUse::PlainWithPlus: return byte == '~';
    case UrlUse::Reserved:
    case UrlUse::ReservedWithPlus: return isOneOf(byte, "~$&+,/:;=?@");
    case UrlUse::Path: return byte == '?';
    case UrlUse::PathSegment: return isOneOf(byte, "/?");
    case UrlUse::Query: return byte == '+';
    case UrlUse::QueryParameter: return isOneOf(byte, "+&=");
    case UrlUse::OtherComponent: break;
    }
    return false;
}

constexpr bool writesSpaceAsPlus(UrlUse use) noexcept {
    switch (use) {
    case UrlUse::PlainWithPlus:
    case UrlUse::ReservedWithPlus:
    case UrlUse::Query:
    case UrlUse::QueryParameter: return true;
    default: return false;
    }
}

constexpr UrlTable urlTableFor(UrlUse use) noexcept {
    const auto digit = [](unsigned int value) { return hexDigit(value, HexCase::Upper); };
    UrlTable table = {};
    for (unsigned int byte = 0; byte != 256; ++byte) {
        if (byte == ' ' && writesSpaceAsPlus(use)) {
            table.bytes[byte] = {{'+'}, 1};
        } else if (isEscapedIn(use, byte)) {
            table.bytes[byte] = {{'%', digit(byte / 16), digit(byte % 16)}, 3};
        } else {
            table.bytes[byte] = {{static_cast<char>(byte)}, 1};
            std::uint8_t& rows = table.plainRowsOfColumn[byte % 16];
            rows = static_cast<std::uint8_t>(rows | 1u << byte / 16);
        }
    }
    return table;
}

struct UrlTables {
    UrlTable tables[kUrlUses];
};

}  // namespace detail

inline constexpr detail::UrlTables kUrlTables = [] {
    detail::UrlTables all = {};
    for (std::size_t use = 0; use != kUrlUses; ++use) {
        all.tables[use] = detail::urlTableFor(static_cast<UrlUse>(use));
    }
    return all;
}();

constexpr const UrlTable& urlTable(UrlUse use) noexcept {
    return kUrlTables.tables[static_cast<std::size_t>(use)];
}

// ---- AVX2 -----------------------------------------------------------------------------------------------------------

/// The number of bytes read, and of characters written or counted.
struct UrlProgress {
    std::size_t read;
    std::size_t written;
};

/// Computes the length of the encoded text, but only for whole blocks of 32 bytes. Up to 31 of the `count` bytes remain
/// and are not read.
UrlProgress measureUrlAvx2(const char* text, std::size_t count, const UrlTable& table) noexcept;

/// The number of bytes in two blocks. The AVX2 version encodes nothing of a shorter text.
inline constexpr std::size_t kUrlMinAvx2 = 64;

/// Bytes that may be written past the encoded text.
inline constexpr std::size_t kUrlOverhang = 32;

/// Encodes whole blocks of 32 bytes while another block follows, and while the encoded block and `kUrlOverhang` bytes
/// fit into the rest of `capacity`. Never writes more than `capacity` bytes, even if another thread changes the text
/// during the call.
UrlProgress encodeUrlAvx2(const char* text, std::size_t count, const UrlTable& table, char* out,
                          std::size_t capacity) noexcept;

// ---- Whole texts ----------------------------------------------------------------------------------------------------

/// The length of the encoded text.
inline std::uint64_t urlLength(std::string_view text, const UrlTable& table) noexcept {
    std::uint64_t length = 0;
    if (Processor::usesAvx2()) {
        const UrlProgress progress = measureUrlAvx2(text.data(), text.size(), table);
        length = progress.written;
        text.remove_prefix(progress.read);
    }
    for (const char c : text) {
        length += table.bytes[static_cast<unsigned char>(c)].length;
    }
    return length;
}

/// Writes the encoded text. May stop before the end of the text if fewer than four of the `capacity` bytes remain
/// unused. At least one of the `capacity` bytes remains unused, unless `capacity` is 0. Never writes more than
/// `capacity` bytes, even if another thread changes the text during the call.
inline UrlProgress encodeUrl(std::string_view text, const UrlTable& table, char* out, std::size_t capacity) noexcept {
    UrlProgress done = {0, 0};
    if (text.size() >= kUrlMinAvx2 && Processor::usesAvx2()) {
        done = encodeUrlAvx2(text.data(), text.size(), table, out, capacity);
    }
    const auto encodeNext = [&] {
        // The characters and the length, which is the last byte, are loaded together. Otherwise, the compiler would
        // load the length a second time after the store, because the compiler assumes that the store can change the
        // table.
        std::uint32_t escape = 0;
        std::memcpy(&escape, &table.bytes[static_cast<unsigned char>(text[done.read])], sizeof escape);
        std::memcpy(out + done.written, &escape, sizeof escape);
        done.written += escape >> 24;
        ++done.read;
    };
    constexpr std::size_t kLongest = 3;
    if (capacity - done.written > kLongest * (text.size() - done.read)) {
        while (done.read != text.size()) {
            encodeNext();
        }
        return done;
    }
    while (done.read != text.size() && capacity - done.written >= sizeof(UrlEscape)) {
        encodeNext();
    }
    return done;
}

/// Decodes the escape or character at `cursor`, which must be before `end`, and advances `cursor` and `out`.
VOREL_ALWAYS_INLINE void decodeUrlCharacter(const char*& cursor, const char* end, bool plusIsSpace,
                                            char*& out) noexcept {
    const char c = *cursor;
    if (c == '%' && end - cursor > 2) {
        const unsigned int high = hexDigitOf(cursor[1]);
        const unsigned int low = hexDigitOf(cursor[2]);
        if ((high | low) < 16) {
            *out++ = static_cast<char>(high << 4 | low);
            cursor += 3;
            return;
        }
    }
    *out++ = plusIsSpace && c == '+' ? ' ' : c;
    ++cursor;
}

/// Bytes that may be written past the decoded text.
inline constexpr std::size_t kUrlDecodingOverhang = 16;

/// Writes the decoded text, which is never longer than the input, and returns the end. `out` must have space for
/// `kUrlDecodingOverhang` more characters than the text.
inline char* decodeUrl(std::string_view text, bool plusIsSpace, char* out) noexcept {
    constexpr std::ptrdiff_t kBlock = 16;
    const char* cursor = text.data();
    const char* const end = cursor + text.size();
    const __m128i percent = _mm_set1_epi8('%');
    const __m128i plus = _mm_set1_epi8(plusIsSpace ? '+' : '%');
    while (end - cursor >= kBlock) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(cursor));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), block);
        const __m128i found = _mm_or_si128(_mm_cmpeq_epi8(block, percent), _mm_cmpeq_epi8(block, plus));
        const auto mask = static_cast<unsigned int>(_mm_movemask_epi8(found));
        if (mask == 0) {
            cursor += kBlock;
            out += kBlock;
            continue;
        }
        const int plain = std::countr_zero(mask);
        cursor += plain;
        out += plain;
        decodeUrlCharacter(cursor, end, plusIsSpace, out);
    }
    while (cursor != end) {
        decodeUrlCharacter(cursor, end, plusIsSpace, out);
    }
    return out;
}

}  // namespace vorel::algorithms
