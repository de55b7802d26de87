/// \file
/// Bytes as printable text: Base64.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace vorel::detail {
struct Base64Tables;
}

namespace vorel::util {

/// Standard Base64: the alphabet A-Z a-z 0-9 + /, with '=' for padding, in text without line breaks. Everything may be
/// called from any thread. A failure gets the record of the operation ("Base64::Decode(char): Vorel exception
/// rethrown").
///
///     41 42 43 44  →  QUJDRA==
class Base64 {
public:
    /// An object holds nothing: all operations are static.
    VOREL_API Base64& operator=(const Base64&);
    Base64() noexcept = default;
    Base64(const Base64&) noexcept = default;
    ~Base64() = default;

    /// Replaces `text` by the encoded bytes.
    /// \throws MemoryException, before anything is written, when the text cannot be had.
    VOREL_API static void Encode(const Array<unsigned char>& bytes, BaseString<char>& text);
    VOREL_API static void Encode(const Array<unsigned char>& bytes, BaseString<wchar_t>& text);

    /// The same for `count` bytes of `data` from `start` on, which may be those of the string; null is no data.
    VOREL_API static void EncodeRange(const unsigned char* data, unsigned int start, unsigned int count,
                                      BaseString<char>& text);
    VOREL_API static void EncodeRange(const unsigned char* data, unsigned int start, unsigned int count,
                                      BaseString<wchar_t>& text);

    /// Replaces `bytes` by what `text` encodes, and returns 0. Tabs, line feeds, carriage returns and spaces are passed
    /// over. Padding ends the text: what follows is ignored. A group of four that has another character, or that the
    /// end of the text cuts short, ends it too, with 1; the bytes before it stay. Null is an empty text. The
    /// text may lie in `bytes`.
    ///
    ///     QQ==  →  41, 0        QQ  →  nothing, 1        QQ=A  →  41, 0
    ///
    /// \throws Exception "Unicode character found in Base64 text" for a unit above 255. MemoryException.
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
