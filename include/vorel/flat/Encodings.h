/// \file
/// The flat interface: UTF-8 and binary-to-text encodings. vorelCoreC.h has the rules for all functions. This header
/// also includes the headers of code pages, URL encoding and the last failure, because some programs expect these
/// functions here.
#pragma once

#include "vorel/flat/CodePages.h"
#include "vorel/flat/LastError.h"
#include "vorel/flat/Status.h"
#include "vorel/flat/Urls.h"

#ifdef __cplusplus
extern "C" {
#endif

/// \name UTF-8
/// The library's codec accepts sequences of one to four bytes and of six bytes, and checks very little. The bytes F1,
/// F3, F5 and F7 do not start a sequence, so the characters U+40000 to U+7FFFF and U+C0000 to U+FFFFF can be written
/// but not read. See vorel/text/Unicode.h. Texts may contain zeros.
/// \{

/// Converts UTF-8 to UTF-16. The status is `VOREL_ERROR_INVALID_TEXT` for a byte that should start a sequence but
/// cannot, and for a sequence that is truncated by the end of the text or by a zero.
///
///     41 C3 A9 F0 9F 98 80  ->  0041 00E9 D83D DE00
VOREL_API vorel_status vorel_utf8_to_utf16(const char* text, size_t length, vorel_char16* output, size_t capacity,
                                           size_t* outputLength);

/// Converts UTF-16 to UTF-8. A surrogate that is not part of a pair becomes "?".
VOREL_API vorel_status vorel_utf16_to_utf8(const vorel_char16* text, size_t length, char* output, size_t capacity,
                                           size_t* outputLength);

/// \}
/// \name Binary-to-text encodings
/// \{

/// Encodes bytes as standard Base64, without line breaks.
///
///     41 42 43 44  ->  "QUJDRA=="
VOREL_API vorel_status vorel_base64_encode(const void* bytes, size_t size, vorel_char16* output, size_t capacity,
                                           size_t* outputLength);

/// Decodes Base64. Tabs, line feeds, carriage returns and spaces are skipped. A "=" as the third or fourth character of
/// a group of four ends the text: the units after this group are ignored. "=" as the first or second character of a
/// group counts as A. After "=" as the third character, the fourth character may be any character of the alphabet or
/// "=". The status is `VOREL_ERROR_INVALID_TEXT` for any other character outside the alphabet, and for an incomplete
/// group.
VOREL_API vorel_status vorel_base64_decode(const vorel_char16* text, size_t length, void* output, size_t capacity,
                                           size_t* outputLength);

/// Encodes bytes as Daylight. Each group of three bytes becomes four characters of the alphabet "." "+" 0-9 A-Z a-z.
/// The final digit is the number of bytes in the last group. For a size of 0, the text is "3".
///
///     41 42  ->  "EI6.2"
VOREL_API vorel_status vorel_daylight_encode(const void* bytes, size_t size, vorel_char16* output, size_t capacity,
                                             size_t* outputLength);

/// Decodes Daylight. The status is `VOREL_ERROR_INVALID_TEXT` for an invalid length or final digit. The other
/// characters are not checked: a comma counts as '+', and any other character outside the alphabet as '.'.
VOREL_API vorel_status vorel_daylight_decode(const vorel_char16* text, size_t length, void* output, size_t capacity,
                                             size_t* outputLength);

/// Writes two digits for each byte, the upper four bits first, in upper case if `upperCase` is not 0.
///
///     4A 0F  ->  "4a0f"
VOREL_API vorel_status vorel_hex_encode(const void* bytes, size_t size, int32_t upperCase, vorel_char16* output,
                                        size_t capacity, size_t* outputLength);

/// Decodes pairs of hexadecimal digits in either case, with or without the prefix "0x" or "0X". The status is
/// `VOREL_ERROR_INVALID_TEXT` for anything else, and for an odd number of digits.
VOREL_API vorel_status vorel_hex_decode(const vorel_char16* text, size_t length, void* output, size_t capacity,
                                        size_t* outputLength);

/// \}

#ifdef __cplusplus
}
#endif
