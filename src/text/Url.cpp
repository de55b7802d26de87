#include "vorel/text/Url.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include <emmintrin.h>

#include "kernels/HexDigits.h"
#include "kernels/Processor.h"
#include "kernels/TextLength.h"
#include "kernels/UrlEscapes.h"
#include "kernels/UrlEscapesAvx2.h"
#include "text/SixBitText.h"
#include "vorel/text/Unicode.h"

namespace vorel::util {

namespace {

using kernels::UrlEscape;
using kernels::UrlTable;
using kernels::UrlUse;

std::string_view viewOf(const char* text) noexcept {
    return text ? std::string_view(text, kernels::textLength(text)) : std::string_view();
}

std::uint64_t encodedLength(std::string_view text, const UrlTable& table) noexcept {
    std::uint64_t length = 0;
    if (kernels::s_useAvx2) {
        const kernels::UrlProgress progress = kernels::measureUrlAvx2(text.data(), text.size(), table);
        length = progress.written;
        text.remove_prefix(progress.read);
    }
    for (const char c : text) {
        length += table.bytes[static_cast<unsigned char>(c)].length;
    }
    return length;
}

const char* encode(std::string_view text, const UrlTable& table, BaseString<char>& output) {
    output.clear();
    if (text.empty()) {
        return output.c_str();
    }
    constexpr std::size_t kShort = 64;  // for these the most that they can become costs less than to measure them
    constexpr std::size_t kLongestEscape = 3;
    const std::uint64_t length = text.size() > kShort ? encodedLength(text, table) : kLongestEscape * text.size();
    char* out = text::roomFor(length + kernels::kUrlOverhang, output);
    if (kernels::s_useAvx2) {
        const kernels::UrlProgress progress = kernels::encodeUrlAvx2(text.data(), text.size(), table, out);
        out += progress.written;
        text.remove_prefix(progress.read);
    }
    for (const char c : text) {
        const UrlEscape& escape = table.bytes[static_cast<unsigned char>(c)];
        std::memcpy(out, escape.text, sizeof escape.text);  // all four, of which at most three count
        out += escape.length;
    }
    text::endAt(out, output);
    return output.c_str();
}

/// Writes the escape or the character at `place`, which is not the end, and moves both places on.
[[gnu::always_inline]] inline void decodeOne(const char*& place, const char* end, bool plusIsSpace,
                                             char*& out) noexcept {
    const char c = *place;
    if (c == '%' && end - place > 2) {
        const unsigned int high = kernels::hexDigitOf(place[1]);
        const unsigned int low = kernels::hexDigitOf(place[2]);
        if ((high | low) < 16) {
            *out++ = static_cast<char>(high << 4 | low);
            place += 3;
            return;
        }
    }
    *out++ = plusIsSpace && c == '+' ? ' ' : c;
    ++place;
}

const char* decode(std::string_view text, bool plusIsSpace, BaseString<char>& output) {
    output.clear();
    if (text.empty()) {
        return output.c_str();
    }
    constexpr std::ptrdiff_t kBlock = 16;
    char* out = text::roomFor(std::uint64_t{text.size()} + kBlock, output);
    const char* place = text.data();
    const char* const end = place + text.size();
    const __m128i percent = _mm_set1_epi8('%');
    const __m128i plus = _mm_set1_epi8(plusIsSpace ? '+' : '%');
    while (end - place >= kBlock) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(place));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), block);
        const __m128i found = _mm_or_si128(_mm_cmpeq_epi8(block, percent), _mm_cmpeq_epi8(block, plus));
        const auto mask = static_cast<unsigned int>(_mm_movemask_epi8(found));
        if (mask == 0) {
            place += kBlock;
            out += kBlock;
            continue;
        }
        const int plain = std::countr_zero(mask);
        place += plain;
        out += plain;
        decodeOne(place, end, plusIsSpace, out);
    }
    while (place != end) {
        decodeOne(place, end, plusIsSpace, out);
    }
    text::endAt(out, output);
    return output.c_str();
}

const UrlTable& tableFor(UrlComponent component) noexcept {
    switch (component) {
    case UrlPath: return kernels::urlTable(UrlUse::Path, false);
    case UrlPathSegment: return kernels::urlTable(UrlUse::PathSegment, false);
    case UrlQuery: return kernels::urlTable(UrlUse::Query, true);
    case UrlQueryParameter: return kernels::urlTable(UrlUse::QueryParameter, true);
    }
    return kernels::urlTable(UrlUse::OtherComponent, false);
}

/// Runs `narrow(text, output)` on the UTF-8 form of a wide text, and makes its output wide.
template <class Narrow>
const wchar_t* throughUtf8(const wchar_t* text, BaseString<wchar_t>& output, Narrow&& narrow) {
    BaseString<char> utf8;
    ConvertStringtoUTF8(text, utf8, -1);
    BaseString<char> result;
    ConvertUTF8toString(output, narrow(utf8.c_str(), result), -1, true);
    return output.c_str();
}

}  // namespace

const char* urlEncode(const char* text, BaseString<char>& output, bool escapeReserved, bool spaceAsPlus) {
    const UrlUse use = escapeReserved ? UrlUse::Reserved : UrlUse::Plain;
    return encode(viewOf(text), kernels::urlTable(use, spaceAsPlus), output);
}

const wchar_t* urlEncode(const wchar_t* text, BaseString<wchar_t>& output, bool escapeReserved, bool spaceAsPlus) {
    return throughUtf8(text, output, [=](const char* utf8, BaseString<char>& result) {
        return urlEncode(utf8, result, escapeReserved, spaceAsPlus);
    });
}

BaseString<char> urlEncode(const char* text, bool escapeReserved, bool spaceAsPlus) {
    BaseString<char> output;
    urlEncode(text, output, escapeReserved, spaceAsPlus);
    return output;
}

BaseString<wchar_t> urlEncode(const wchar_t* text, bool escapeReserved, bool spaceAsPlus) {
    BaseString<wchar_t> output;
    urlEncode(text, output, escapeReserved, spaceAsPlus);
    return output;
}

const char* urlEncodeComponent(const char* text, BaseString<char>& output, UrlComponent component) {
    return encode(viewOf(text), tableFor(component), output);
}

const wchar_t* urlEncodeComponent(const wchar_t* text, BaseString<wchar_t>& output, UrlComponent component) {
    return throughUtf8(text, output, [=](const char* utf8, BaseString<char>& result) {
        return urlEncodeComponent(utf8, result, component);
    });
}

BaseString<char> urlEncodeComponent(const char* text, UrlComponent component) {
    BaseString<char> output;
    urlEncodeComponent(text, output, component);
    return output;
}

BaseString<wchar_t> urlEncodeComponent(const wchar_t* text, UrlComponent component) {
    BaseString<wchar_t> output;
    urlEncodeComponent(text, output, component);
    return output;
}

const char* urlDecode(const char* text, BaseString<char>& output, int flags) {
    return decode(viewOf(text), (flags & 1) != 0, output);
}

const wchar_t* urlDecode(const wchar_t* text, BaseString<wchar_t>& output, int flags) {
    return throughUtf8(text, output,
                       [=](const char* utf8, BaseString<char>& result) { return urlDecode(utf8, result, flags); });
}

BaseString<char> urlDecode(const char* text) {
    BaseString<char> output;
    urlDecode(text, output, 0);
    return output;
}

BaseString<wchar_t> urlDecode(const wchar_t* text) {
    BaseString<wchar_t> output;
    urlDecode(text, output, 0);
    return output;
}

}  // namespace vorel::util
