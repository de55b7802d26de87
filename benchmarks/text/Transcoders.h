/// \file
/// A peer for the conversions between UTF-8 and UTF-16: the AVX2 algorithms of Daniel Lemire and Wojciech Muła,
/// "Transcoding billions of Unicode characters per second with SIMD instructions", with the validation of John Keiser
/// and Daniel Lemire, "Validating UTF-8 in less than one instruction per byte".
///
/// For invalid text, a conversion returns 0. In the last 79 bytes of a text, however, `toUtf16Avx2` may accept overlong
/// sequences of three or four bytes, encoded surrogates, and code points above U+10FFFF.
#pragma once

#include <cstddef>

namespace bench {

/// The number of UTF-16 units that a valid UTF-8 text has after conversion, and the number of UTF-8 bytes that a valid
/// UTF-16 text has after conversion.
std::size_t utf16LengthAvx2(const char* text, std::size_t bytes);
std::size_t utf8LengthAvx2(const char16_t* text, std::size_t units);

/// Convert a text to a buffer that is large enough, and return the number of units or bytes written.
std::size_t toUtf16Avx2(const char* text, std::size_t bytes, char16_t* out);
std::size_t toUtf8Avx2(const char16_t* text, std::size_t units, char* out);

}  // namespace bench
