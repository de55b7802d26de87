// Compiled for AVX2. Do not use standard library functions that are emitted out of line: the linker could use the AVX2
// copy for the rest of the program.

#include "algorithms/UrlEscapesAvx2.h"

#include <immintrin.h>

#include <bit>
#include <cstdint>

namespace vorel::algorithms {

namespace {

constexpr std::size_t kBlock = 32;

__m256i load(const char* text) noexcept {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text));
}

void store(__m256i block, char* out) noexcept {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), block);
}

std::uint32_t maskOf(__m256i bytes) noexcept {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes));
}

/// Finds the bytes that are not copied unchanged.
class Finder {
public:
    explicit Finder(const UrlTable& table) noexcept
        : m_columns(
              _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(table.plainRowsOfColumn)))),
          m_spaceIsEscaped(table.bytes[static_cast<unsigned char>(' ')].length != 1) {}

    [[nodiscard]] std::uint32_t changedIn(__m256i block) const noexcept {
        const __m256i bitOfRow = _mm256_setr_epi8(1, 2, 4, 8, 16, 32, 64, -128, 0, 0, 0, 0, 0, 0, 0, 0,  //
                                                  1, 2, 4, 8, 16, 32, 64, -128, 0, 0, 0, 0, 0, 0, 0, 0);
        const __m256i row = _mm256_and_si256(_mm256_srli_epi16(block, 4), _mm256_set1_epi8(15));
        const __m256i plain =
            _mm256_and_si256(_mm256_shuffle_epi8(m_columns, block), _mm256_shuffle_epi8(bitOfRow, row));
        return maskOf(_mm256_cmpeq_epi8(plain, _mm256_setzero_si256()));
    }

    /// How many of the changed bytes become an escape: all except spaces that become a plus.
    [[nodiscard]] std::size_t escapesAmong(std::uint32_t changed, __m256i block) const noexcept {
        const std::uint32_t spaces = m_spaceIsEscaped ? 0 : maskOf(_mm256_cmpeq_epi8(block, _mm256_set1_epi8(' ')));
        return static_cast<std::size_t>(_mm_popcnt_u32(changed & ~spaces));
    }

private:
    __m256i m_columns;
    bool m_spaceIsEscaped;
};

}  // namespace

UrlProgress measureUrlAvx2(const char* text, std::size_t count, const UrlTable& table) noexcept {
    const Finder finder(table);
    std::size_t read = 0;
    std::size_t added = 0;
    for (; count - read >= kBlock; read += kBlock) {
        const __m256i block = load(text + read);
        added += finder.escapesAmong(finder.changedIn(block), block);
    }
    return {read, read + 2 * added};
}

UrlProgress encodeUrlAvx2(const char* text, std::size_t count, const UrlTable& table, char* out,
                          std::size_t capacity) noexcept {
    const Finder finder(table);
    char* const start = out;
    std::size_t read = 0;
    for (; count - read >= 2 * kBlock; read += kBlock) {
        const char* const block = text + read;
        // The length and the characters come from one copy of the block, because another thread may change the text
        // between two reads.
        const __m256i bytes = load(block);
        std::uint32_t changed = finder.changedIn(bytes);
        const std::size_t length = kBlock + 2 * finder.escapesAmong(changed, bytes);
        if (capacity - static_cast<std::size_t>(out - start) < length + kUrlOverhang) {
            break;
        }
        std::uint32_t done = 0;
        store(bytes, out);
        alignas(kBlock) char copy[kBlock];
        store(bytes, copy);
        for (; changed != 0; changed &= changed - 1) {
            const auto at = static_cast<std::uint32_t>(std::countr_zero(changed));
            out += at - done;
            const UrlEscape& escape = table.bytes[static_cast<unsigned char>(copy[at])];
            _mm_storeu_si32(out, _mm_loadu_si32(escape.text));
            out += escape.length;
            done = at + 1;
            store(load(block + done), out);
        }
        out += kBlock - done;
    }
    return {read, static_cast<std::size_t>(out - start)};
}

}  // namespace vorel::algorithms
