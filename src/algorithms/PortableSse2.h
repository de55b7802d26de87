/// \file
/// The SSE2 instructions that the algorithms use, as functions for any processor (see Sse2.h). Names, lanes and results
/// are as in the Intel Intrinsics Guide. Compilers turn the loops into vector instructions of the target processor.
///
/// All functions are static, like the compiler's functions.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

// The functions have the names of the compiler's functions.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl51-cpp,cert-dcl37-c,readability-identifier-naming)
namespace vorel::algorithms::portable {

/// Sixteen bytes, the lowest first.
struct alignas(16) __m128i {
    unsigned char bytes[16];
};

/// A vector as lanes of one type.
template <class Lane>
struct Lanes {
    static constexpr std::size_t kCount = 16 / sizeof(Lane);

    Lanes() noexcept = default;
    explicit Lanes(__m128i vector) noexcept { std::memcpy(lane, vector.bytes, 16); }
    [[nodiscard]] __m128i vector() const noexcept {
        __m128i result;
        std::memcpy(result.bytes, lane, 16);
        return result;
    }

    Lane lane[kCount]{};
};

/// The results of `function` for each lane of one or two vectors.
template <class Lane, class Function>
static inline __m128i eachLane(__m128i vector, Function&& function) noexcept {
    Lanes<Lane> result(vector);
    for (Lane& lane : result.lane) {
        lane = static_cast<Lane>(function(lane));
    }
    return result.vector();
}

template <class Lane, class Function>
static inline __m128i eachPair(__m128i left, __m128i right, Function&& function) noexcept {
    Lanes<Lane> result(left);
    const Lanes<Lane> other(right);
    for (std::size_t index = 0; index < Lanes<Lane>::kCount; ++index) {
        result.lane[index] = static_cast<Lane>(function(result.lane[index], other.lane[index]));
    }
    return result.vector();
}

/// The lanes of `left`, then the lanes of `right`, each limited to the range of the narrower type.
template <class Narrow, class Wide>
static inline __m128i packed(__m128i left, __m128i right) noexcept {
    const Lanes<Wide> first(left);
    const Lanes<Wide> second(right);
    Lanes<Narrow> result;
    const auto limited = [](Wide value) {
        return static_cast<Narrow>(
            std::clamp<Wide>(value, std::numeric_limits<Narrow>::min(), std::numeric_limits<Narrow>::max()));
    };
    for (std::size_t index = 0; index < Lanes<Wide>::kCount; ++index) {
        result.lane[index] = limited(first.lane[index]);
        result.lane[index + Lanes<Wide>::kCount] = limited(second.lane[index]);
    }
    return result.vector();
}

/// Lanes of `left` and `right` in turn, starting at the lane `begin`.
template <class Lane>
static inline __m128i interleaved(__m128i left, __m128i right, std::size_t begin) noexcept {
    const Lanes<Lane> first(left);
    const Lanes<Lane> second(right);
    Lanes<Lane> result;
    for (std::size_t index = 0; index < Lanes<Lane>::kCount / 2; ++index) {
        result.lane[2 * index] = first.lane[begin + index];
        result.lane[2 * index + 1] = second.lane[begin + index];
    }
    return result.vector();
}

// ---- Constants, loads and stores ------------------------------------------------------------------------------------

static inline __m128i _mm_setzero_si128() noexcept {
    return {};
}

static inline __m128i _mm_set1_epi8(char value) noexcept {
    return eachLane<char>({}, [value](char) { return value; });
}

static inline __m128i _mm_set1_epi16(short value) noexcept {
    return eachLane<short>({}, [value](short) { return value; });
}

static inline __m128i _mm_set1_epi32(int value) noexcept {
    return eachLane<int>({}, [value](int) { return value; });
}

static inline __m128i _mm_set1_epi64x(long long value) noexcept {
    return eachLane<long long>({}, [value](long long) { return value; });
}

static inline __m128i _mm_set_epi64x(long long high, long long low) noexcept {
    Lanes<long long> result;
    result.lane[0] = low;
    result.lane[1] = high;
    return result.vector();
}

static inline __m128i _mm_loadu_si128(const __m128i* from) noexcept {
    __m128i result;
    std::memcpy(result.bytes, static_cast<const void*>(from), 16);
    return result;
}

static inline void _mm_storeu_si128(__m128i* to, __m128i vector) noexcept {
    std::memcpy(static_cast<void*>(to), vector.bytes, 16);
}

static inline __m128i _mm_loadl_epi64(const __m128i* from) noexcept {
    __m128i result{};
    std::memcpy(result.bytes, static_cast<const void*>(from), 8);
    return result;
}

static inline void _mm_storel_epi64(__m128i* to, __m128i vector) noexcept {
    std::memcpy(static_cast<void*>(to), vector.bytes, 8);
}

static inline long long _mm_cvtsi128_si64(__m128i vector) noexcept {
    return Lanes<long long>(vector).lane[0];
}

/// The value in the lowest lane, and zeros in the lanes above.
static inline __m128i _mm_cvtsi32_si128(int value) noexcept {
    Lanes<int> result;
    result.lane[0] = value;
    return result.vector();
}

// ---- Bits -----------------------------------------------------------------------------------------------------------

static inline __m128i _mm_and_si128(__m128i left, __m128i right) noexcept {
    return eachPair<std::uint64_t>(left, right, [](auto a, auto b) { return a & b; });
}

static inline __m128i _mm_andnot_si128(__m128i left, __m128i right) noexcept {
    return eachPair<std::uint64_t>(left, right, [](auto a, auto b) { return ~a & b; });
}

static inline __m128i _mm_or_si128(__m128i left, __m128i right) noexcept {
    return eachPair<std::uint64_t>(left, right, [](auto a, auto b) { return a | b; });
}

static inline __m128i _mm_xor_si128(__m128i left, __m128i right) noexcept {
    return eachPair<std::uint64_t>(left, right, [](auto a, auto b) { return a ^ b; });
}

/// A shift by the width of a lane or more gives zero.
template <class Lane>
static inline __m128i shiftedLeft(__m128i vector, int bits) noexcept {
    return eachLane<Lane>(vector, [bits](Lane lane) {
        return static_cast<unsigned int>(bits) < 8 * sizeof(Lane) ? static_cast<Lane>(lane << bits) : Lane{0};
    });
}

template <class Lane>
static inline __m128i shiftedRight(__m128i vector, int bits) noexcept {
    return eachLane<Lane>(vector, [bits](Lane lane) {
        return static_cast<unsigned int>(bits) < 8 * sizeof(Lane) ? static_cast<Lane>(lane >> bits) : Lane{0};
    });
}

static inline __m128i _mm_slli_epi16(__m128i vector, int bits) noexcept {
    return shiftedLeft<std::uint16_t>(vector, bits);
}

static inline __m128i _mm_slli_epi32(__m128i vector, int bits) noexcept {
    return shiftedLeft<std::uint32_t>(vector, bits);
}

static inline __m128i _mm_slli_epi64(__m128i vector, int bits) noexcept {
    return shiftedLeft<std::uint64_t>(vector, bits);
}

static inline __m128i _mm_srli_epi16(__m128i vector, int bits) noexcept {
    return shiftedRight<std::uint16_t>(vector, bits);
}

static inline __m128i _mm_srli_epi64(__m128i vector, int bits) noexcept {
    return shiftedRight<std::uint64_t>(vector, bits);
}

/// Shifts the whole vector towards its highest byte, at most sixteen bytes.
static inline __m128i _mm_slli_si128(__m128i vector, int bytes) noexcept {
    const auto count = static_cast<std::size_t>(bytes);
    __m128i result{};
    std::memcpy(result.bytes + count, vector.bytes, 16 - count);
    return result;
}

static inline __m128i _mm_srli_si128(__m128i vector, int bytes) noexcept {
    const auto count = static_cast<std::size_t>(bytes);
    __m128i result{};
    std::memcpy(result.bytes, vector.bytes + count, 16 - count);
    return result;
}

// ---- Arithmetic -----------------------------------------------------------------------------------------------------

static inline __m128i _mm_add_epi8(__m128i left, __m128i right) noexcept {
    return eachPair<std::uint8_t>(left, right, [](unsigned int a, unsigned int b) { return a + b; });
}

static inline __m128i _mm_add_epi16(__m128i left, __m128i right) noexcept {
    return eachPair<std::uint16_t>(left, right, [](unsigned int a, unsigned int b) { return a + b; });
}

static inline __m128i _mm_sub_epi8(__m128i left, __m128i right) noexcept {
    return eachPair<std::uint8_t>(left, right, [](unsigned int a, unsigned int b) { return a - b; });
}

static inline __m128i _mm_sub_epi16(__m128i left, __m128i right) noexcept {
    return eachPair<std::uint16_t>(left, right, [](unsigned int a, unsigned int b) { return a - b; });
}

static inline __m128i _mm_sub_epi64(__m128i left, __m128i right) noexcept {
    return eachPair<std::uint64_t>(left, right, [](std::uint64_t a, std::uint64_t b) { return a - b; });
}

/// The products of the lower halves of the 64-bit lanes.
static inline __m128i _mm_mul_epu32(__m128i left, __m128i right) noexcept {
    return eachPair<std::uint64_t>(
        left, right, [](std::uint64_t a, std::uint64_t b) { return (a & 0xFFFFFFFF) * (b & 0xFFFFFFFF); });
}

/// The lower half of each product.
static inline __m128i _mm_mullo_epi16(__m128i left, __m128i right) noexcept {
    return eachPair<std::uint16_t>(left, right, [](unsigned int a, unsigned int b) { return a * b; });
}

/// The upper half of each unsigned product.
static inline __m128i _mm_mulhi_epu16(__m128i left, __m128i right) noexcept {
    return eachPair<std::uint16_t>(left, right, [](unsigned int a, unsigned int b) { return a * b >> 16; });
}

/// The sums of adjacent signed products. Only the largest possible sum exceeds a lane; that sum becomes the smallest
/// value.
static inline __m128i _mm_madd_epi16(__m128i left, __m128i right) noexcept {
    const Lanes<std::int16_t> first(left);
    const Lanes<std::int16_t> second(right);
    Lanes<std::uint32_t> result;
    for (std::size_t index = 0; index < Lanes<std::uint32_t>::kCount; ++index) {
        const std::size_t even = 2 * index;
        result.lane[index] = static_cast<std::uint32_t>(first.lane[even] * second.lane[even]) +
                             static_cast<std::uint32_t>(first.lane[even + 1] * second.lane[even + 1]);
    }
    return result.vector();
}

static inline __m128i _mm_min_epu8(__m128i left, __m128i right) noexcept {
    return eachPair<std::uint8_t>(left, right, [](std::uint8_t a, std::uint8_t b) { return std::min(a, b); });
}

// ---- Comparisons: all bits are set in the lanes for which the comparison is true ------------------------------------

static inline __m128i _mm_cmpeq_epi8(__m128i left, __m128i right) noexcept {
    return eachPair<std::int8_t>(left, right, [](int a, int b) { return a == b ? -1 : 0; });
}

static inline __m128i _mm_cmpeq_epi16(__m128i left, __m128i right) noexcept {
    return eachPair<std::int16_t>(left, right, [](int a, int b) { return a == b ? -1 : 0; });
}

static inline __m128i _mm_cmplt_epi16(__m128i left, __m128i right) noexcept {
    return eachPair<std::int16_t>(left, right, [](int a, int b) { return a < b ? -1 : 0; });
}

static inline __m128i _mm_cmpgt_epi8(__m128i left, __m128i right) noexcept {
    return eachPair<std::int8_t>(left, right, [](int a, int b) { return a > b ? -1 : 0; });
}

static inline __m128i _mm_cmplt_epi8(__m128i left, __m128i right) noexcept {
    return eachPair<std::int8_t>(left, right, [](int a, int b) { return a < b ? -1 : 0; });
}

/// The top bits of all bytes, lowest byte first.
static inline int _mm_movemask_epi8(__m128i vector) noexcept {
    unsigned int mask = 0;
    for (unsigned int index = 0; index < 16; ++index) {
        mask |= static_cast<unsigned int>(vector.bytes[index] >> 7) << index;
    }
    return static_cast<int>(mask);
}

// ---- Lanes of another width -----------------------------------------------------------------------------------------

static inline __m128i _mm_packs_epi16(__m128i left, __m128i right) noexcept {
    return packed<std::int8_t, std::int16_t>(left, right);
}

static inline __m128i _mm_packs_epi32(__m128i left, __m128i right) noexcept {
    return packed<std::int16_t, std::int32_t>(left, right);
}

/// Packs signed lanes of sixteen bits to unsigned lanes of eight bits.
static inline __m128i _mm_packus_epi16(__m128i left, __m128i right) noexcept {
    return packed<std::uint8_t, std::int16_t>(left, right);
}

static inline __m128i _mm_unpacklo_epi8(__m128i left, __m128i right) noexcept {
    return interleaved<std::uint8_t>(left, right, 0);
}

static inline __m128i _mm_unpackhi_epi8(__m128i left, __m128i right) noexcept {
    return interleaved<std::uint8_t>(left, right, 8);
}

static inline __m128i _mm_unpackhi_epi64(__m128i left, __m128i right) noexcept {
    return interleaved<std::uint64_t>(left, right, 1);
}

}  // namespace vorel::algorithms::portable
// NOLINTEND(bugprone-reserved-identifier,cert-dcl51-cpp,cert-dcl37-c,readability-identifier-naming)
