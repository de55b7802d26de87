/// \file
/// Peers for Base64 and hexadecimal text: AVX2 loops that follow published methods. They process whole blocks. The
/// loops of BinaryTextLoops.h process the remaining input. Base64 follows Wojciech Muła and Daniel Lemire, "Faster
/// Base64 Encoding and Decoding Using AVX2 Instructions". Shuffles look up the hexadecimal digits of bytes, and
/// comparisons find the values of digits.
#pragma once

#include <cstddef>

namespace bench {

/// Whether the processor has AVX2, which the other functions require.
bool hasAvx2();

/// Each of the following functions has the same parameters and result as the function in BinaryTextLoops.h without
/// "Avx2" in its name.
std::size_t encodeBase64Avx2(const unsigned char* bytes, std::size_t count, char* out);
std::size_t encodeBase64Avx2(const unsigned char* bytes, std::size_t count, wchar_t* out);
std::size_t decodeBase64Avx2(const char* text, std::size_t length, unsigned char* out);
std::size_t decodeBase64Avx2(const wchar_t* text, std::size_t length, unsigned char* out);
std::size_t encodeHexAvx2(const unsigned char* bytes, std::size_t count, char* out);
std::size_t encodeHexAvx2(const unsigned char* bytes, std::size_t count, wchar_t* out);
std::size_t decodeHexAvx2(const char* text, std::size_t length, unsigned char* out);
std::size_t decodeHexAvx2(const wchar_t* text, std::size_t length, unsigned char* out);

}  // namespace bench
