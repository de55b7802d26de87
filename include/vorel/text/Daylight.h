/// \file
/// The Daylight encoding of bit strings.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace vorel::util {

/// Each group of three bytes becomes four characters of the alphabet . + 0-9 A-Z a-z. A final digit gives the number of
/// bytes used in the last group. Every function may be called from any thread.
///
///     41 42  ->  EI6.2        41 42 43  ->  EI713        nothing  ->  3
class Daylight {
public:
    /// The class has no data: all operations are static.
    VOREL_API Daylight& operator=(const Daylight&);
    Daylight() noexcept = default;
    Daylight(const Daylight&) noexcept = default;
    ~Daylight() = default;

    /// Replaces `text` by the Daylight text of `bytes`.
    /// \throws MemoryException, before anything is written, if the text cannot be allocated.
    VOREL_API static void Encode(const Array<unsigned char>& bytes, BaseString<wchar_t>& text);

    /// Replaces `bytes` by the bytes that `text` encodes, and returns 0. By design, the characters are not checked: a
    /// comma counts as '+', and any other character outside the alphabet counts as '.'.
    /// \throws Exception "Daylight64::Decode: Invalid ASCII string (length wrong)" if the length is not one more than
    ///         a multiple of four; `bytes` is unchanged. "Daylight64::Decode: Invalid ASCII string (unexepected
    ///         charater at end)" if the last character is not 1, 2 or 3, or is 1 or 2 without a group before it;
    ///         `bytes` then holds the decoded whole groups. MemoryException if `bytes` cannot grow.
    VOREL_API static int Decode(const BaseString<wchar_t>& text, Array<unsigned char>& bytes);
};

}  // namespace vorel::util
