#include "BinaryTextAvx2.h"

#include <immintrin.h>

#include "BinaryTextLoops.h"

namespace bench {

namespace {

__m256i load(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}

__m256i loadCharacters(const char* text) {
    return load(text);
}

__m256i loadCharacters(const wchar_t* text) {
    return _mm256_permute4x64_epi64(_mm256_packus_epi16(load(text), load(text + 16)), 0xD8);
}

void store(__m256i value, void* to) {
    _mm256_storeu_si256(static_cast<__m256i*>(to), value);
}

void storeCharacters(__m256i characters, char* out) {
    store(characters, out);
}

void storeCharacters(__m256i characters, wchar_t* out) {
    store(_mm256_cvtepu8_epi16(_mm256_castsi256_si128(characters)), out);
    store(_mm256_cvtepu8_epi16(_mm256_extracti128_si256(characters, 1)), out + 16);
}

__m256i twice(__m128i half) {
    return _mm256_broadcastsi128_si256(half);
}

// ---- Base64 ---------------------------------------------------------------------------------------------------------

/// Encodes bytes 4 to 27 of `bytes` to 32 characters.
template <class T>
void encodeBlock(__m256i bytes, T* out) {
    const __m256i in =
        _mm256_shuffle_epi8(bytes, _mm256_setr_epi8(5, 4, 6, 5, 8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14, 1, 0, 2, 1,
                                                    4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
    const __m256i down =
        _mm256_mulhi_epu16(_mm256_and_si256(in, _mm256_set1_epi32(0x0FC0FC00)), _mm256_set1_epi32(0x04000040));
    const __m256i up =
        _mm256_mullo_epi16(_mm256_and_si256(in, _mm256_set1_epi32(0x003F03F0)), _mm256_set1_epi32(0x01000010));
    const __m256i values = _mm256_or_si256(down, up);
    const __m256i offsets = twice(_mm_setr_epi8(65, 71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 0, 0));
    const __m256i range = _mm256_sub_epi8(_mm256_subs_epu8(values, _mm256_set1_epi8(51)),
                                          _mm256_cmpgt_epi8(values, _mm256_set1_epi8(25)));
    storeCharacters(_mm256_add_epi8(values, _mm256_shuffle_epi8(offsets, range)), out);
}

template <class T>
std::size_t encode(const unsigned char* bytes, std::size_t count, T* out) {
    const T* const start = out;
    if (count >= 32) {
        // `encodeBlock` ignores the first four bytes. So each block is loaded from four bytes before its start. The
        // first block is loaded from its start and shifted by four bytes, because nothing before the input may be read.
        encodeBlock(_mm256_permutevar8x32_epi32(load(bytes), _mm256_setr_epi32(0, 0, 1, 2, 3, 4, 5, 6)), out);
        bytes += 24;
        count -= 24;
        out += 32;
        for (; count >= 4 * 24 + 4;
             bytes += std::size_t{4} * 24, count -= std::size_t{4} * 24, out += std::size_t{4} * 32) {
            encodeBlock(load(bytes - 4), out);
            encodeBlock(load(bytes + 20), out + 32);
            encodeBlock(load(bytes + 44), out + 64);
            encodeBlock(load(bytes + 68), out + 96);
        }
        for (; count >= 28; bytes += 24, count -= 24, out += 32) {
            encodeBlock(load(bytes - 4), out);
        }
    }
    return static_cast<std::size_t>(out - start) + encodeBase64(bytes, count, out);
}

/// Decodes 32 characters to 24 bytes. Returns false if a character is not in the alphabet.
template <class T>
bool decodeBlock(const T* text, unsigned char* out) {
    const __m256i in = loadCharacters(text);
    const __m256i slash = _mm256_set1_epi8('/');
    const __m256i upper = _mm256_and_si256(_mm256_srli_epi32(in, 4), slash);
    const __m256i ofLower = twice(
        _mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A));
    const __m256i ofUpper = twice(
        _mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10));
    if (_mm256_testz_si256(_mm256_shuffle_epi8(ofLower, _mm256_and_si256(in, slash)),
                           _mm256_shuffle_epi8(ofUpper, upper)) == 0) {
        return false;
    }
    const __m256i offsets = twice(_mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0));
    const __m256i row = _mm256_add_epi8(_mm256_cmpeq_epi8(in, slash), upper);
    const __m256i values = _mm256_add_epi8(in, _mm256_shuffle_epi8(offsets, row));
    const __m256i twelveBits = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    const __m256i groups = _mm256_madd_epi16(twelveBits, _mm256_set1_epi32(0x00011000));
    const __m256i halves =
        _mm256_shuffle_epi8(groups, twice(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1)));
    store(_mm256_permutevar8x32_epi32(halves, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7)), out);
    return true;
}

template <class T>
std::size_t decode(const T* text, std::size_t length, unsigned char* out) {
    const unsigned char* const start = out;
    // `decodeBlock` writes 32 bytes, but only the first 24 bytes are decoded bytes. The output of the next characters
    // overwrites the last eight bytes.
    for (; length >= 4 * 32 + 13;
         text += std::size_t{4} * 32, length -= std::size_t{4} * 32, out += std::size_t{4} * 24) {
        if (!decodeBlock(text, out) || !decodeBlock(text + 32, out + 24) || !decodeBlock(text + 64, out + 48) ||
            !decodeBlock(text + 96, out + 72)) {
            break;
        }
    }
    for (; length >= 32 + 13 && decodeBlock(text, out); text += 32, length -= 32, out += 24) {}
    return static_cast<std::size_t>(out - start) + decodeBase64(text, length, out);
}

// ---- Hexadecimal ----------------------------------------------------------------------------------------------------

template <class T>
std::size_t encodeDigits(const unsigned char* bytes, std::size_t count, T* out) {
    const T* const start = out;
    const __m256i digits =
        twice(_mm_setr_epi8('0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'A', 'B', 'C', 'D', 'E', 'F'));
    const __m256i low = _mm256_set1_epi8(15);
    for (; count >= 32; bytes += 32, count -= 32, out += 64) {
        const __m256i block = load(bytes);
        const __m256i first = _mm256_shuffle_epi8(digits, _mm256_and_si256(_mm256_srli_epi16(block, 4), low));
        const __m256i second = _mm256_shuffle_epi8(digits, _mm256_and_si256(block, low));
        const __m256i even = _mm256_unpacklo_epi8(first, second);
        const __m256i odd = _mm256_unpackhi_epi8(first, second);
        storeCharacters(_mm256_permute2x128_si256(even, odd, 0x20), out);
        storeCharacters(_mm256_permute2x128_si256(even, odd, 0x31), out + 32);
    }
    return static_cast<std::size_t>(out - start) + encodeHex(bytes, count, out);
}

template <class T>
std::size_t decodeDigits(const T* text, std::size_t length, unsigned char* out) {
    const unsigned char* const start = out;
    for (; length >= 32; text += 32, length -= 32, out += 16) {
        const __m256i block = loadCharacters(text);
        const __m256i decimal = _mm256_sub_epi8(block, _mm256_set1_epi8('0'));
        const __m256i letter =
            _mm256_sub_epi8(_mm256_or_si256(block, _mm256_set1_epi8(32)), _mm256_set1_epi8('a' - 10));
        const __m256i isDecimal = _mm256_cmpeq_epi8(_mm256_min_epu8(decimal, _mm256_set1_epi8(9)), decimal);
        const __m256i isLetter = _mm256_cmpeq_epi8(
            _mm256_min_epu8(_mm256_max_epu8(letter, _mm256_set1_epi8(10)), _mm256_set1_epi8(15)), letter);
        if (_mm256_movemask_epi8(_mm256_or_si256(isDecimal, isLetter)) != -1) {
            break;
        }
        const __m256i values = _mm256_blendv_epi8(letter, decimal, isDecimal);
        const __m256i bytes = _mm256_maddubs_epi16(values, _mm256_set1_epi16(0x0110));
        const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(bytes, bytes), 0x08);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(packed));
    }
    return static_cast<std::size_t>(out - start) + decodeHex(text, length, out);
}

}  // namespace

bool hasAvx2() {
    return __builtin_cpu_supports("avx2") != 0;
}

std::size_t encodeBase64Avx2(const unsigned char* bytes, std::size_t count, char* out) {
    return encode(bytes, count, out);
}

std::size_t encodeBase64Avx2(const unsigned char* bytes, std::size_t count, wchar_t* out) {
    return encode(bytes, count, out);
}

std::size_t decodeBase64Avx2(const char* text, std::size_t length, unsigned char* out) {
    return decode(text, length, out);
}

std::size_t decodeBase64Avx2(const wchar_t* text, std::size_t length, unsigned char* out) {
    return decode(text, length, out);
}

std::size_t encodeHexAvx2(const unsigned char* bytes, std::size_t count, char* out) {
    return encodeDigits(bytes, count, out);
}

std::size_t encodeHexAvx2(const unsigned char* bytes, std::size_t count, wchar_t* out) {
    return encodeDigits(bytes, count, out);
}

std::size_t decodeHexAvx2(const char* text, std::size_t length, unsigned char* out) {
    return decodeDigits(text, length, out);
}

std::size_t decodeHexAvx2(const wchar_t* text, std::size_t length, unsigned char* out) {
    return decodeDigits(text, length, out);
}

}  // namespace bench
