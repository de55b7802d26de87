#include <array>
#include <bit>
#include <cstdint>

#include <immintrin.h>

#include "Transcoders.h"
#include "Vectors.h"

namespace bench {

namespace {

// ---- Tables ---------------------------------------------------------------------------------------------------------

enum Shape : std::uint8_t { SixOfTwo, FourOfThree, ThreeOfFour };

/// The characters at the start of the next twelve bytes that are converted together: six characters of up to two bytes,
/// four characters of up to three bytes, or three characters of up to four bytes. `consumed` is the number of their
/// bytes. `row` is the shuffle that moves each character into a lane of two bytes (if the shape is `SixOfTwo`) or of
/// four bytes. The first byte of the lane is the last byte of the character.
struct Window {
    Shape shape;
    std::uint8_t consumed;
    Row row;
};

/// The windows for all combinations of character ends. Bit n of the index is set if byte n is the last byte of a
/// character.
std::array<Window, 4096> makeWindows() {
    std::array<Window, 4096> windows = {};
    constexpr unsigned int kCharacters[] = {6, 4, 3};
    constexpr unsigned int kLongest[] = {2, 3, 4};
    for (unsigned int ends = 0; ends < windows.size(); ++ends) {
        for (unsigned int shape = 0; shape != 3; ++shape) {
            Window window = {static_cast<Shape>(shape), 0, {}};
            window.row.fill(0x80);
            const unsigned int slot = shape == SixOfTwo ? 2 : 4;
            unsigned int at = 0;
            bool fits = true;
            for (unsigned int character = 0; fits && character != kCharacters[shape]; ++character) {
                const unsigned int rest = ends >> at;
                const auto length = static_cast<unsigned int>(std::countr_zero(rest)) + 1;
                fits = rest != 0 && length <= kLongest[shape];
                for (unsigned int byte = 0; fits && byte != length; ++byte) {
                    window.row[character * slot + byte] = static_cast<std::uint8_t>(at + length - 1 - byte);
                }
                at += fits ? length : 0;
            }
            if (fits) {
                window.consumed = static_cast<std::uint8_t>(at);
                windows[ends] = window;
                break;
            }
        }
    }
    return windows;
}

const std::array<Window, 4096> kWindows = makeWindows();

// ---- Conversion -----------------------------------------------------------------------------------------------------

/// Finds errors with three table lookups for each byte. The indexes are the upper half of the previous byte, the lower
/// half of the previous byte, and the upper half of the byte itself. Each bit of the results represents one kind of
/// error; only kTooLarge1000 and kOverlong4 share a bit. If a bit is set in all three results, the two bytes contain
/// this error. The bit kTwoTrailing is different: it means that both bytes are trailing bytes. It must be set for the
/// third byte of a sequence of three or four bytes, and for the fourth byte of a sequence. For any other byte, it is an
/// error.
class Validator {
public:
    void check(__m256i input) {
        const __m256i before1 = shifted<15>(input);
        const __m256i special = specialCases(input, before1);
        const __m256i isThird = _mm256_subs_epu8(shifted<14>(input), everyByte(0xE0 - 0x80));
        const __m256i isFourth = _mm256_subs_epu8(shifted<13>(input), everyByte(0xF0 - 0x80));
        const __m256i must = _mm256_and_si256(_mm256_or_si256(isThird, isFourth), everyByte(0x80));
        m_error = _mm256_or_si256(m_error, _mm256_xor_si256(must, special));
        m_previous = input;
    }

    [[nodiscard]] bool failed() const { return !_mm256_testz_si256(m_error, m_error); }

private:
    template <int Bytes>
    [[nodiscard]] __m256i shifted(__m256i input) const {
        return _mm256_alignr_epi8(input, _mm256_permute2x128_si256(m_previous, input, 0x21), Bytes);
    }

    static __m256i lookup(__m256i index, const Row& row) {
        return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(load(row.data())), index);
    }

    static __m256i upperHalf(__m256i bytes) { return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), everyByte(15)); }

    static __m256i specialCases(__m256i input, __m256i before) {
        constexpr std::uint8_t kTooShort = 1 << 0;
        constexpr std::uint8_t kTooLong = 1 << 1;
        constexpr std::uint8_t kOverlong3 = 1 << 2;
        constexpr std::uint8_t kTooLarge = 1 << 3;
        constexpr std::uint8_t kSurrogate = 1 << 4;
        constexpr std::uint8_t kOverlong2 = 1 << 5;
        constexpr std::uint8_t kTooLarge1000 = 1 << 6;
        constexpr std::uint8_t kOverlong4 = 1 << 6;
        constexpr std::uint8_t kTwoTrailing = 1 << 7;
        constexpr std::uint8_t kCarry = kTooShort | kTooLong | kTwoTrailing;
        constexpr Row kFirstUpper = {kTooLong,
                                     kTooLong,
                                     kTooLong,
                                     kTooLong,
                                     kTooLong,
                                     kTooLong,
                                     kTooLong,
                                     kTooLong,
                                     kTwoTrailing,
                                     kTwoTrailing,
                                     kTwoTrailing,
                                     kTwoTrailing,
                                     kTooShort | kOverlong2,
                                     kTooShort,
                                     kTooShort | kOverlong3 | kSurrogate,
                                     kTooShort | kTooLarge | kTooLarge1000 | kOverlong4};
        constexpr std::uint8_t kLarge = kCarry | kTooLarge | kTooLarge1000;
        constexpr Row kFirstLower = {kCarry | kOverlong3 | kOverlong2 | kOverlong4,
                                     kCarry | kOverlong2,
                                     kCarry,
                                     kCarry,
                                     kCarry | kTooLarge,
                                     kLarge,
                                     kLarge,
                                     kLarge,
                                     kLarge,
                                     kLarge,
                                     kLarge,
                                     kLarge,
                                     kLarge,
                                     kLarge | kSurrogate,
                                     kLarge,
                                     kLarge};
        constexpr std::uint8_t kTrailing = kTooLong | kOverlong2 | kTwoTrailing;
        constexpr Row kSecondUpper = {kTooShort,
                                      kTooShort,
                                      kTooShort,
                                      kTooShort,
                                      kTooShort,
                                      kTooShort,
                                      kTooShort,
                                      kTooShort,
                                      kTrailing | kOverlong3 | kTooLarge1000 | kOverlong4,
                                      kTrailing | kOverlong3 | kTooLarge,
                                      kTrailing | kSurrogate | kTooLarge,
                                      kTrailing | kSurrogate | kTooLarge,
                                      kTooShort,
                                      kTooShort,
                                      kTooShort,
                                      kTooShort};
        const __m256i first = _mm256_and_si256(lookup(upperHalf(before), kFirstUpper),
                                               lookup(_mm256_and_si256(before, everyByte(15)), kFirstLower));
        return _mm256_and_si256(first, lookup(upperHalf(input), kSecondUpper));
    }

    __m256i m_error = _mm256_setzero_si256();
    __m256i m_previous = _mm256_setzero_si256();
};

/// Converts lanes of two bytes, each with a character of one or two bytes, to UTF-16 units.
__m128i unitsOfTwo(__m128i lanes) {
    const __m128i low = _mm_and_si128(lanes, _mm_set1_epi16(0x7F));
    const __m128i high = _mm_and_si128(lanes, _mm_set1_epi16(0x1F00));
    return _mm_or_si128(low, _mm_srli_epi16(high, 2));
}

/// Converts lanes of four bytes, each with a character of one to three bytes, to UTF-16 units.
__m128i unitsOfThree(__m128i lanes) {
    const __m128i low = _mm_and_si128(lanes, _mm_set1_epi32(0x7F));
    const __m128i middle = _mm_srli_epi32(_mm_and_si128(lanes, _mm_set1_epi32(0x3F00)), 2);
    const __m128i high = _mm_srli_epi32(_mm_and_si128(lanes, _mm_set1_epi32(0x0F0000)), 4);
    const __m128i values = _mm_or_si128(_mm_or_si128(low, middle), high);
    return _mm_packus_epi32(values, values);
}

/// Writes a code point. Returns the end of the output.
char16_t* writeCode(std::uint32_t code, char16_t* out) {
    if (code < 0x10000) {
        *out++ = static_cast<char16_t>(code);
    } else {
        *out++ = static_cast<char16_t>(0xD7C0 + (code >> 10));
        *out++ = static_cast<char16_t>(0xDC00 + (code & 0x3FF));
    }
    return out;
}

/// Writes the units of three lanes, each with a character of one to four bytes. Returns the end of the output.
char16_t* writeLanesOfFour(__m128i lanes, char16_t* out) {
    const __m128i low = _mm_and_si128(lanes, _mm_set1_epi32(0x7F));
    const __m128i second = _mm_srli_epi32(_mm_and_si128(lanes, _mm_set1_epi32(0x3F00)), 2);
    // The third byte of a lane is a trailing byte, or the lead byte of a sequence of three. Bit 5 of such a lead byte
    // does not belong to the value.
    const __m128i third = _mm_and_si128(lanes, _mm_set1_epi32(0x3F0000));
    const __m128i isLead = _mm_srli_epi32(_mm_and_si128(lanes, _mm_set1_epi32(0x400000)), 1);
    const __m128i upper = _mm_srli_epi32(_mm_xor_si128(third, isLead), 4);
    const __m128i fourth = _mm_srli_epi32(_mm_and_si128(lanes, _mm_set1_epi32(0x07000000)), 6);
    const __m128i values = _mm_or_si128(_mm_or_si128(low, second), _mm_or_si128(upper, fourth));
    alignas(16) std::uint32_t codes[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(codes), values);
    for (int lane = 0; lane != 3; ++lane) {
        out = writeCode(codes[lane], out);
    }
    return out;
}

/// Converts the next characters. Bit n of `ends` is set if byte n is the last byte of a character. Returns the number
/// of bytes that were converted.
unsigned int convertWindow(const char* in, std::uint64_t ends, char16_t*& out) {
    constexpr Row kSwapped = {1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14};
    constexpr Row kThrees = {2, 1, 0, 0x80, 5, 4, 3, 0x80, 8, 7, 6, 0x80, 11, 10, 9, 0x80};
    const __m128i bytes = load(in);
    if ((ends & 0xFFFF) == 0xFFFF) {
        store32(out, _mm256_cvtepu8_epi16(bytes));
        out += 16;
        return 16;
    }
    if ((ends & 0xFFFF) == 0xAAAA) {
        store(out, unitsOfTwo(shuffled(bytes, kSwapped)));
        out += 8;
        return 16;
    }
    if ((ends & 0xFFF) == 0x924) {
        store(out, unitsOfThree(shuffled(bytes, kThrees)));
        out += 4;
        return 12;
    }
    const Window& window = kWindows[ends & 0xFFF];
    const __m128i lanes = shuffled(bytes, window.row);
    if (window.shape == SixOfTwo) {
        store(out, unitsOfTwo(lanes));
        out += 6;
    } else if (window.shape == FourOfThree) {
        store(out, unitsOfThree(lanes));
        out += 4;
    } else {
        out = writeLanesOfFour(lanes, out);
    }
    return window.consumed;
}

/// The number of trailing bytes after a lead byte, or -1 if the byte does not start a sequence.
int trailingAfter(unsigned char lead) {
    if (lead < 0x80) {
        return 0;
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return -1;
    }
    return lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
}

/// Converts the rest of a text, one character at a time. Returns the end of the output, or null if the rest is invalid.
/// But the function accepts overlong sequences of three or four bytes, encoded surrogates, and code points above
/// U+10FFFF.
char16_t* convertRest(const unsigned char* byte, const unsigned char* end, char16_t* out) {
    while (byte < end) {
        const int trailing = trailingAfter(*byte);
        std::uint32_t code = *byte++;
        if (trailing < 0 || end - byte < trailing) {
            return nullptr;
        }
        code &= trailing == 0 ? 0x7Fu : 0x3Fu >> trailing;
        for (int left = trailing; left != 0; --left) {
            if ((*byte & 0xC0) != 0x80) {
                return nullptr;
            }
            code = code << 6 | (*byte++ & 0x3Fu);
        }
        out = writeCode(code, out);
    }
    return out;
}

}  // namespace

std::size_t utf16LengthAvx2(const char* text, std::size_t bytes) {
    std::size_t units = 0;
    std::size_t at = 0;
    for (; at + 32 <= bytes; at += 32) {
        const __m256i block = load32(text + at);
        units += static_cast<std::size_t>(std::popcount(maskOf(_mm256_cmpgt_epi8(block, everyByte(-65)))));
        const __m256i isFour = _mm256_cmpeq_epi8(_mm256_max_epu8(block, everyByte(0xF0)), block);
        units += static_cast<std::size_t>(std::popcount(maskOf(isFour)));
    }
    for (; at != bytes; ++at) {
        units += static_cast<signed char>(text[at]) > -65 ? 1 : 0;
        units += static_cast<unsigned char>(text[at]) >= 0xF0 ? 1 : 0;
    }
    return units;
}

std::size_t toUtf16Avx2(const char* text, std::size_t bytes, char16_t* out) {
    const char16_t* const start = out;
    std::size_t at = 0;
    // The last characters of a block are converted with the next block. The conversion of a window reads 16 bytes, even
    // past the block. So the loop needs more bytes after the block; 16 bytes are enough.
    while (at + 64 + 16 <= bytes) {
        const __m256i first = load32(text + at);
        const __m256i second = load32(text + at + 32);
        if (maskOf(_mm256_or_si256(first, second)) == 0) {
            for (std::size_t sixteen = 0; sixteen != 64; sixteen += 16) {
                store32(out + sixteen, _mm256_cvtepu8_epi16(load(text + at + sixteen)));
            }
            out += 64;
            at += 64;
            continue;
        }
        // This block begins with the first byte of a character, because all characters before it were converted.
        Validator validator;
        validator.check(first);
        validator.check(second);
        if (validator.failed()) {
            return 0;
        }
        const auto leads = static_cast<std::uint64_t>(maskOf(_mm256_cmpgt_epi8(second, everyByte(-65)))) << 32 |
                           maskOf(_mm256_cmpgt_epi8(first, everyByte(-65)));
        std::uint64_t ends = leads >> 1;
        // The byte after the block decides whether the last byte of the block ends a character. So no window of twelve
        // bytes includes the last byte.
        const std::size_t last = at + 64 - 12;
        while (at < last) {
            const unsigned int consumed = convertWindow(text + at, ends, out);
            at += consumed;
            ends >>= consumed;
        }
    }
    out = convertRest(reinterpret_cast<const unsigned char*>(text) + at,
                      reinterpret_cast<const unsigned char*>(text) + bytes, out);
    return out ? static_cast<std::size_t>(out - start) : 0;
}

}  // namespace bench
