/// \file
/// Stores a part of a vector without writing past it. Functions are static, so that sources for special processors can
/// use them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <emmintrin.h>

namespace vorel::algorithms {

/// Stores the first `count` bytes, at most sixteen.
static inline void storeFirstBytes(__m128i bytes, std::size_t count, void* to) noexcept {
    auto* out = static_cast<unsigned char*>(to);
    if (count == 16) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), bytes);
        return;
    }
    if ((count & 8) != 0) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), bytes);
        bytes = _mm_srli_si128(bytes, 8);
        out += 8;
    }
    auto rest = static_cast<std::uint64_t>(_mm_cvtsi128_si64(bytes));
    if ((count & 4) != 0) {
        std::memcpy(out, &rest, 4);
        rest >>= 32;
        out += 4;
    }
    if ((count & 2) != 0) {
        std::memcpy(out, &rest, 2);
        rest >>= 16;
        out += 2;
    }
    if ((count & 1) != 0) {
        *out = static_cast<unsigned char>(rest);
    }
}

}  // namespace vorel::algorithms
