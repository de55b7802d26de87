/// \file
/// The flat interface: UTF-8, code pages, bytes as printable text, URL encoding. The rules that hold for every function
/// stand in vorelCoreC.h.
#pragma once

#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// \name UTF-8
/// The codec is the library's: it takes sequences of one to four and of six bytes, and checks very little; the bytes
/// F1, F3, F5 and F7 start nothing. So the characters from U+40000 to U+7FFFF and from U+C0000 to U+FFFFF can be
/// written, and not read again. See vorel/text/Unicode.h. Zeros are text like any other.
/// \{

/// Converts UTF-8 to UTF-16. `VOREL_ERROR_INVALID_TEXT` for a byte that starts no sequence, and for a sequence that the
/// end of the text or a zero cuts short.
///
///     41 C3 A9 F0 9F 98 80  →  0041 00E9 D83D DE00
VOREL_API vorel_status vorel_utf8_to_utf16(const char* text, size_t length, vorel_char16* output, size_t capacity,
                                           size_t* outputLength);

/// Converts UTF-16 to UTF-8. A surrogate that is not part of a pair becomes "?".
VOREL_API vorel_status vorel_utf16_to_utf8(const vorel_char16* text, size_t length, char* output, size_t capacity,
                                           size_t* outputLength);

/// \}
/// \name Code pages
/// Code pages are the system's, and named by their numbers, 1 to 65534. `VOREL_ERROR_UNSUPPORTED` says that this system
/// does not have one. Zeros are text like any other.
/// \{

/// Finds the code page of a name, in any case; whether the system has it is not asked. `VOREL_ERROR_UNKNOWN_NAME` when
/// there is none.
///
///     "latin1"  →  28591
VOREL_API vorel_status vorel_code_page_by_name(const vorel_char16* name, size_t length, int32_t* codePage);

/// Converts bytes of a code page to UTF-16. `VOREL_ERROR_INVALID_TEXT` when they are no text of it.
VOREL_API vorel_status vorel_code_page_to_utf16(int32_t codePage, const void* bytes, size_t size, vorel_char16* output,
                                                size_t capacity, size_t* outputLength);

/// Converts UTF-16 to bytes of a code page. What it has no character for becomes one that is similar, or its default
/// character. `replaced`, which may be null, says whether the default character had to be used: 1 or 0, and -1 for a
/// code page that does not tell (UTF-8 is one).
VOREL_API vorel_status vorel_utf16_to_code_page(int32_t codePage, const vorel_char16* text, size_t length, void* output,
                                                size_t capacity, size_t* outputLength, int32_t* replaced);

/// \}
/// \name Bytes as printable text
/// \{

/// Standard Base64, without line breaks.
///
///     41 42 43 44  →  "QUJDRA=="
VOREL_API vorel_status vorel_base64_encode(const void* bytes, size_t size, vorel_char16* output, size_t capacity,
                                           size_t* outputLength);

/// Decodes Base64. White space is passed over; padding ends the text, and what follows is ignored.
/// `VOREL_ERROR_INVALID_TEXT` for any other character, and for a group of four that is cut short. A "=" among the first
/// two of a group is taken for an A, and one in the third place ends the text whatever stands in the fourth.
VOREL_API vorel_status vorel_base64_decode(const vorel_char16* text, size_t length, void* output, size_t capacity,
                                           size_t* outputLength);

/// The Daylight encoding: groups of three bytes as four characters of . + 0-9 A-Z a-z, and a digit that says how many
/// bytes of the last group count.
///
///     41 42  →  "EI6.2"
VOREL_API vorel_status vorel_daylight_encode(const void* bytes, size_t size, vorel_char16* output, size_t capacity,
                                             size_t* outputLength);

/// Decodes Daylight. `VOREL_ERROR_INVALID_TEXT` for a length or a last digit that cannot be; the other characters are
/// not checked: a comma counts as '+', what is not of the alphabet as '.'.
VOREL_API vorel_status vorel_daylight_decode(const vorel_char16* text, size_t length, void* output, size_t capacity,
                                             size_t* outputLength);

/// Two digits for each byte, the upper four bits first, in upper case if `upperCase` is not 0.
///
///     4A 0F  →  "4a0f"
VOREL_API vorel_status vorel_hex_encode(const void* bytes, size_t size, int32_t upperCase, vorel_char16* output,
                                        size_t capacity, size_t* outputLength);

/// Decodes pairs of hexadecimal digits of either case, with or without "0x" in front. `VOREL_ERROR_INVALID_TEXT` for
/// anything else, and for an odd number of digits.
VOREL_API vorel_status vorel_hex_decode(const vorel_char16* text, size_t length, void* output, size_t capacity,
                                        size_t* outputLength);

/// \}
/// \name URLs
/// Text goes through UTF-8, so that a character beyond ASCII becomes the escapes of its bytes. Escapes have upper-case
/// digits. Control characters, 1 to 31 and 127, are never escaped.
/// \{

enum {
    VOREL_URL_ESCAPE_RESERVED = 1,  ///< $ & + , / : ; = ? @ are escaped, too
    VOREL_URL_SPACE_AS_PLUS = 2,    ///< a space becomes '+'
    VOREL_URL_PLUS_AS_SPACE = 4,    ///< for decoding: a '+' becomes a space
};

/// The parts of a URL.
enum {
    VOREL_URL_PATH = 0,             ///< a whole path: '/' stays, '?' is escaped
    VOREL_URL_PATH_SEGMENT = 1,     ///< one segment of it: both are escaped
    VOREL_URL_QUERY = 2,            ///< a whole query: a space becomes '+', and '+' is escaped; '?' stays
    VOREL_URL_QUERY_PARAMETER = 3,  ///< one name or value in it: the same, and '&' and '=' are escaped, too
};

/// Escapes " # % < > [ \ ] ^ ` { | } ~, what is not ASCII, and the space.
///
///     "a/b c~"  →  "a/b%20c%7E"        with both flags  →  "a%2Fb+c%7E"
VOREL_API vorel_status vorel_url_encode(const vorel_char16* text, size_t length, uint32_t flags, vorel_char16* output,
                                        size_t capacity, size_t* outputLength);

/// Escapes what may not stand in that part of a URL; a '~' stays, in contrast to `vorel_url_encode`.
///
///     "a=b c", VOREL_URL_QUERY_PARAMETER  →  "a%3Db+c"
VOREL_API vorel_status vorel_url_encode_component(const vorel_char16* text, size_t length, int32_t component,
                                                  vorel_char16* output, size_t capacity, size_t* outputLength);

/// Undoes escapes. A '%' without two hexadecimal digits behind it stays as it is. `VOREL_ERROR_INVALID_TEXT` when the
/// bytes are no UTF-8 (`vorel_utf8_to_utf16`). An escaped zero ends the result.
VOREL_API vorel_status vorel_url_decode(const vorel_char16* text, size_t length, uint32_t flags, vorel_char16* output,
                                        size_t capacity, size_t* outputLength);

/// \}

#ifdef __cplusplus
}
#endif
