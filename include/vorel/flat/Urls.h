/// \file
/// The flat interface: URL encoding. vorelCoreC.h has the rules for all functions.
#pragma once

#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// \name URLs
/// Text is converted to UTF-8 first, so a non-ASCII character becomes the escapes of its bytes, and a surrogate that is
/// not part of a pair becomes "?". Escapes have upper-case digits. The control characters 1 to 31 and 127 are never
/// escaped.
/// \{

/// The flags of `vorel_url_encode` and `vorel_url_decode`.
enum {
    VOREL_URL_ESCAPE_RESERVED = 1,  ///< only for encoding: $ & + , / : ; = ? @ are escaped too
    VOREL_URL_SPACE_AS_PLUS = 2,    ///< only for encoding: a space becomes '+'
    VOREL_URL_PLUS_AS_SPACE = 4,    ///< only for decoding: a '+' becomes a space
};

/// The parts of a URL.
enum {
    VOREL_URL_PATH = 0,             ///< a whole path: '/' is kept, '?' is escaped
    VOREL_URL_PATH_SEGMENT = 1,     ///< a segment of a path: '/' and '?' are escaped
    VOREL_URL_QUERY = 2,            ///< a whole query: a space becomes '+', and '+' is escaped; '?' is kept
    VOREL_URL_QUERY_PARAMETER = 3,  ///< a name or value in a query: like a query, but '&' and '=' are escaped too
};

/// Escapes " # % < > [ \ ] ^ ` { | } ~, non-ASCII characters, and the space.
///
///     "a/b c~"  ->  "a/b%20c%7E"        with both flags for encoding  ->  "a%2Fb+c%7E"
VOREL_API vorel_status vorel_url_encode(const vorel_char16* text, size_t length, uint32_t flags, vorel_char16* output,
                                        size_t capacity, size_t* outputLength);

/// Escapes the characters that are not allowed in the part of a URL that `component` names. Unlike `vorel_url_encode`,
/// it keeps '~'.
///
///     "a=b c", VOREL_URL_QUERY_PARAMETER  ->  "a%3Db+c"
VOREL_API vorel_status vorel_url_encode_component(const vorel_char16* text, size_t length, int32_t component,
                                                  vorel_char16* output, size_t capacity, size_t* outputLength);

/// Decodes escapes. A '%' that is not followed by two hexadecimal digits is kept. The status is
/// `VOREL_ERROR_INVALID_TEXT` if the decoded bytes are not valid UTF-8 (see `vorel_utf8_to_utf16`). An escaped zero
/// becomes a zero in the result.
VOREL_API vorel_status vorel_url_decode(const vorel_char16* text, size_t length, uint32_t flags, vorel_char16* output,
                                        size_t capacity, size_t* outputLength);

/// \}

#ifdef __cplusplus
}
#endif
