/// \file
/// Percent-encoding of text for URLs, and back. Narrow text is taken as bytes of UTF-8; wide text goes through UTF-8,
/// so that a character beyond ASCII becomes the escapes of its bytes. Everything may be called from any thread.
///
/// A text may lie in the string that gets the result. In wide text, escapes that end within a sequence of UTF-8 are
/// decoded with zeros for the missing bytes: "%C3" is U+00C0. After a failure, a wide output holds the whole blocks of
/// 450 units before the error. Escapes have upper-case digits. Control characters, 1 to 31 and
/// 127, are never escaped; that is meant.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/BaseString.h"

namespace vorel::util {

/// The part of a URL that a text will stand in.
enum UrlComponent : int {
    UrlPath = 0,            ///< a whole path: '/' stays, '?' is escaped
    UrlPathSegment = 1,     ///< one segment of it: both are escaped
    UrlQuery = 2,           ///< a whole query: a space becomes '+', and '+' is escaped; '?' stays
    UrlQueryParameter = 3,  ///< one name or value in it: the same, and '&' and '=' are escaped, too
};

/// Replaces `output` by `text` with escapes for " # % < > [ \ ] ^ ` { | } ~, for bytes from 128 on, with
/// `escapeReserved` also for $ & + , / : ; = ? @, and for the space, unless `spaceAsPlus` makes it a '+'. Returns the
/// output's buffer, which is null when it never had one. Null is an empty text.
///
///     "a/b c~"  →  a/b%20c%7E        escapeReserved, spaceAsPlus  →  a%2Fb+c%7E
///
/// \throws MemoryException.
VOREL_API const char* urlEncode(const char* text, BaseString<char>& output, bool escapeReserved, bool spaceAsPlus);
VOREL_API const wchar_t* urlEncode(const wchar_t* text, BaseString<wchar_t>& output, bool escapeReserved,
                                   bool spaceAsPlus);

/// The same into a new string.
VOREL_API BaseString<char> urlEncode(const char* text, bool escapeReserved, bool spaceAsPlus);
VOREL_API BaseString<wchar_t> urlEncode(const wchar_t* text, bool escapeReserved, bool spaceAsPlus);

/// Replaces `output` by `text` with escapes for what may not stand in that part of a URL. In contrast to `urlEncode`, a
/// '~' stays; that is meant. A value that is no component escapes what is escaped in all of them.
///
///     "a/b?c=d&e f~"  →  UrlPath a/b%3Fc=d&e%20f~        UrlQueryParameter a/b?c%3Dd%26e+f~
///
/// \throws MemoryException.
VOREL_API const char* urlEncodeComponent(const char* text, BaseString<char>& output, UrlComponent component);
VOREL_API const wchar_t* urlEncodeComponent(const wchar_t* text, BaseString<wchar_t>& output, UrlComponent component);
VOREL_API BaseString<char> urlEncodeComponent(const char* text, UrlComponent component);
VOREL_API BaseString<wchar_t> urlEncodeComponent(const wchar_t* text, UrlComponent component);

/// Replaces `output` by `text` with its escapes undone. With bit 0 of `flags` a '+' becomes a space; no other bit means
/// anything. A '%' without two hexadecimal digits behind it stays as it is.
///
///     %41%4g%  →  A%4g%        a+b, flags 1  →  a b
///
/// \throws MemoryException; the wide form Exception "Error converting UTF-8 character (%ls)" when the bytes are no
///         UTF-8 (see `ConvertUTF8toString`).
VOREL_API const char* urlDecode(const char* text, BaseString<char>& output, int flags);
VOREL_API const wchar_t* urlDecode(const wchar_t* text, BaseString<wchar_t>& output, int flags);

/// The same into a new string, with flags 0.
VOREL_API BaseString<char> urlDecode(const char* text);
VOREL_API BaseString<wchar_t> urlDecode(const wchar_t* text);

}  // namespace vorel::util
