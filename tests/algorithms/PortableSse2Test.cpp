// Compares the functions of PortableSse2.h with the instructions of the processor, which are an independent reference.
// Loads, stores, shifts of the whole vector and the zero vector are compared with constants.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include <emmintrin.h>
#include <gtest/gtest.h>

// Some compilers define these functions as macros.
#undef _mm_slli_si128
#undef _mm_srli_si128
#include "algorithms/PortableSse2.h"

namespace {

namespace portable = vorel::algorithms::portable;

using Bytes = std::array<unsigned char, 16>;
using Portable = portable::__m128i;
using Native = ::__m128i;

Bytes bytesOf(Portable vector) {
    Bytes bytes;
    std::memcpy(bytes.data(), &vector, 16);
    return bytes;
}

Bytes bytesOf(Native vector) {
    Bytes bytes;
    std::memcpy(bytes.data(), &vector, 16);
    return bytes;
}

template <class Vector>
Vector vectorOf(const Bytes& bytes) {
    Vector vector;
    std::memcpy(&vector, bytes.data(), 16);
    return vector;
}

/// Vectors with the limits of lanes of 8, 16 and 32 bits, and random vectors.
std::vector<Bytes> samples() {
    std::vector<Bytes> vectors;
    constexpr unsigned char kLimits[] = {0x00, 0x01, 0x7F, 0x80, 0xFF};
    for (const unsigned char low : kLimits) {
        for (const unsigned char high : kLimits) {
            Bytes bytes{};
            for (std::size_t index = 0; index < 16; ++index) {
                bytes[index] = (index % 2 == 0) ? low : high;
            }
            vectors.push_back(bytes);
        }
    }
    constexpr std::uint32_t kLimits32[] = {0x7FFFFFFF, 0x80000000, 0x00007FFF, 0x00008000, 0xFFFF7FFF, 0xFFFF8000};
    for (const std::uint32_t even : kLimits32) {
        for (const std::uint32_t odd : kLimits32) {
            const std::array<std::uint32_t, 4> lanes{even, odd, even, odd};
            Bytes bytes{};
            std::memcpy(bytes.data(), lanes.data(), bytes.size());
            vectors.push_back(bytes);
        }
    }
    std::mt19937 random(20261122);
    for (int count = 0; count < 60; ++count) {
        Bytes bytes{};
        for (unsigned char& byte : bytes) {
            byte = static_cast<unsigned char>(random());
        }
        vectors.push_back(bytes);
    }
    return vectors;
}

struct Unary {
    const char* name;
    Portable (*ours)(Portable);
    Native (*reference)(Native);
};

struct Binary {
    const char* name;
    Portable (*ours)(Portable, Portable);
    Native (*reference)(Native, Native);
};

// clang-format off
#define BINARY(name) \
    Binary{#name, [](Portable a, Portable b) { return portable::name(a, b); }, \
           [](Native a, Native b) { return ::name(a, b); }}
#define SHIFT(name, count) \
    Unary{#name " by " #count, [](Portable a) { return portable::name(a, count); }, \
          [](Native a) { return ::name(a, count); }}
// clang-format on

TEST(PortableSse2, FunctionsOfTwoVectors_ReturnTheResultsOfTheInstructions) {
    const Binary functions[] = {
        BINARY(_mm_and_si128),     BINARY(_mm_andnot_si128),  BINARY(_mm_or_si128),       BINARY(_mm_xor_si128),
        BINARY(_mm_add_epi8),      BINARY(_mm_add_epi16),     BINARY(_mm_sub_epi8),       BINARY(_mm_sub_epi16),
        BINARY(_mm_mullo_epi16),   BINARY(_mm_mulhi_epu16),   BINARY(_mm_madd_epi16),     BINARY(_mm_min_epu8),
        BINARY(_mm_cmpeq_epi8),    BINARY(_mm_cmpeq_epi16),   BINARY(_mm_cmpgt_epi8),     BINARY(_mm_cmplt_epi8),
        BINARY(_mm_cmplt_epi16),   BINARY(_mm_packs_epi16),   BINARY(_mm_packs_epi32),    BINARY(_mm_packus_epi16),
        BINARY(_mm_unpacklo_epi8), BINARY(_mm_unpackhi_epi8), BINARY(_mm_unpackhi_epi64), BINARY(_mm_sub_epi64),
        BINARY(_mm_mul_epu32),
    };
    const std::vector<Bytes> vectors = samples();
    for (const Binary& function : functions) {
        for (const Bytes& left : vectors) {
            for (const Bytes& right : vectors) {
                ASSERT_EQ(bytesOf(function.ours(vectorOf<Portable>(left), vectorOf<Portable>(right))),
                          bytesOf(function.reference(vectorOf<Native>(left), vectorOf<Native>(right))))
                    << function.name;
            }
        }
    }
}

TEST(PortableSse2, Shifts_ReturnTheResultsOfTheInstructions) {
    const Unary functions[] = {
        SHIFT(_mm_slli_epi16, 0),  SHIFT(_mm_slli_epi16, 7),  SHIFT(_mm_slli_epi16, 15), SHIFT(_mm_slli_epi16, 16),
        SHIFT(_mm_slli_epi32, 1),  SHIFT(_mm_slli_epi32, 31), SHIFT(_mm_slli_epi32, 32), SHIFT(_mm_srli_epi16, 0),
        SHIFT(_mm_srli_epi16, 4),  SHIFT(_mm_srli_epi16, 15), SHIFT(_mm_srli_epi16, 16), SHIFT(_mm_slli_epi64, 1),
        SHIFT(_mm_slli_epi64, 63), SHIFT(_mm_slli_epi64, 64), SHIFT(_mm_srli_epi64, 8),  SHIFT(_mm_srli_epi64, 63),
        SHIFT(_mm_srli_epi64, 64),
    };
    for (const Unary& function : functions) {
        for (const Bytes& vector : samples()) {
            ASSERT_EQ(bytesOf(function.ours(vectorOf<Portable>(vector))),
                      bytesOf(function.reference(vectorOf<Native>(vector))))
                << function.name;
        }
    }
}

TEST(PortableSse2, ShiftsOfTheWholeVector_MoveBytesAndFillWithZeros) {
    const Bytes source{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    const auto vector = vectorOf<Portable>(source);
    EXPECT_EQ(bytesOf(portable::_mm_slli_si128(vector, 0)), source);
    EXPECT_EQ(bytesOf(portable::_mm_slli_si128(vector, 5)), (Bytes{0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
    EXPECT_EQ(bytesOf(portable::_mm_slli_si128(vector, 15)), (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
    EXPECT_EQ(bytesOf(portable::_mm_srli_si128(vector, 0)), source);
    EXPECT_EQ(bytesOf(portable::_mm_srli_si128(vector, 8)), (Bytes{9, 10, 11, 12, 13, 14, 15, 16}));
    EXPECT_EQ(bytesOf(portable::_mm_srli_si128(vector, 15)), (Bytes{16}));
}

TEST(PortableSse2, ScalarResultsAndConstants_EqualTheResultsOfTheInstructions) {
    for (const Bytes& vector : samples()) {
        EXPECT_EQ(portable::_mm_movemask_epi8(vectorOf<Portable>(vector)), _mm_movemask_epi8(vectorOf<Native>(vector)));
        EXPECT_EQ(portable::_mm_cvtsi128_si64(vectorOf<Portable>(vector)), _mm_cvtsi128_si64(vectorOf<Native>(vector)));
    }
    for (const long long value : {0LL, 1LL, -1LL, 0x8000LL, 0x7FFFLL, 0x80000000LL, 0x123456789ABCDEFLL}) {
        const auto narrow = static_cast<char>(value);
        const auto word = static_cast<short>(value);
        const auto number = static_cast<int>(value);
        EXPECT_EQ(bytesOf(portable::_mm_set1_epi8(narrow)), bytesOf(_mm_set1_epi8(narrow)));
        EXPECT_EQ(bytesOf(portable::_mm_set1_epi16(word)), bytesOf(_mm_set1_epi16(word)));
        EXPECT_EQ(bytesOf(portable::_mm_set1_epi32(number)), bytesOf(_mm_set1_epi32(number)));
        EXPECT_EQ(bytesOf(portable::_mm_cvtsi32_si128(number)), bytesOf(_mm_cvtsi32_si128(number)));
        EXPECT_EQ(bytesOf(portable::_mm_set1_epi64x(value)), bytesOf(_mm_set1_epi64x(value)));
        EXPECT_EQ(bytesOf(portable::_mm_set_epi64x(value, 7)), bytesOf(_mm_set_epi64x(value, 7)));
    }
    EXPECT_EQ(bytesOf(portable::_mm_setzero_si128()), Bytes{});
}

TEST(PortableSse2, LoadsAndStores_CopyExactlyTheirBytes) {
    const Bytes source{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    const auto* const from = reinterpret_cast<const Portable*>(source.data());
    EXPECT_EQ(bytesOf(portable::_mm_loadu_si128(from)), source);
    EXPECT_EQ(bytesOf(portable::_mm_loadl_epi64(from)), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));

    std::array<unsigned char, 19> target{};
    portable::_mm_storeu_si128(reinterpret_cast<Portable*>(target.data() + 1), vectorOf<Portable>(source));
    EXPECT_EQ(target, (std::array<unsigned char, 19>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 0, 0}));
    target = {};
    portable::_mm_storel_epi64(reinterpret_cast<Portable*>(target.data() + 1), vectorOf<Portable>(source));
    EXPECT_EQ(target, (std::array<unsigned char, 19>{0, 1, 2, 3, 4, 5, 6, 7, 8, 0}));
}

}  // namespace
