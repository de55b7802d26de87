// Compiled for AVX2: nothing of the standard library with code of its own may be used in here, or the linker could take
// that code for the rest of the program.

#include "kernels/Utf8Avx2.h"

#include <immintrin.h>

#include <cstdint>

namespace vorel::kernels {

namespace {

/// Shuffles for a mask of eight elements or bytes: what is kept moves to the front.
struct Shuffles {
    unsigned char order[256][16];
};

/// Keeps those of eight 16-bit elements whose bit is set.
constexpr Shuffles keepUnits() noexcept {
    Shuffles shuffles = {};
    for (unsigned int mask = 0; mask < 256; ++mask) {
        unsigned int to = 0;
        for (unsigned char element = 0; element < 8; ++element) {
            if ((mask >> element & 1) != 0) {
                shuffles.order[mask][to++] = static_cast<unsigned char>(2 * element);
                shuffles.order[mask][to++] = static_cast<unsigned char>(2 * element + 1);
            }
        }
        while (to < 16) {
            shuffles.order[mask][to++] = 0x80;
        }
    }
    return shuffles;
}

/// Of eight elements of two bytes keeps both, or one where the bit is set.
constexpr Shuffles oneOrTwoBytes() noexcept {
    Shuffles shuffles = {};
    for (unsigned int mask = 0; mask < 256; ++mask) {
        unsigned int to = 0;
        for (unsigned char element = 0; element < 8; ++element) {
            shuffles.order[mask][to++] = static_cast<unsigned char>(2 * element);
            if ((mask >> element & 1) == 0) {
                shuffles.order[mask][to++] = static_cast<unsigned char>(2 * element + 1);
            }
        }
        while (to < 16) {
            shuffles.order[mask][to++] = 0x80;
        }
    }
    return shuffles;
}

/// Of four elements of four bytes keeps three, two where the lower bit of the element is set, and one where the upper
/// is set as well: the lower bits of all four stand in the lower half of the mask.
constexpr Shuffles oneToThreeBytes() noexcept {
    Shuffles shuffles = {};
    for (unsigned int mask = 0; mask < 256; ++mask) {
        unsigned int to = 0;
        for (unsigned char element = 0; element < 4; ++element) {
            const unsigned int left = 3 - (mask >> element & 1) - (mask >> (element + 4) & 1);
            for (unsigned char byte = 0; byte < left; ++byte) {
                shuffles.order[mask][to++] = static_cast<unsigned char>(4 * element + byte);
            }
        }
        while (to < 16) {
            shuffles.order[mask][to++] = 0x80;
        }
    }
    return shuffles;
}

constexpr Shuffles kKeepUnits = keepUnits();
constexpr Shuffles kOneOrTwoBytes = oneOrTwoBytes();
constexpr Shuffles kOneToThreeBytes = oneToThreeBytes();

__m128i shuffled(__m128i elements, const Shuffles& shuffles, unsigned int mask) noexcept {
    return _mm_shuffle_epi8(elements, _mm_loadu_si128(reinterpret_cast<const __m128i*>(shuffles.order[mask])));
}

std::size_t bits(unsigned int mask) noexcept {
    return static_cast<std::size_t>(_mm_popcnt_u32(mask));
}

unsigned int maskOf(__m128i bytes) noexcept {
    return static_cast<unsigned int>(_mm_movemask_epi8(bytes));
}

/// Whether `size` bytes from `place` on lie in one page, so that they can be read wherever the text ends.
bool isInPage(const void* place, std::uintptr_t size) noexcept {
    constexpr std::uintptr_t kPage = 4096;
    return reinterpret_cast<std::uintptr_t>(place) % kPage <= kPage - size;
}

__m128i load(const void* place) noexcept {
    return _mm_loadu_si128(static_cast<const __m128i*>(place));
}

// ---- Decoding -------------------------------------------------------------------------------------------------------

constexpr std::size_t kBytes = 16;          // of a block
constexpr std::size_t kBytesLookedAt = 18;  // with the trailing bytes of the last of them
constexpr std::size_t kFourByteBlock = 32;

/// The units that begin at each of sixteen bytes, as if each was a lead byte.
__m256i unitsAt(const unsigned char* bytes) noexcept {
    const __m256i lead = _mm256_cvtepu8_epi16(load(bytes));
    const __m256i low = _mm256_set1_epi16(0x3F);
    const __m256i second = _mm256_and_si256(_mm256_cvtepu8_epi16(load(bytes + 1)), low);
    const __m256i third = _mm256_and_si256(_mm256_cvtepu8_epi16(load(bytes + 2)), low);
    const __m256i two = _mm256_or_si256(_mm256_slli_epi16(_mm256_and_si256(lead, _mm256_set1_epi16(0x1F)), 6), second);
    // The bits that the first byte of three has beside its four go out at the top.
    const __m256i three =
        _mm256_or_si256(_mm256_or_si256(_mm256_slli_epi16(lead, 12), _mm256_slli_epi16(second, 6)), third);
    const __m256i isLead = _mm256_cmpgt_epi16(lead, _mm256_set1_epi16(0x7F));
    const __m256i isLeadOfThree = _mm256_cmpgt_epi16(lead, _mm256_set1_epi16(0xDF));
    return _mm256_blendv_epi8(_mm256_blendv_epi8(lead, two, isLead), three, isLeadOfThree);
}

/// Decodes a block of characters of one to three bytes, and returns how many bytes were taken: none when something in
/// it is not well-formed, or is a zero or the lead of four bytes.
std::size_t decodeBlock(const unsigned char* bytes, unsigned char*& out) noexcept {
    const __m128i block = load(bytes);
    const unsigned int zeros = maskOf(_mm_cmpeq_epi8(block, _mm_setzero_si128()));
    const unsigned int notAscii = maskOf(block);
    if ((zeros | notAscii) == 0) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm256_cvtepu8_epi16(block));
        out += 2 * kBytes;
        return kBytes;
    }
    // As signed numbers, trailing bytes are below 0xC0, leads of two bytes below 0xE0, and leads of three below 0xF0.
    const unsigned int trailing = maskOf(_mm_cmpgt_epi8(_mm_set1_epi8(-64), block));
    const unsigned int upToTwo = maskOf(_mm_cmpgt_epi8(_mm_set1_epi8(-32), block));
    const unsigned int upToThree = maskOf(_mm_cmpgt_epi8(_mm_set1_epi8(-16), block));
    const unsigned int leads = notAscii & ~trailing;
    const unsigned int threes = leads & ~upToTwo;
    const unsigned int fours = leads & ~upToThree;
    const unsigned int announced = (leads << 1 | threes << 2) & 0xFFFF;
    if ((zeros | fours | (announced ^ trailing)) != 0) {
        return 0;
    }
    // A character that begins within the block and does not end there waits for the next one.
    const unsigned int cut = (leads >> 15 & 1) != 0 ? 1 : 2 * (threes >> 14 & 1);
    const unsigned int kept = ~trailing & (0xFFFFu >> cut);
    const __m256i units = unitsAt(bytes);
    const __m128i first = shuffled(_mm256_castsi256_si128(units), kKeepUnits, kept & 0xFF);
    const __m128i second = shuffled(_mm256_extracti128_si256(units, 1), kKeepUnits, kept >> 8);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), first);
    out += 2 * bits(kept & 0xFF);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), second);
    out += 2 * bits(kept >> 8);
    return kBytes - cut;
}

/// Decodes eight characters of four bytes that begin with 0xF0 and need four, and says whether they were that.
bool decodeFours(const unsigned char* bytes, unsigned char* out) noexcept {
    const __m256i block = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
    const auto every = [](std::uint32_t value) { return _mm256_set1_epi32(static_cast<int>(value)); };
    const __m256i isFour = _mm256_cmpeq_epi32(_mm256_and_si256(block, every(0xC0C0C0FF)), every(0x808080F0));
    const __m256i code = _mm256_or_si256(_mm256_or_si256(_mm256_and_si256(_mm256_srli_epi32(block, 24), every(0x3F)),
                                                         _mm256_and_si256(_mm256_srli_epi32(block, 10), every(0xFC0))),
                                         _mm256_and_si256(_mm256_slli_epi32(block, 4), every(0x3F000)));
    const __m256i isLarge = _mm256_cmpgt_epi32(code, every(0xFFFF));
    if (_mm256_movemask_epi8(_mm256_and_si256(isFour, isLarge)) != -1) {
        return false;
    }
    const __m256i high = _mm256_add_epi32(_mm256_srli_epi32(code, 10), every(0xD800 - 0x40));
    const __m256i low = _mm256_or_si256(_mm256_and_si256(code, every(0x3FF)), every(0xDC00));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm256_or_si256(high, _mm256_slli_epi32(low, 16)));
    return true;
}

// ---- Encoding -------------------------------------------------------------------------------------------------------

constexpr std::size_t kUnits = 8;         // of a block
constexpr std::size_t kMostWritten = 32;  // for a block, with what does not count

/// Encodes units below 0x800, of which those below 0x80 are in the mask.
unsigned char* encodeUpToTwo(__m128i units, unsigned int ascii, unsigned char* out) noexcept {
    const __m128i lead = _mm_or_si128(_mm_srli_epi16(units, 6), _mm_set1_epi16(0xC0));
    const __m128i trail = _mm_or_si128(_mm_and_si128(units, _mm_set1_epi16(0x3F)), _mm_set1_epi16(0x80));
    const __m128i two = _mm_or_si128(lead, _mm_slli_epi16(trail, 8));
    const __m128i isAscii = _mm_cmpgt_epi16(_mm_set1_epi16(0x80), units);
    const __m128i bytes = _mm_blendv_epi8(two, units, isAscii);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), shuffled(bytes, kOneOrTwoBytes, ascii));
    return out + 16 - bits(ascii);
}

/// Encodes units of any size, each for itself.
unsigned char* encodeUpToThree(__m128i block, unsigned char* out) noexcept {
    const __m256i units = _mm256_cvtepu16_epi32(block);
    const auto every = [](int value) { return _mm256_set1_epi32(value); };
    const auto trail = [&](__m256i value) {
        return _mm256_or_si256(_mm256_and_si256(value, every(0x3F)), every(0x80));
    };
    const __m256i upper = _mm256_srli_epi32(units, 6);
    const __m256i last = trail(units);
    const __m256i two = _mm256_or_si256(_mm256_or_si256(upper, every(0xC0)), _mm256_slli_epi32(last, 8));
    const __m256i leadOfThree = _mm256_or_si256(_mm256_srli_epi32(units, 12), every(0xE0));
    const __m256i three =
        _mm256_or_si256(leadOfThree, _mm256_or_si256(_mm256_slli_epi32(trail(upper), 8), _mm256_slli_epi32(last, 16)));
    const __m256i isShort = _mm256_cmpgt_epi32(every(0x800), units);
    const __m256i isAscii = _mm256_cmpgt_epi32(every(0x80), units);
    const __m256i bytes = _mm256_blendv_epi8(_mm256_blendv_epi8(three, two, isShort), units, isAscii);
    const auto shorts = static_cast<unsigned int>(_mm256_movemask_ps(_mm256_castsi256_ps(isShort)));
    const auto asciis = static_cast<unsigned int>(_mm256_movemask_ps(_mm256_castsi256_ps(isAscii)));
    const unsigned int first = (shorts & 15) | (asciis & 15) << 4;
    const unsigned int second = shorts >> 4 | (asciis & 0xF0);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), shuffled(_mm256_castsi256_si128(bytes), kOneToThreeBytes, first));
    out += 12 - bits(first);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out),
                     shuffled(_mm256_extracti128_si256(bytes, 1), kOneToThreeBytes, second));
    return out + 12 - bits(second);
}

/// Encodes four surrogate pairs, and says whether they were that.
bool encodePairs(__m128i units, unsigned char* out) noexcept {
    const auto every = [](std::uint32_t value) { return _mm_set1_epi32(static_cast<int>(value)); };
    const __m128i isPair = _mm_cmpeq_epi32(_mm_and_si128(units, every(0xFC00FC00)), every(0xDC00D800));
    if (maskOf(isPair) != 0xFFFF) {
        return false;
    }
    const __m128i high = _mm_slli_epi32(_mm_add_epi32(_mm_and_si128(units, every(0x3FF)), every(0x40)), 10);
    const __m128i code = _mm_or_si128(high, _mm_and_si128(_mm_srli_epi32(units, 16), every(0x3FF)));
    const __m128i first = _mm_srli_epi32(code, 18);
    const __m128i second = _mm_and_si128(_mm_srli_epi32(code, 4), every(0x3F00));
    const __m128i third = _mm_and_si128(_mm_slli_epi32(code, 10), every(0x3F0000));
    const __m128i fourth = _mm_and_si128(_mm_slli_epi32(code, 24), every(0x3F000000));
    const __m128i bytes = _mm_or_si128(_mm_or_si128(first, second), _mm_or_si128(third, fourth));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_or_si128(bytes, every(0x808080F0)));
    return true;
}

/// Encodes a block, and returns the end; null when it has a zero, or a surrogate that is not in one of four pairs.
unsigned char* encodeBlock(__m128i units, unsigned char* out, bool paired) noexcept {
    if (maskOf(_mm_cmpeq_epi16(units, _mm_setzero_si128())) != 0) {
        return nullptr;
    }
    const auto everyUnit = [](int value) { return _mm_set1_epi16(static_cast<short>(value)); };
    const __m128i notShort = _mm_and_si128(units, everyUnit(0xF800));
    if (maskOf(_mm_cmpeq_epi16(notShort, _mm_setzero_si128())) == 0xFFFF) {
        const __m128i isAscii = _mm_cmpgt_epi16(everyUnit(0x80), units);
        return encodeUpToTwo(units, maskOf(_mm_packs_epi16(isAscii, _mm_setzero_si128())), out);
    }
    if (paired && maskOf(_mm_cmpeq_epi16(notShort, everyUnit(0xD800))) != 0) {
        return encodePairs(units, out) ? out + 16 : nullptr;
    }
    return encodeUpToThree(units, out);
}

}  // namespace

Stretch decodeUtf8Avx2(const unsigned char* bytes, std::size_t left, void* out, std::size_t room) noexcept {
    const unsigned char* const start = bytes;
    const unsigned char* const end = bytes + left;
    auto* units = static_cast<unsigned char*>(out);
    const unsigned char* const roomEnd = units + 2 * room;
    const auto hasRoom = [&](std::size_t bytesRead) {
        return static_cast<std::size_t>(end - bytes) >= bytesRead &&
               static_cast<std::size_t>(roomEnd - units) >= 2 * kBytes;
    };
    while (bytes != end) {
        if (*bytes >= 0xF0) {
            if (!hasRoom(kFourByteBlock) || !isInPage(bytes, kFourByteBlock) || !decodeFours(bytes, units)) {
                break;
            }
            bytes += kFourByteBlock;
            units += 2 * kBytes;
            continue;
        }
        if (!hasRoom(kBytes) || !isInPage(bytes, kBytesLookedAt)) {
            break;
        }
        const std::size_t taken = decodeBlock(bytes, units);
        if (taken == 0) {
            break;
        }
        bytes += taken;
    }
    return {static_cast<std::size_t>(bytes - start),
            static_cast<std::size_t>(units - static_cast<unsigned char*>(out)) / 2};
}

Stretch encodeUtf8Avx2(const void* units, std::size_t left, unsigned char* out, std::size_t room,
                       bool paired) noexcept {
    const auto* const start = static_cast<const unsigned char*>(units);
    unsigned char* const outStart = out;
    std::size_t done = 0;
    while (left - done >= kUnits && room - static_cast<std::size_t>(out - outStart) >= kMostWritten &&
           isInPage(start + 2 * done, 2 * kUnits)) {
        unsigned char* const next = encodeBlock(load(start + 2 * done), out, paired);
        if (!next) {
            break;
        }
        out = next;
        done += kUnits;
    }
    return {done, static_cast<std::size_t>(out - outStart)};
}

}  // namespace vorel::kernels
