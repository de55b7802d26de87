/// \file
/// Conversions between wide text (UTF-16 units), UTF-8 and UTF-16 byte streams.
///
/// The UTF-8 codec uses the original form of UTF-8, with up to six bytes for a character. By design it checks very
/// little. Overlong forms and encoded surrogates are accepted. Trailing bytes are not checked. If the lead byte
/// requires them, they are read even past the bound of the input or past a zero byte. The bytes 0x80 to 0xBF, 0xF1,
/// 0xF3, 0xF5, 0xF7, 0xF9, 0xFB and 0xFF do not start a sequence. The bytes 0xF8, 0xFA, 0xFC and 0xFE start a sequence
/// of four bytes, and 0xFD a sequence of six. No byte starts a sequence of five.
///
/// A length below 0 means up to the first zero. A length of 0 or more is an upper bound; a zero still ends the input.
///
/// Every conversion may be called from any thread. If a conversion throws, the exception gets a record with the full
/// name of the conversion, for example "vorel::util::ConvertUTF8toString: Vorel exception rethrown".
#pragma once

#include "vorel/Export.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace vorel::util {

/// Writes the UTF-8 form of `codePoint` (1 to 6 bytes, no terminator) to `output` and returns the number of bytes. For
/// a null output or a value above 0x7FFFFFFF, writes nothing and returns 0. `size` is ignored: the output must have
/// space for six bytes.
///
///     0xE9 -> C3 A9, 2
VOREL_API int ConvertUCStoUTF8(unsigned int codePoint, char* output, int size) noexcept;

/// Replaces `output` by the wide text of the UTF-8 `input`. `length` is in bytes. Null gives the empty text.
///
///     41 C3 A9 F0 9F 98 80  ->  0041 00E9 D83D DE00, true
///
/// A byte that does not start a sequence is an error. If `throwOnError` is false, the result is then false. After an
/// error, `output` holds the text before the error, truncated to a multiple of 450 units.
/// \throws Exception "Error converting UTF-8 character (%ls)" after an error if `throwOnError` is true. `%ls` shows the
///         bytes after the invalid byte, up to the next zero: "Hex string: 28-41". Without such bytes, `%ls` is empty.
///         MemoryException if the output cannot grow; its length is then a multiple of 450 units.
///         To either exception, the overload for `const char*` adds the message
///         "Failed to convert utf8 text to String: %s" with the input.
VOREL_API bool ConvertUTF8toString(BaseString<wchar_t>& output, const unsigned char* input, int length,
                                   bool throwOnError);
VOREL_API bool ConvertUTF8toString(BaseString<wchar_t>& output, const char* input, int length, bool throwOnError);

/// The same into a buffer of `size` units; `size` must be at least 1. A longer text is truncated silently; a surrogate
/// pair is never split. Of the text that does not fit, only the first byte is checked. After an error, the buffer holds
/// the units before the error without a terminator. A null input gives the empty text.
/// \throws Exception as above after an error if `throwOnError` is true. MemoryException if `input` lies in the buffer,
///         and a separate buffer cannot be allocated.
VOREL_API bool ConvertUTF8toString(wchar_t* output, unsigned int size, const unsigned char* input, int length,
                                   bool throwOnError);

/// Replaces `output` by the UTF-8 form of `input`. `length` is in units. A surrogate that is not part of a pair becomes
/// "?". A pair that starts on the last unit within the bound is converted as a whole. Null gives the empty output. With
/// `appendZero`, a zero byte is appended and included in the size of `output`, but not if `input` is null.
///
///     D800 0041  ->  3F 41
///
/// \throws MemoryException if the output cannot grow.
VOREL_API void ConvertStringtoUTF8(const wchar_t* input, Array<unsigned char>& output, bool appendZero, int length);
VOREL_API void ConvertStringtoUTF8(const wchar_t* input, BaseString<char>& output, int length);

/// Replaces `output` by the text of the `length` bytes in `input`, which are little-endian UTF-16, up to the first zero
/// unit. If `length` is odd, the last byte is ignored. Byte-order marks are kept, and surrogates are not checked. Null
/// or a length of 0 gives the empty text.
///
///     41 00 E9 00  ->  0041 00E9
///
/// \throws Exception "A string length needs to be specified for UTF-16 to UCS conversion" for a length below 0, unless
///         `input` is null. MemoryException if the output cannot grow. To either exception, the overload for
///         `const char*` adds the message "Failed to convert UTF-16 text to String: %s" with the input.
VOREL_API void ConvertUTF16toString(BaseString<wchar_t>& output, const unsigned char* input, int length);
VOREL_API void ConvertUTF16toString(BaseString<wchar_t>& output, const char* input, int length);

/// Replaces `output` by the UTF-16 bytes of `input`, up to its terminator, in little-endian or big-endian order.
/// `length` is ignored. `appendZero` appends two zero bytes. No byte-order mark is written. A null input gives the
/// empty output, even with `appendZero`.
///
///     0041  ->  41 00 (little-endian), 00 41 (big-endian)
///
/// \throws MemoryException if the output cannot grow.
VOREL_API void ConvertStringtoUTF16(const wchar_t* input, Array<unsigned char>& output, bool littleEndian,
                                    bool appendZero, int length);

/// Appends the UTF-8 form of `input`, up to its terminator, to `output`. Each unit is encoded separately by design: a
/// surrogate pair becomes two sequences of three bytes. Null appends nothing.
/// \throws MemoryException if the output cannot grow, with the record "vorel::util::EncodeAndAppendToBuffer: Vorel
///         exception rethrown".
VOREL_API void EncodeAndAppendToBuffer(const wchar_t* input, Array<unsigned char>& output);

/// Whether a unit of `text` is 128 or above.
VOREL_API bool ContainsUnicode(const BaseString<wchar_t>& text) noexcept;

}  // namespace vorel::util
