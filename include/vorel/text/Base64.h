/// \file
/// Base64 encoding.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace vorel::detail {
struct Base64Tables;
}

namespace vorel::util {

/// Standard Base64: the alphabet A-Z a-z 0-9 + /, '=' as padding, no line breaks. Every function may be called from any
/// thread. If a function throws, the exception has a record with the name of the function ("Base64::Decode(char): Vorel
/// exception rethrown").
///
///     41 42 43 44  ->  QUJDRA==
class Base64 {
public:
    /// Objects of this class have no data, because all operations are static.
    VOREL_API Base64& operator=(const Base64&);
    Base64() noexcept = default;
    Base64(const Base64&) noexcept = default;
    ~Base64() = default;

    /// Replaces `text` by the Base64 text of `bytes`.
    /// \throws MemoryException, before anything is written, if the text cannot be allocated.
    VOREL_API static void Encode(const Array<unsigned char>& bytes, BaseString<char>& text);
    VOREL_API static void Encode(const Array<unsigned char>& bytes, BaseString<wchar_t>& text);

    /// The same for `count` bytes of `data`, starting at index `start`. If `data` is null, no bytes are encoded. `data`
    /// may point into `text`; in this case, `text` is empty after a MemoryException.
    VOREL_API static void EncodeRange(const unsigned char* data, unsigned int start, unsigned int count,
                                      BaseString<char>& text);
    VOREL_API static void EncodeRange(const unsigned char* data, unsigned int start, unsigned int count,
                                      BaseString<wchar_t>& text);

    /// Replaces `bytes` by the bytes that `text` encodes, and returns 0. Tabs, line feeds, carriage returns and spaces
    /// are skipped. A '=' as the third or fourth character of a group of four ends the text; units after the group are
    /// ignored. As the first or second character, '=' counts as 'A'. An incomplete group, or a group with a character
    /// outside the alphabet, also ends the text: the result is 1, and the bytes before the group are kept. Null is an
    /// empty text. `text` may point into `bytes`. If the text encodes no bytes, nothing is allocated.
    ///
    ///     QQ==  ->  41, 0        QQ  ->  nothing, 1        QQ=A  ->  41, 0
    ///
    /// \throws Exception "Unicode character found in Base64 text" for a unit above 255; `bytes` then holds the bytes of
    ///         the groups before the unit. MemoryException if `bytes` cannot grow; `bytes` then holds the bytes that
    ///         were decoded before.
    VOREL_API static int Decode(const char* text, Array<unsigned char>& bytes);
    VOREL_API static int Decode(const wchar_t* text, Array<unsigned char>& bytes);

private:
    friend struct detail::Base64Tables;

    static bool initializeBase64Tables() noexcept;

    static char base64encode[64];
    static int base64decode[256];
    static const char base64pad;
    static const bool initialized;
};

}  // namespace vorel::util
