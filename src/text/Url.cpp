#include "vorel/text/Url.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include <emmintrin.h>

#include "kernels/Characters.h"
#include "kernels/UrlEscapes.h"
#include "text/SixBitText.h"
#include "vorel/text/Unicode.h"

namespace vorel::util {

namespace {

using kernels::UrlEscape;
using kernels::UrlEscapes;
using kernels::UrlUse;

std::string_view viewOf(const char* text) noexcept {
    return text ? std::string_view(text) : std::string_view();
}

std::uint64_t encodedLength(std::string_view text, const UrlEscapes& escapes) noexcept {
    std::uint64_t length = 0;
    for (const char c : text) {
        length += escapes[static_cast<unsigned char>(c)].length;
    }
    return length;
}

const char* encode(std::string_view text, const UrlEscapes& escapes, BaseString<char>& output) {
    output.clear();
    if (text.empty()) {
        return output.c_str();
    }
    // Four characters are written at once, of which at most three count.
    constexpr std::size_t kOverhang = 3;
    char* out = text::roomFor(encodedLength(text, escapes) + kOverhang, output);
    for (const char c : text) {
        const UrlEscape& escape = escapes[static_cast<unsigned char>(c)];
        std::memcpy(out, escape.text, sizeof escape.text);
        out += escape.length;
    }
    text::endAt(out, output);
    return output.c_str();
}

/// The byte that a '%' and two digits stand for; 256 or more when there are none.
unsigned int escapedByte(std::string_view text) noexcept {
    constexpr unsigned int kNone = 256;
    if (text.size() < 3) {
        return kNone;
    }
    const unsigned int high = kernels::hexDigitValue(text[1]);
    const unsigned int low = kernels::hexDigitValue(text[2]);
    return high < 16 && low < 16 ? high << 4 | low : kNone;
}

/// Copies whole blocks in which there is neither a '%' nor, with `plusToo`, a '+'; returns how many bytes.
std::size_t copyPlainBlocks(std::string_view text, bool plusToo, char* out) noexcept {
    constexpr std::size_t kBlock = 16;
    const __m128i percent = _mm_set1_epi8('%');
    const __m128i plus = _mm_set1_epi8(plusToo ? '+' : '%');
    std::size_t done = 0;
    for (; text.size() - done >= kBlock; done += kBlock) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + done));
        const __m128i found = _mm_or_si128(_mm_cmpeq_epi8(block, percent), _mm_cmpeq_epi8(block, plus));
        if (_mm_movemask_epi8(found) != 0) {
            break;
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + done), block);
    }
    return done;
}

const char* decode(std::string_view text, bool plusIsSpace, BaseString<char>& output) {
    output.clear();
    if (text.empty()) {
        return output.c_str();
    }
    char* out = text::roomFor(text.size(), output);
    while (!text.empty()) {
        const std::size_t copied = copyPlainBlocks(text, plusIsSpace, out);
        out += copied;
        text.remove_prefix(copied);
        constexpr std::size_t kBetweenBlocks = 16;
        for (const char* const end = text.data() + kBetweenBlocks; !text.empty() && text.data() < end;) {
            const char c = text.front();
            const unsigned int byte = c == '%' ? escapedByte(text) : 256;
            if (byte < 256) {
                *out++ = static_cast<char>(byte);
                text.remove_prefix(3);
            } else {
                *out++ = plusIsSpace && c == '+' ? ' ' : c;
                text.remove_prefix(1);
            }
        }
    }
    text::endAt(out, output);
    return output.c_str();
}

const UrlEscapes& escapesFor(UrlComponent component) noexcept {
    switch (component) {
    case UrlPath: return kernels::urlEscapes(UrlUse::Path, false);
    case UrlPathSegment: return kernels::urlEscapes(UrlUse::PathSegment, false);
    case UrlQuery: return kernels::urlEscapes(UrlUse::Query, true);
    case UrlQueryParameter: return kernels::urlEscapes(UrlUse::QueryParameter, true);
    }
    return kernels::urlEscapes(UrlUse::OtherComponent, false);
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
    return encode(viewOf(text), kernels::urlEscapes(use, spaceAsPlus), output);
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
    return encode(viewOf(text), escapesFor(component), output);
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
