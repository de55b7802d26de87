/// \file
/// Bytes as printable text: the Daylight encoding of bit strings.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace vorel::util {

/// Groups of three bytes as four characters of the alphabet . + 0-9 A-Z a-z, and one more character at the end: how
/// many bytes of the last group count. Everything may be called from any thread.
///
///     41 42  →  EI6.2        41 42 43  →  EI713        nothing  →  3
class Daylight {
public:
    /// An object holds nothing: all operations are static.
    VOREL_API Daylight& operator=(const Daylight&);
    Daylight() noexcept = default;
    Daylight(const Daylight&) noexcept = default;
    ~Daylight() = default;

    /// Replaces `text` by the encoded bytes.
    /// \throws MemoryException, before anything is written, when the text cannot be had.
    VOREL_API static void Encode(const Array<unsigned char>& bytes, BaseString<wchar_t>& text);

    /// Replaces `bytes` by what `text` encodes, and returns 0. The characters are not checked: a comma counts as '+',
    /// and any other character that is not of the alphabet as '.'. That is meant.
    /// \throws Exception "Daylight64::Decode: Invalid ASCII string (length wrong)", with `bytes` as they were, when the
    ///         length is not one more than a multiple of four; "Daylight64::Decode: Invalid ASCII string (unexepected
    ///         charater at end)", with whole groups in `bytes`, when the last character is none of 1, 2, 3, or says
    ///         that bytes of a group count where there is none. MemoryException.
    VOREL_API static int Decode(const BaseString<wchar_t>& text, Array<unsigned char>& bytes);
};

}  // namespace vorel::util
