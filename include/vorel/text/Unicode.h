/// \file
/// Conversions between wide text (UTF-16 units), UTF-8 and UTF-16 byte streams.
///
/// The UTF-8 codec is the old form of one to six bytes, and checks very little: overlong forms and encoded surrogates
/// are taken as they come, trailing bytes are not looked at, and are read beyond the bound of the input, or beyond a
/// zero byte, when a lead byte there announces them. The bytes 0x80 to 0xBF, 0xF1, 0xF3, 0xF5, 0xF7, 0xF9, 0xFB and
/// 0xFF start nothing. All of this is meant.
///
/// A length below 0 means: up to the first zero. A length of 0 or more is a bound; a zero still ends the input.
///
/// All conversions may be called from any thread. Failures get the record of the conversion's full name, for instance
/// "vorel::util::ConvertUTF8toString: Vorel exception rethrown".
#pragma once

#include "vorel/Export.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace vorel::util {

/// Writes the UTF-8 form of `codePoint` (1 to 6 bytes, no terminator) at `output` and returns the number of bytes; 0,
/// with nothing written, for a null output or a value above 0x7FFFFFFF. The size is not looked at: the output must have
/// room for six bytes.
///
///     0xE9 → C3 A9, 2
VOREL_API int ConvertUCStoUTF8(unsigned int codePoint, char* output, int size) noexcept;

/// Converts UTF-8 to wide text, in blocks of 450 units. `length` is in bytes; null gives the empty text.
///
///     41 C3 A9 F0 9F 98 80  →  0041 00E9 D83D DE00, true
///
/// A byte that starts no sequence is an error: with `throwOnError` false the result is false, and `output` keeps the
/// whole blocks before the error.
/// \throws Exception with `throwOnError` true: "Error converting UTF-8 character (%ls)", where `%ls` is "Hex string: "
///         and the bytes behind the offending one up to the next zero. The form for `const char*` adds "Failed to
///         convert utf8 text to String: %s". MemoryException when the output cannot grow.
VOREL_API bool ConvertUTF8toString(BaseString<wchar_t>& output, const unsigned char* input, int length,
                                   bool throwOnError);
VOREL_API bool ConvertUTF8toString(BaseString<wchar_t>& output, const char* input, int length, bool throwOnError);

/// The same into a buffer of `size` units, 1 at least, that always ends in a terminator. What does not fit is left out
/// without a word, and a surrogate pair is never split. After an error with the result false there is no terminator.
/// A null input gives the empty text.
VOREL_API bool ConvertUTF8toString(wchar_t* output, unsigned int size, const unsigned char* input, int length,
                                   bool throwOnError);

/// Converts wide text to UTF-8; `length` is in units. A surrogate that is not part of a pair becomes "?"; a pair that
/// starts on the last unit of the bound is taken whole. Null gives the empty output. `appendZero` adds a zero byte,
/// which is counted.
///
///     D800 0041  →  3F 41
///
/// \throws MemoryException when the output cannot grow.
VOREL_API void ConvertStringtoUTF8(const wchar_t* input, Array<unsigned char>& output, bool appendZero, int length);
VOREL_API void ConvertStringtoUTF8(const wchar_t* input, BaseString<char>& output, int length);

/// Reads `length` bytes (a byte left over is ignored) as little-endian UTF-16, up to a zero unit. Byte-order marks stay
/// in the text, and surrogates are not checked. Null or a length of 0 gives the empty text.
///
///     41 00 E9 00  →  0041 00E9
///
/// \throws Exception "A string length needs to be specified for UTF-16 to UCS conversion" for a length below 0. The
///         form for `const char*` adds "Failed to convert UTF-16 text to String: %s". MemoryException.
VOREL_API void ConvertUTF16toString(BaseString<wchar_t>& output, const unsigned char* input, int length);
VOREL_API void ConvertUTF16toString(BaseString<wchar_t>& output, const char* input, int length);

/// Writes wide text as UTF-16 bytes of either order, up to its terminator: the length is not looked at. `appendZero`
/// adds two zero bytes. No byte-order mark is written; null gives the empty output.
///
///     0041  →  41 00 (little-endian), 00 41 (big-endian)
///
/// \throws MemoryException when the output cannot grow.
VOREL_API void ConvertStringtoUTF16(const wchar_t* input, Array<unsigned char>& output, bool littleEndian,
                                    bool appendZero, int length);

/// Appends the UTF-8 form of `input`, up to its terminator, to what `output` holds. On purpose each unit is encoded by
/// itself: a surrogate pair becomes two sequences of three bytes. Null appends nothing.
/// \throws MemoryException when the output cannot grow, with the record "vorel::util::EncodeAndAppendToBuffer: Vorel
///         exception rethrown".
VOREL_API void EncodeAndAppendToBuffer(const wchar_t* input, Array<unsigned char>& output);

/// Whether a unit of `text` is 128 or above.
VOREL_API bool ContainsUnicode(const BaseString<wchar_t>& text) noexcept;

}  // namespace vorel::util
