// Compiled for AVX2. Do not use standard library functions that are emitted out of line, because the linker could use
// the AVX2 copy of such a function in the whole program.
//
// The lookups follow Wojciech Muła and Daniel Lemire, "Faster Base64 Encoding and Decoding Using AVX2 Instructions".

#include "algorithms/Base64Text.h"

#include <bit>
#include <cstddef>
#include <cstdint>

#include <immintrin.h>

#include "algorithms/Attributes.h"
#include "algorithms/PageReads.h"
#include "algorithms/Sextets.h"
#include "algorithms/SimdBlocks.h"

namespace vorel::algorithms {

namespace {

constexpr std::size_t kCharacters = kSextetBlockCharacters;
constexpr std::size_t kBytes = kSextetBlockBytes;

// ---- Lookups --------------------------------------------------------------------------------------------------------

/// A table of sixteen bytes, repeated for the second half of a register.
struct Table {
    alignas(32) std::uint8_t bytes[32];

    constexpr void set(unsigned int index, unsigned int value) noexcept {
        bytes[index] = bytes[index + 16] = static_cast<std::uint8_t>(value);
    }
    [[nodiscard]] __m256i load() const noexcept { return _mm256_load_si256(reinterpret_cast<const __m256i*>(bytes)); }
};

/// The slot of a character, which is the index into a second table. The slot is the rounded mean of two numbers: the
/// entry of `byLower` for the lower four bits of the character, and the upper five bits of the character.
constexpr unsigned int slotOf(const Table& byLower, unsigned int character) noexcept {
    return (byLower.bytes[character % 16] + character / 8 + 1) / 2;
}

constexpr Table repeated(const std::uint8_t (&bytes)[16]) noexcept {
    Table table = {};
    for (unsigned int index = 0; index != 16; ++index) {
        table.set(index, bytes[index]);
    }
    return table;
}

/// With this table, `slotOf` returns a slot of `kDistanceOfSlot`. In each such slot, all characters with a value have
/// the same distance to their values.
constexpr Table kDistanceByLower = repeated({1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 15, 0, 15});

constexpr Table kDistanceOfSlot = [] {
    Table table = {};
    for (unsigned int character = 0; character != 128; ++character) {
        if (const unsigned int value = kBase64Values.values[character]; value != SextetValues::kNone) {
            table.set(slotOf(kDistanceByLower, character), value - character);
        }
    }
    return table;
}();

/// With this table, `slotOf` returns a slot of `kTestOfSlot`. In each such slot, the characters with a value follow the
/// characters without a value.
constexpr Table kTestByLower = repeated({13, 1, 1, 1, 1, 1, 1, 1, 1, 1, 3, 7, 11, 11, 11, 15});

/// A signed number for each slot. The sum of this number and a character of the slot is negative unless the character
/// has a value.
constexpr Table kTestOfSlot = [] {
    Table table = repeated({128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128});
    for (unsigned int character = 127; character != 0; --character) {
        if (kBase64Values.values[character] != SextetValues::kNone) {
            table.set(slotOf(kTestByLower, character), 0 - character);
        }
    }
    return table;
}();

/// The values of the characters. In `test`, the bytes of characters without a value are negative.
__m256i valuesOf(__m256i characters, __m256i& test) noexcept {
    const auto sumWithSlot = [&](const Table& byLower, const Table& ofSlot, __m256i upper) {
        const __m256i slots = _mm256_avg_epu8(_mm256_shuffle_epi8(byLower.load(), characters), upper);
        return _mm256_adds_epi8(_mm256_shuffle_epi8(ofSlot.load(), slots), characters);
    };
    // The shift moves bits of the next character into the upper three bits of each byte. These bits affect only the
    // lookup for bytes above 127.
    const __m256i upper = _mm256_srli_epi32(characters, 3);
    test = sumWithSlot(kTestByLower, kTestOfSlot, upper);
    return sumWithSlot(kDistanceByLower, kDistanceOfSlot, upper);
}

// ---- Blocks ---------------------------------------------------------------------------------------------------------

/// Writes 24 bytes, and zeros after them. `halves` has twelve bytes and four zeros in each half.
void storeHalves(__m256i halves, unsigned char* out) noexcept {
    const __m256i bytes = _mm256_permutevar8x32_epi32(halves, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), bytes);
}

/// Decodes a block. A byte of `invalid` becomes negative if its character has no value.
template <class T>
void decodeUnchecked(const T* text, unsigned char* out, __m256i& invalid) noexcept {
    __m256i test;
    storeHalves(packSextets(valuesOf(loadWideBlock(text), test)), out);
    invalid = _mm256_min_epi8(invalid, test);
}

/// Decodes at most `blocks` blocks, four at a time. If one of four blocks contains an invalid character, the function
/// overwrites the output of these four blocks with zeros and stops. Returns the number of blocks whose output is valid.
template <class T>
VOREL_NOINLINE std::size_t decodeFours(const T* text, std::size_t blocks, unsigned char* out) noexcept {
    std::size_t done = 0;
    for (; blocks - done >= 4; done += 4, text += 4 * kCharacters, out += 4 * kBytes) {
        __m256i invalid = _mm256_setzero_si256();
        decodeUnchecked(text, out, invalid);
        decodeUnchecked(text + kCharacters, out + kBytes, invalid);
        decodeUnchecked(text + 2 * kCharacters, out + 2 * kBytes, invalid);
        decodeUnchecked(text + 3 * kCharacters, out + 3 * kBytes, invalid);
        if (maskOf(invalid) != 0) {
            for (std::size_t block = 0; block != 4; ++block) {
                storeHalves(_mm256_setzero_si256(), out + block * kBytes);
            }
            break;
        }
    }
    return done;
}

/// Decodes the groups of a block that precede the first invalid character, and writes zeros after the decoded bytes.
/// Returns the number of groups decoded. This is a separate function, because `decodeFours` saves and restores
/// registers for its caller, and the decoding of short text should not take that time.
template <class T>
VOREL_NOINLINE std::size_t decodeBlock(const T* text, unsigned char* out) noexcept {
    __m256i test;
    const __m256i values = valuesOf(loadWideBlock(text), test);
    const std::uint32_t invalid = maskOf(test);
    if (invalid == 0) {
        storeHalves(packSextets(values), out);
        return kBase64BlockGroups;
    }
    const int groups = std::countr_zero(invalid) / 4;
    const __m256i groupNumbers = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
    const __m256i isValid = _mm256_cmpgt_epi32(_mm256_set1_epi32(groups), groupNumbers);
    storeHalves(packSextets(_mm256_and_si256(values, isValid)), out);
    return static_cast<std::size_t>(groups);
}

/// Whether a block that extends into the next page can be read. It can if its characters are aligned and the part
/// before the next page contains no zero, so the text does not end in that part.
template <class T>
bool continuesInNextPage(const T* text) noexcept {
    constexpr std::uintptr_t kBlock = kCharacters * sizeof(T);
    const std::uintptr_t offset = offsetInPage(text);
    const std::uintptr_t before = (offset - (kPageBytes - kBlock)) / sizeof(T);
    const std::uint32_t zeros = maskOf(_mm256_cmpeq_epi8(loadWideBlock(text - before), _mm256_setzero_si256()));
    return offset % sizeof(T) == 0 && zeros >> before == 0;
}

template <class T>
std::size_t decode(const T* text, std::size_t blocks, unsigned char* out) noexcept {
    std::size_t done = 0;
    while (done != blocks) {
        const T* const start = text + done * kCharacters;
        const std::size_t inPage = (kPageBytes - offsetInPage(start)) / (kCharacters * sizeof(T));
        std::size_t readable = inPage < blocks - done ? inPage : blocks - done;
        if (readable >= 4) {
            const std::size_t fours = decodeFours(start, readable, out + done * kBytes);
            done += fours;
            readable -= fours;
        } else if (inPage == 0) {
            if (!continuesInNextPage(start)) {
                break;
            }
            readable = 1;
        }
        for (; readable != 0; --readable, ++done) {
            const T* const block = text + done * kCharacters;
            const std::size_t groups = *block != 0 ? decodeBlock(block, out + done * kBytes) : 0;
            if (groups != kBase64BlockGroups) {
                return done * kBase64BlockGroups + groups;
            }
        }
    }
    return done * kBase64BlockGroups;
}

}  // namespace

std::size_t decodeBase64Avx2(const char* text, std::size_t blocks, unsigned char* out) noexcept {
    return decode(text, blocks, out);
}

std::size_t decodeBase64Avx2(const WideUnit* text, std::size_t blocks, unsigned char* out) noexcept {
    return decode(text, blocks, out);
}

}  // namespace vorel::algorithms
