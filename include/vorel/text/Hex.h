/// \file
/// Hexadecimal encoding. Every function may be called from any thread.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace vorel::util {

/// Hexadecimal text with two digits for each byte. The decoder reports errors.
class Hex {
public:
    /// The class has no data: all operations are static.
    VOREL_API Hex& operator=(const Hex&);
    Hex() noexcept = default;
    Hex(const Hex&) noexcept = default;
    ~Hex() = default;

    /// Replaces `text` by the bytes in upper-case digits, the upper four bits first.
    ///
    ///     4A 0F  ->  4A0F
    ///
    /// \throws MemoryException, before anything is written, if the text cannot be allocated.
    VOREL_API static void Encode(const Array<unsigned char>& bytes, BaseString<wchar_t>& text);

    /// Sets the size of `bytes` to half the number of units in `text`, writes the byte of each pair of digits, and
    /// returns 0. Stops at the first invalid pair, or at the last digit if the number of digits is odd. The result is
    /// then 1, and the remaining bytes of `bytes` are not written. By design, a prefix "0x" or "0X" is skipped but
    /// counts in the size, so the last byte of `bytes` is not written. Also by design, the characters ':' to '@' count
    /// as 3 to 9, and only the lower eight bits of each unit are used: U+0141 counts as 'A' (0x41). Lower-case letters
    /// are the exception: U+0161 does not count as 'a' (0x61), and is invalid.
    ///
    ///     0x4142  ->  41 42 and a byte that is not written, 0        4G  ->  1        abc  ->  AB, 1
    ///
    /// \throws MemoryException if `bytes` cannot grow; `bytes` is unchanged.
    VOREL_API static int Decode(const BaseString<wchar_t>& text, Array<unsigned char>& bytes);
};

/// Replaces `text` by two digits for each byte, in upper or lower case, the upper four bits first.
///
///     AB  ->  ab, with `upperCase` AB
///
/// \throws MemoryException, before anything is written, if the text cannot be allocated, with the record
///         "vorel::util::byteArrayToHexString: Vorel exception rethrown".
VOREL_API void byteArrayToHexString(const Array<unsigned char>& bytes, BaseString<char>& text, bool upperCase);
VOREL_API void byteArrayToHexString(const Array<unsigned char>& bytes, BaseString<wchar_t>& text, bool upperCase);

/// Replaces `bytes` by one byte for each pair of digits in `text`, which has `length` units or ends at its terminator.
/// By design, a character that is not a digit counts as 0. If `text` is null, or its length is odd or 0, `bytes` is
/// unchanged and nothing is reported. `text` may point into `bytes`.
///
///     4g  ->  40        123  ->  unchanged
///
/// \throws MemoryException if `bytes` cannot grow. `bytes` is then unchanged, or empty if `text` points into it.
VOREL_API void hexStringToByteArray(const char* text, Array<unsigned char>& bytes);
VOREL_API void hexStringToByteArray(const char* text, unsigned int length, Array<unsigned char>& bytes);
VOREL_API void hexStringToByteArray(const wchar_t* text, Array<unsigned char>& bytes);
VOREL_API void hexStringToByteArray(const wchar_t* text, unsigned int length, Array<unsigned char>& bytes);

}  // namespace vorel::util
