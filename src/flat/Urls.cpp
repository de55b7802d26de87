#include "vorel/flat/Urls.h"

#include "flat/Call.h"
#include "flat/Input.h"
#include "flat/Output.h"
#include "flat/Utf8Units.h"
#include "vorel/core/BaseString.h"
#include "vorel/text/Url.h"

using vorel::Array;
using vorel::BaseString;
using vorel::flat::ArgumentError;
using vorel::flat::checkFlags;
using vorel::flat::fail;
using vorel::flat::guardedCall;
using vorel::flat::sameValue;
using vorel::flat::TextOutput;
using vorel::flat::WideText;

namespace {

static_assert(sameValue(VOREL_URL_PATH, vorel::util::UrlPath));
static_assert(sameValue(VOREL_URL_PATH_SEGMENT, vorel::util::UrlPathSegment));
static_assert(sameValue(VOREL_URL_QUERY, vorel::util::UrlQuery));
static_assert(sameValue(VOREL_URL_QUERY_PARAMETER, vorel::util::UrlQueryParameter));

}  // namespace

vorel_status vorel_url_encode(const vorel_char16* text, size_t length, uint32_t flags, vorel_char16* output,
                              size_t capacity, size_t* outputLength) {
    return guardedCall(L"vorel_url_encode", [&] {
        const TextOutput out(output, capacity, outputLength);
        const WideText input(text, length);
        checkFlags(flags, VOREL_URL_ESCAPE_RESERVED | VOREL_URL_SPACE_AS_PLUS);
        BaseString<wchar_t> escaped;
        vorel::util::urlEncode(input.c_str(), escaped, (flags & VOREL_URL_ESCAPE_RESERVED) != 0,
                               (flags & VOREL_URL_SPACE_AS_PLUS) != 0);
        return out.write(escaped.view());
    });
}

vorel_status vorel_url_encode_component(const vorel_char16* text, size_t length, int32_t component,
                                        vorel_char16* output, size_t capacity, size_t* outputLength) {
    return guardedCall(L"vorel_url_encode_component", [&] {
        const TextOutput out(output, capacity, outputLength);
        const WideText input(text, length);
        if (component < VOREL_URL_PATH || component > VOREL_URL_QUERY_PARAMETER) {
            throw ArgumentError{VOREL_ERROR_INVALID_ARGUMENT, L"The URL component is unknown"};
        }
        BaseString<wchar_t> escaped;
        vorel::util::urlEncodeComponent(input.c_str(), escaped, static_cast<vorel::util::UrlComponent>(component));
        return out.write(escaped.view());
    });
}

vorel_status vorel_url_decode(const vorel_char16* text, size_t length, uint32_t flags, vorel_char16* output,
                              size_t capacity, size_t* outputLength) {
    return guardedCall(L"vorel_url_decode", [&] {
        const TextOutput out(output, capacity, outputLength);
        const WideText input(text, length);
        checkFlags(flags, VOREL_URL_PLUS_AS_SPACE);
        // The wide overload would end the result at an escaped zero.
        Array<char> escaped = vorel::flat::toUtf8(input.view());
        escaped.append('\0');
        BaseString<char> bytes;
        vorel::util::urlDecode(escaped.data(), bytes, (flags & VOREL_URL_PLUS_AS_SPACE) != 0 ? 1 : 0);
        const vorel::flat::Utf8Text decoded(bytes.view().data(), bytes.length(), vorel::flat::Zeros::Allowed);
        const auto units = vorel::flat::toUtf16(decoded.view());
        return units ? out.write(*units) : fail(VOREL_ERROR_INVALID_TEXT, L"The escaped bytes are not valid UTF-8");
    });
}
