/// \file
/// Copying runs of ASCII between bytes and 16-bit units, sixteen at a time: most text is ASCII most of the time.
/// SSE2 is part of every 64-bit x86 processor, so there is nothing to dispatch.
#pragma once

#include <cstddef>

#include <emmintrin.h>

namespace vorel::kernels {

/// Widens bytes below 0x80 into units until `count` are done or a byte of 0x80 or more stands next. Returns how many.
template <class Unit>
std::size_t widenAsciiRun(const unsigned char* bytes, std::size_t count, Unit* units) noexcept {
    static_assert(sizeof(Unit) == 2);
    std::size_t done = 0;
    const __m128i zero = _mm_setzero_si128();
    for (; count - done >= 16; done += 16) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + done));
        if (_mm_movemask_epi8(block) != 0) {
            break;
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(units + done), _mm_unpacklo_epi8(block, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(units + done + 8), _mm_unpackhi_epi8(block, zero));
    }
    for (; done < count && bytes[done] < 0x80; ++done) {
        units[done] = static_cast<Unit>(bytes[done]);
    }
    return done;
}

/// Narrows units below 0x80 into bytes until `count` are done or a unit of 0x80 or more stands next. Returns how many.
template <class Unit>
std::size_t narrowAsciiRun(const Unit* units, std::size_t count, unsigned char* bytes) noexcept {
    static_assert(sizeof(Unit) == 2);
    std::size_t done = 0;
    const __m128i beyondAscii = _mm_set1_epi16(static_cast<short>(0xFF80));
    for (; count - done >= 16; done += 16) {
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + done));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + done + 8));
        const __m128i rest = _mm_and_si128(_mm_or_si128(low, high), beyondAscii);
        if (_mm_movemask_epi8(_mm_cmpeq_epi8(rest, _mm_setzero_si128())) != 0xFFFF) {
            break;
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes + done), _mm_packus_epi16(low, high));
    }
    for (; done < count && units[done] < 0x80; ++done) {
        bytes[done] = static_cast<unsigned char>(units[done]);
    }
    return done;
}

}  // namespace vorel::kernels
