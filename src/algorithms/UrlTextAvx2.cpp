// Compiled for AVX2. Do not use standard library functions that are emitted out of line, because the linker could use
// the AVX2 copy of such a function in the whole program.

#include "algorithms/UrlText.h"

#include <bit>
#include <cstddef>
#include <cstdint>

#include <immintrin.h>

#include "algorithms/SimdBlocks.h"

namespace vorel::algorithms {

namespace {

constexpr std::size_t kBlock = 32;

/// Finds the bytes that encoding changes.
class Finder {
public:
    explicit Finder(const UrlTable& table) noexcept
        : m_columns(loadTwice(table.plainRowsOfColumn)),
          m_spaceIsEscaped(table.bytes[static_cast<unsigned char>(' ')].length != 1) {}

    [[nodiscard]] std::uint32_t changedIn(__m256i block) const noexcept { return maskOf(notInTable(block, m_columns)); }

    /// The number of changed bytes that become escapes: all except spaces that become a plus.
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
        const __m256i block = loadWideBlock(text + read);
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
        // The length and the escapes are computed from one copy of the block, because the output must fit even if
        // another thread changes the text meanwhile.
        const __m256i bytes = loadWideBlock(block);
        std::uint32_t changed = finder.changedIn(bytes);
        const std::size_t length = kBlock + 2 * finder.escapesAmong(changed, bytes);
        if (capacity - static_cast<std::size_t>(out - start) < length + kUrlOverhang) {
            break;
        }
        std::uint32_t done = 0;
        storeCharacters(bytes, out);
        alignas(kBlock) char copy[kBlock];
        storeCharacters(bytes, copy);
        for (; changed != 0; changed &= changed - 1) {
            const auto at = static_cast<std::uint32_t>(std::countr_zero(changed));
            out += at - done;
            const UrlEscape& escape = table.bytes[static_cast<unsigned char>(copy[at])];
            _mm_storeu_si32(out, _mm_loadu_si32(&escape));
            out += escape.length;
            done = at + 1;
            storeCharacters(loadWideBlock(block + done), out);
        }
        out += kBlock - done;
    }
    return {read, static_cast<std::size_t>(out - start)};
}

}  // namespace vorel::algorithms
