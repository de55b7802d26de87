/// \file
/// Percent-encoding and decoding of text for URLs. Narrow text is treated as UTF-8 bytes. Wide text is converted to
/// UTF-8 first, so a non-ASCII character becomes the escapes of its bytes. In this conversion, a surrogate that is not
/// part of a pair becomes '?'. Every function may be called from any thread.
///
/// A text may point into the string that receives the result. The encoders write escapes with upper-case digits. By
/// design, they never escape the control characters 1 to 31 and 127. If the escapes of a wide text end within a UTF-8
/// sequence, the decoder treats the missing bytes as zeros: "%C3" becomes U+00C0. If the escaped bytes are not valid
/// UTF-8, the wide output holds the text before the invalid byte, truncated to a multiple of 450 units. The escape
/// "%00" becomes a zero character in narrow text. In wide text, "%00" ends the decoded text, unless the zero is a
/// trailing byte of a UTF-8 sequence.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/BaseString.h"

namespace vorel::util {

/// The part of a URL that a text is encoded for.
enum UrlComponent : int {
    UrlPath = 0,            ///< a whole path: '/' is kept, '?' is escaped
    UrlPathSegment = 1,     ///< a segment of a path: '/' and '?' are escaped
    UrlQuery = 2,           ///< a whole query: a space becomes '+', and '+' is escaped; '?' is kept
    UrlQueryParameter = 3,  ///< a name or value in a query: like UrlQuery, but '&' and '=' are escaped too
};

/// Replaces `output` by `text`, with escapes for the bytes from 128 to 255 and for these characters:
///
///     " # % < > [ \ ] ^ ` { | } ~
///
/// With `escapeReserved`, $ & + , / : ; = ? @ are escaped too. The space is escaped; with `spaceAsPlus` it becomes a
/// '+'. A null `text` is an empty text. Returns the buffer of `output`. If `text` is empty and `output` has no buffer,
/// returns null.
///
///     "a/b c~"  ->  a/b%20c%7E        escapeReserved, spaceAsPlus  ->  a%2Fb+c%7E
///
/// \throws MemoryException.
VOREL_API const char* urlEncode(const char* text, BaseString<char>& output, bool escapeReserved, bool spaceAsPlus);
VOREL_API const wchar_t* urlEncode(const wchar_t* text, BaseString<wchar_t>& output, bool escapeReserved,
                                   bool spaceAsPlus);

/// Returns the result as a new string.
VOREL_API BaseString<char> urlEncode(const char* text, bool escapeReserved, bool spaceAsPlus);
VOREL_API BaseString<wchar_t> urlEncode(const wchar_t* text, bool escapeReserved, bool spaceAsPlus);

/// Replaces `output` by `text`, with escapes for the characters that are not allowed in the part `component` of a URL.
/// Unlike `urlEncode`, it keeps '~' by design. For an unknown component it escapes the space (as "%20") and the
/// characters that are escaped in all components. Null texts and the returned pointer are treated as in `urlEncode`.
///
///     "a/b?c=d&e f~"  ->  UrlPath a/b%3Fc=d&e%20f~        UrlQueryParameter a/b?c%3Dd%26e+f~
///
/// \throws MemoryException.
VOREL_API const char* urlEncodeComponent(const char* text, BaseString<char>& output, UrlComponent component);
VOREL_API const wchar_t* urlEncodeComponent(const wchar_t* text, BaseString<wchar_t>& output, UrlComponent component);
VOREL_API BaseString<char> urlEncodeComponent(const char* text, UrlComponent component);
VOREL_API BaseString<wchar_t> urlEncodeComponent(const wchar_t* text, UrlComponent component);

/// Replaces `output` by `text` with its escapes decoded. If bit 0 of `flags` is set, a '+' becomes a space; other bits
/// are ignored. A '%' that is not followed by two hexadecimal digits is kept. Null texts and the returned pointer are
/// treated as in `urlEncode`.
///
///     %41%4g%  ->  A%4g%        a+b, flags 1  ->  a b
///
/// \throws MemoryException; the wide form throws Exception "Error converting UTF-8 character (%ls)" if the bytes are
///         not valid UTF-8 (see `ConvertUTF8toString`).
VOREL_API const char* urlDecode(const char* text, BaseString<char>& output, int flags);
VOREL_API const wchar_t* urlDecode(const wchar_t* text, BaseString<wchar_t>& output, int flags);

/// The same into a new string, with flags 0.
VOREL_API BaseString<char> urlDecode(const char* text);
VOREL_API BaseString<wchar_t> urlDecode(const wchar_t* text);

}  // namespace vorel::util
