/// \file
/// Copying runs of ASCII between bytes and 16-bit units, sixteen at a time: most text is ASCII most of the time.
/// SSE2 is part of every 64-bit x86 processor, so there is nothing to dispatch.
///
/// Both kernels stop at a zero as well, so that a text without a length needs no pass of its own to find its end. They
/// read it in aligned blocks: such a block never reaches into another page, even when the text ends within it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <emmintrin.h>

namespace vorel::kernels {

/// How many elements of `T` lie between `address` and the next multiple of `alignment` bytes.
template <class T>
std::size_t elementsToAlignment(const T* address, std::size_t alignment) noexcept {
    return ((alignment - 1) & (0 - reinterpret_cast<std::uintptr_t>(address))) / sizeof(T);
}

/// Whether `element` is from 0x01 to 0x7F.
template <class T>
constexpr bool isAsciiText(T element) noexcept {
    return element - 1u < 0x7F;
}

/// Copies elements one by one from index `done` on, until `count` are done or one stands next that is not ASCII text.
/// Returns the new index.
template <class From, class To>
std::size_t copyAsciiText(const From* from, std::size_t done, std::size_t count, To* to) noexcept {
    while (done < count && isAsciiText(from[done])) {
        to[done] = static_cast<To>(from[done]);
        ++done;
    }
    return done;
}

/// Widens bytes from 0x01 to 0x7F into units until `count` are done or another byte stands next. Returns how many.
template <class Unit>
std::size_t widenAsciiRun(const unsigned char* bytes, std::size_t count, Unit* units) noexcept {
    static_assert(sizeof(Unit) == 2);
    const std::size_t unaligned = std::min(count, elementsToAlignment(bytes, 16));
    std::size_t done = copyAsciiText(bytes, 0, unaligned, units);
    if (done < unaligned) {
        return done;
    }
    const __m128i zero = _mm_setzero_si128();
    for (; count - done >= 16; done += 16) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + done));
        // Zeros compare equal, and bytes from 0x80 on have the top bit already.
        if (_mm_movemask_epi8(_mm_or_si128(block, _mm_cmpeq_epi8(block, zero))) != 0) {
            break;
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(units + done), _mm_unpacklo_epi8(block, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(units + done + 8), _mm_unpackhi_epi8(block, zero));
    }
    return copyAsciiText(bytes, done, count, units);
}

/// Narrows units from 0x01 to 0x7F into bytes until `count` are done or another unit stands next. Returns how many.
template <class Unit>
std::size_t narrowAsciiRun(const Unit* units, std::size_t count, unsigned char* bytes) noexcept {
    static_assert(sizeof(Unit) == 2);
    const std::size_t unaligned = std::min(count, elementsToAlignment(units, 32));
    std::size_t done = copyAsciiText(units, 0, unaligned, bytes);
    if (done < unaligned) {
        return done;
    }
    const __m128i zero = _mm_setzero_si128();
    for (; count - done >= 16; done += 16) {
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + done));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + done + 8));
        // Packing with saturation keeps 0x01 to 0x7F, and turns every other unit into 0x00 or a byte from 0x80 on.
        const __m128i block = _mm_packus_epi16(low, high);
        if (_mm_movemask_epi8(_mm_or_si128(block, _mm_cmpeq_epi8(block, zero))) != 0) {
            break;
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes + done), block);
    }
    return copyAsciiText(units, done, count, bytes);
}

}  // namespace vorel::kernels
