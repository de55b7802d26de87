/// \file
/// Percent-encodes text for a URL (RFC 3986, section 2.1) and decodes it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include <emmintrin.h>

#include "algorithms/HexDigits.h"
#include "algorithms/Processor.h"
#include "algorithms/UrlEscapes.h"
#include "algorithms/UrlEscapesAvx2.h"

namespace vorel::algorithms {

/// The length of the encoded text.
inline std::uint64_t urlLength(std::string_view text, const UrlTable& table) noexcept {
    std::uint64_t length = 0;
    if (s_useAvx2) {
        const UrlProgress progress = measureUrlAvx2(text.data(), text.size(), table);
        length = progress.written;
        text.remove_prefix(progress.read);
    }
    for (const char c : text) {
        length += table.bytes[static_cast<unsigned char>(c)].length;
    }
    return length;
}

/// Writes the encoded text, or as much as fits with `kUrlOverhang` bytes to spare. At least one of the `capacity` bytes
/// remains unused. Never writes more than `capacity` bytes, even if another thread changes the text during the call.
inline UrlProgress encodeUrl(std::string_view text, const UrlTable& table, char* out, std::size_t capacity) noexcept {
    UrlProgress done = {0, 0};
    if (s_useAvx2) {
        done = encodeUrlAvx2(text.data(), text.size(), table, out, capacity);
    }
    for (; done.read != text.size() && capacity - done.written >= sizeof UrlEscape::text; ++done.read) {
        const UrlEscape& escape = table.bytes[static_cast<unsigned char>(text[done.read])];
        std::memcpy(out + done.written, escape.text,
                    sizeof escape.text);  // stores all four, at most three are significant
        done.written += escape.length;
    }
    return done;
}

/// Decodes the escape or character at `cursor`, which is before the end, and advances both pointers.
[[gnu::always_inline]] inline void decodeUrlCharacter(const char*& cursor, const char* end, bool plusIsSpace,
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

/// Writes the decoded text, which is never longer than the input, and returns the end. `out` has space for
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
