#include "vorel/text/Url.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "algorithms/PageReads.h"
#include "algorithms/UrlText.h"
#include "algorithms/Utf8.h"
#include "core/HeldInputs.h"
#include "core/StringAccess.h"
#include "text/OutputSinks.h"
#include "vorel/text/Unicode.h"

namespace vorel::util {

namespace {

using algorithms::UrlTable;
using algorithms::UrlUse;

std::string_view viewOf(const char* text) noexcept {
    return text ? std::string_view(text, algorithms::textLength(text)) : std::string_view();
}

void write(std::string_view text, const UrlTable& table, BaseString<char>& output) {
    constexpr std::size_t kShort = 64;  // up to this length, reserving the upper bound is cheaper than measuring
    constexpr std::size_t kLongestEscape = 3;
    const std::uint64_t length =
        text.size() > kShort ? algorithms::urlLength(text, table) : kLongestEscape * text.size();
    text::reserveUnits(length + algorithms::kUrlOverhang, output);
    std::size_t written = 0;
    for (;;) {
        const algorithms::UrlProgress done =
            algorithms::encodeUrl(text, table, output.data() + written, output.capacity() - written);
        written += done.written;
        text.remove_prefix(done.read);
        detail::StringAccess<char>::setLength(output, static_cast<unsigned int>(written));
        if (text.empty()) {
            return;
        }
        // Reached only if another thread or process changed the text after it was measured. The new capacity is enough
        // for any content.
        text::growUnits(written + kLongestEscape * text.size() + algorithms::kUrlOverhang, output);
    }
}

void write(std::string_view text, bool plusIsSpace, BaseString<char>& output) {
    char* const out = text::reserveUnits(std::uint64_t{text.size()} + algorithms::kUrlDecodingOverhang, output);
    text::setEnd(algorithms::decodeUrl(text, plusIsSpace, out), output);
}

/// Replaces `output` by the encoded text (`rule` is a table) or the decoded text (`rule` says whether '+' is a space).
template <class Rule>
const char* replace(std::string_view text, const Rule& rule, BaseString<char>& output) {
    if (text.empty()) {
        output.clear();
    } else {
        const detail::HeldInput held(output, text.data());
        write(text, rule, output);
    }
    return output.c_str();
}

const UrlTable& tableFor(UrlComponent component) noexcept {
    switch (component) {
    case UrlPath: return algorithms::urlTable(UrlUse::Path);
    case UrlPathSegment: return algorithms::urlTable(UrlUse::PathSegment);
    case UrlQuery: return algorithms::urlTable(UrlUse::Query);
    case UrlQueryParameter: return algorithms::urlTable(UrlUse::QueryParameter);
    }
    return algorithms::urlTable(UrlUse::OtherComponent);
}

/// Writes zeros after a text. If the text ends within a UTF-8 sequence, the UTF-8 decoder reads the missing bytes of
/// the sequence after the text, and stops at the next zero.
void addZeros(BaseString<char>& utf8) {
    const unsigned int length = utf8.length();
    if (length != 0) {
        text::growUnits(std::uint64_t{length} + algorithms::kLongestUtf8Sequence, utf8);
        std::memset(utf8.data() + length, 0, algorithms::kLongestUtf8Sequence);
        detail::StringAccess<char>::setLength(utf8, length);
    }
}

/// Runs `narrow(text, output)` on the UTF-8 form of a wide text and converts its output to wide text.
template <class Narrow>
const wchar_t* throughUtf8(const wchar_t* text, BaseString<wchar_t>& output, Narrow&& narrow) {
    BaseString<char> utf8;
    ConvertStringtoUTF8(text, utf8, -1);
    BaseString<char> result;
    narrow(utf8.c_str(), result);
    addZeros(result);
    ConvertUTF8toString(output, result.c_str(), -1, true);
    return output.c_str();
}

}  // namespace

const char* urlEncode(const char* text, BaseString<char>& output, bool escapeReserved, bool spaceAsPlus) {
    const UrlUse plain = spaceAsPlus ? UrlUse::PlainWithPlus : UrlUse::Plain;
    const UrlUse reserved = spaceAsPlus ? UrlUse::ReservedWithPlus : UrlUse::Reserved;
    return replace(viewOf(text), algorithms::urlTable(escapeReserved ? reserved : plain), output);
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
    return replace(viewOf(text), tableFor(component), output);
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
    return replace(viewOf(text), (flags & 1) != 0, output);
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
