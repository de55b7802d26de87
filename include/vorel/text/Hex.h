/// \file
/// Bytes as hexadecimal text. Everything may be called from any thread.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace vorel::util {

/// Two digits for each byte, with a decoder that tells when something is wrong.
class Hex {
public:
    /// An object holds nothing: all operations are static.
    VOREL_API Hex& operator=(const Hex&);
    Hex() noexcept = default;
    Hex(const Hex&) noexcept = default;
    ~Hex() = default;

    /// Replaces `text` by the bytes in upper-case digits, the upper four bits first.
    ///
    ///     4A 0F  →  4A0F
    ///
    /// \throws MemoryException, before anything is written, when the text cannot be had.
    VOREL_API static void Encode(const Array<unsigned char>& bytes, BaseString<wchar_t>& text);

    /// Sets `bytes` to half as many as `text` has units, writes those that its pairs of digits give, and returns 0; 1
    /// at the first pair that is none, and for the last digit of an odd number. A prefix "0x" is passed over, but
    /// counted: the last byte then is not written. The characters ':' to '@' count as 3 to 9, and of each unit
    /// only the lower eight bits. All of this is meant.
    ///
    ///     0x4142  →  41 42 and one byte more, 0        4G  →  1        abc  →  AB, 1
    ///
    /// \throws MemoryException.
    VOREL_API static int Decode(const BaseString<wchar_t>& text, Array<unsigned char>& bytes);
};

/// Replaces `text` by two digits for each byte, upper or lower case, the upper four bits first.
///
///     AB  →  ab, with `upperCase` AB
///
/// \throws MemoryException, before anything is written, when the text cannot be had, with the record
///         "vorel::util::byteArrayToHexString: Vorel exception rethrown".
VOREL_API void byteArrayToHexString(const Array<unsigned char>& bytes, BaseString<char>& text, bool upperCase);
VOREL_API void byteArrayToHexString(const Array<unsigned char>& bytes, BaseString<wchar_t>& text, bool upperCase);

/// Replaces `bytes` by one byte for each pair of digits, of `length` units or up to the terminator. A character that is
/// no digit counts as 0. An odd length, and none at all, leave `bytes` as they are, without a word. All of this is
/// meant. The text may lie in `bytes`.
///
///     4g  →  40        123  →  as before
///
/// \throws MemoryException.
VOREL_API void hexStringToByteArray(const char* text, Array<unsigned char>& bytes);
VOREL_API void hexStringToByteArray(const char* text, unsigned int length, Array<unsigned char>& bytes);
VOREL_API void hexStringToByteArray(const wchar_t* text, Array<unsigned char>& bytes);
VOREL_API void hexStringToByteArray(const wchar_t* text, unsigned int length, Array<unsigned char>& bytes);

}  // namespace vorel::util
