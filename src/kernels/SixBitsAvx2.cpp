// Compiled for AVX2: nothing of the standard library with code of its own may be used in here, or the linker could take
// that code for the rest of the program.

#include "kernels/SixBitsAvx2.h"

#include <immintrin.h>

#include <cstdint>

namespace vorel::kernels {

namespace {

constexpr std::size_t kBlockBytes = 24;
constexpr std::size_t kBlockCharacters = 32;

__m256i loadTwice(const void* sixteen) noexcept {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(sixteen)));
}

/// A lookup in sixteen entries of a larger table, zero for an index that is not among the sixteen from `first` on. The
/// byte shuffle takes the lower four bits for an index, and gives zero when the upper bit is set: adding 0x70 with
/// saturation sets it for everything from 16 on.
__m256i lookUpSixteen(__m256i entries, __m256i index, int first) noexcept {
    const __m256i relative = _mm256_xor_si256(index, _mm256_set1_epi8(static_cast<char>(first)));
    return _mm256_shuffle_epi8(entries, _mm256_adds_epu8(relative, _mm256_set1_epi8(0x70)));
}

class Alphabet {
public:
    explicit Alphabet(const char* alphabet) noexcept {
        for (int part = 0; part < 4; ++part) {
            m_parts[part] = loadTwice(alphabet + 16 * part);
        }
    }

    [[nodiscard]] __m256i charactersOf(__m256i values) const noexcept {
        const __m256i lower =
            _mm256_or_si256(lookUpSixteen(m_parts[0], values, 0), lookUpSixteen(m_parts[1], values, 16));
        const __m256i upper =
            _mm256_or_si256(lookUpSixteen(m_parts[2], values, 32), lookUpSixteen(m_parts[3], values, 48));
        return _mm256_or_si256(lower, upper);
    }

private:
    __m256i m_parts[4];
};

/// Twelve bytes in each half as sixteen values of six bits.
__m256i spread(__m256i bytes) noexcept {
    // Each group of three bytes a b c becomes the 32 bits "b a c b", from the lowest byte up.
    const __m256i order = _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10,  //
                                           1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
    const __m256i groups = _mm256_shuffle_epi8(bytes, order);
    // Multiplying shifts each 16 bits by a distance of its own: the first and third value down, the others up.
    const __m256i down =
        _mm256_mulhi_epu16(_mm256_and_si256(groups, _mm256_set1_epi32(0x0FC0FC00)), _mm256_set1_epi32(0x04000040));
    const __m256i up =
        _mm256_mullo_epi16(_mm256_and_si256(groups, _mm256_set1_epi32(0x003F03F0)), _mm256_set1_epi32(0x01000010));
    return _mm256_or_si256(down, up);
}

void store(__m256i characters, char* out) noexcept {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), characters);
}

void store(__m256i characters, wchar_t* out) noexcept {
    auto* const units = reinterpret_cast<__m256i*>(out);
    _mm256_storeu_si256(units, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(characters)));
    _mm256_storeu_si256(units + 1, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(characters, 1)));
}

template <class T>
std::size_t encode(const unsigned char* bytes, std::size_t count, const char* alphabet, T* out) noexcept {
    constexpr std::size_t kRead = 28;  // two times sixteen, twelve apart
    const Alphabet lookUp(alphabet);
    std::size_t done = 0;
    for (; count - done >= kRead; done += kBlockBytes, out += kBlockCharacters) {
        const auto* const lower = reinterpret_cast<const __m128i*>(bytes + done);
        const auto* const upper = reinterpret_cast<const __m128i*>(bytes + done + 12);
        const __m256i both =
            _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(lower)), _mm_loadu_si128(upper), 1);
        store(lookUp.charactersOf(spread(both)), out);
    }
    return done;
}

class Values {
public:
    explicit Values(const SixBitValues& table) noexcept {
        for (int part = 0; part < kParts; ++part) {
            m_parts[part] = loadTwice(table.values + kFirst + 16 * part);
        }
        m_low[0] = loadTwice(table.values);
        m_low[1] = loadTwice(table.values + 16);
    }

    [[nodiscard]] __m256i valuesOf(__m256i characters) const noexcept {
        __m256i values =
            _mm256_or_si256(lookUpSixteen(m_low[0], characters, 0), lookUpSixteen(m_low[1], characters, 16));
        for (int part = 0; part < kParts; ++part) {
            values = _mm256_or_si256(values, lookUpSixteen(m_parts[part], characters, kFirst + 16 * part));
        }
        return values;
    }

private:
    static constexpr int kFirst = 32;
    static constexpr int kParts = 6;

    __m256i m_low[2];
    __m256i m_parts[kParts];
};

__m256i load(const char* text) noexcept {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text));
}

/// Units that are no bytes become 0 or 255.
__m256i load(const wchar_t* text) noexcept {
    const auto* const units = reinterpret_cast<const __m256i*>(text);
    const __m256i packed = _mm256_packus_epi16(_mm256_loadu_si256(units), _mm256_loadu_si256(units + 1));
    return _mm256_permute4x64_epi64(packed, 0xD8);
}

template <class T>
bool isInPage(const T* text) noexcept {
    constexpr std::uintptr_t kPage = 4096;
    return reinterpret_cast<std::uintptr_t>(text) % kPage <= kPage - kBlockCharacters * sizeof(T);
}

template <class T>
std::size_t decode(const T* text, std::size_t blocks, const SixBitValues& table, unsigned char* out) noexcept {
    const Values lookUp(table);
    const __m256i order = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1,  //
                                           2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
    std::size_t done = 0;
    for (; done < blocks && isInPage(text); ++done, text += kBlockCharacters, out += kBlockBytes) {
        const __m256i values = lookUp.valuesOf(load(text));
        // The bit that says "plain" is moved to the top, from where the mask is taken.
        if (_mm256_movemask_epi8(_mm256_slli_epi16(values, 1)) != -1) {
            break;
        }
        const __m256i sixBits = _mm256_and_si256(values, _mm256_set1_epi8(0x3F));
        const __m256i twelveBits = _mm256_maddubs_epi16(sixBits, _mm256_set1_epi32(0x01400140));
        const __m256i groups = _mm256_madd_epi16(twelveBits, _mm256_set1_epi32(0x00011000));
        const __m256i bytes = _mm256_shuffle_epi8(groups, order);
        const __m256i together = _mm256_permutevar8x32_epi32(bytes, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), together);
    }
    return done;
}

}  // namespace

std::size_t encodeSixBitsAvx2(const unsigned char* bytes, std::size_t count, const char* alphabet, char* out) noexcept {
    return encode(bytes, count, alphabet, out);
}

std::size_t encodeSixBitsAvx2(const unsigned char* bytes, std::size_t count, const char* alphabet,
                              wchar_t* out) noexcept {
    return encode(bytes, count, alphabet, out);
}

std::size_t decodeSixBitsAvx2(const char* text, std::size_t blocks, const SixBitValues& values,
                              unsigned char* out) noexcept {
    return decode(text, blocks, values, out);
}

std::size_t decodeSixBitsAvx2(const wchar_t* text, std::size_t blocks, const SixBitValues& values,
                              unsigned char* out) noexcept {
    return decode(text, blocks, values, out);
}

}  // namespace vorel::kernels
