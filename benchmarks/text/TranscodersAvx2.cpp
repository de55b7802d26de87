#include "TranscodersAvx2.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include <immintrin.h>

namespace bench {

namespace {

using Row = std::array<std::uint8_t, 16>;

__m128i load(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

__m256i load32(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}

void store(void* to, __m128i value) {
    _mm_storeu_si128(static_cast<__m128i*>(to), value);
}

void store32(void* to, __m256i value) {
    _mm256_storeu_si256(static_cast<__m256i*>(to), value);
}

__m128i shuffled(__m128i value, const Row& row) {
    return _mm_shuffle_epi8(value, load(row.data()));
}

std::uint32_t maskOf(__m256i bytes) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes));
}

__m256i everyByte(int value) {
    return _mm256_set1_epi8(static_cast<char>(value));
}

__m256i everyUnit(int value) {
    return _mm256_set1_epi16(static_cast<short>(value));
}

// ---- UTF-8 to UTF-16: tables ----------------------------------------------------------------------------------------

enum Shape : std::uint8_t { SixOfTwo, FourOfThree, ThreeOfFour };

/// What the next twelve bytes hold: six characters of up to two bytes, four of up to three, or three of up to four.
struct Window {
    Shape shape;
    std::uint8_t consumed;
    Row row;
};

/// Indexed by the positions of the last bytes of characters.
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

// ---- UTF-8 to UTF-16 ------------------------------------------------------------------------------------------------

/// Finds errors by three lookups for each byte and its predecessor.
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

/// Six lanes of one or two bytes.
__m128i unitsOfTwo(__m128i lanes) {
    const __m128i low = _mm_and_si128(lanes, _mm_set1_epi16(0x7F));
    const __m128i high = _mm_and_si128(lanes, _mm_set1_epi16(0x1F00));
    return _mm_or_si128(low, _mm_srli_epi16(high, 2));
}

/// Four lanes of one to three bytes.
__m128i unitsOfThree(__m128i lanes) {
    const __m128i low = _mm_and_si128(lanes, _mm_set1_epi32(0x7F));
    const __m128i middle = _mm_srli_epi32(_mm_and_si128(lanes, _mm_set1_epi32(0x3F00)), 2);
    const __m128i high = _mm_srli_epi32(_mm_and_si128(lanes, _mm_set1_epi32(0x0F0000)), 4);
    const __m128i values = _mm_or_si128(_mm_or_si128(low, middle), high);
    return _mm_packus_epi32(values, values);
}

/// Three lanes of one to four bytes. Returns the end.
char16_t* writeLanesOfFour(__m128i lanes, char16_t* out) {
    const __m128i low = _mm_and_si128(lanes, _mm_set1_epi32(0x7F));
    const __m128i second = _mm_srli_epi32(_mm_and_si128(lanes, _mm_set1_epi32(0x3F00)), 2);
    // The third byte is a trailing byte, or the lead byte of three, whose bit 5 does not belong to the value.
    const __m128i third = _mm_and_si128(lanes, _mm_set1_epi32(0x3F0000));
    const __m128i isLead = _mm_srli_epi32(_mm_and_si128(lanes, _mm_set1_epi32(0x400000)), 1);
    const __m128i upper = _mm_srli_epi32(_mm_xor_si128(third, isLead), 4);
    const __m128i fourth = _mm_srli_epi32(_mm_and_si128(lanes, _mm_set1_epi32(0x07000000)), 6);
    const __m128i values = _mm_or_si128(_mm_or_si128(low, second), _mm_or_si128(upper, fourth));
    alignas(16) std::uint32_t codes[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(codes), values);
    for (int lane = 0; lane != 3; ++lane) {
        const std::uint32_t code = codes[lane];
        if (code < 0x10000) {
            *out++ = static_cast<char16_t>(code);
        } else {
            *out++ = static_cast<char16_t>(0xD7C0 + (code >> 10));
            *out++ = static_cast<char16_t>(0xDC00 + (code & 0x3FF));
        }
    }
    return out;
}

/// Converts the next characters, whose last bytes `ends` has. Returns the number of bytes.
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

/// The rest of a text, one character at a time. Returns null if it is not valid.
char16_t* convertRest(const unsigned char* byte, const unsigned char* end, char16_t* out) {
    while (byte < end) {
        std::uint32_t code = *byte++;
        const int trailing = code < 0x80   ? 0
                             : code < 0xC2 ? -1
                             : code < 0xE0 ? 1
                             : code < 0xF0 ? 2
                             : code < 0xF5 ? 3
                                           : -1;
        if (trailing < 0 || end - byte < trailing) {
            return nullptr;
        }
        if (trailing != 0) {
            code &= 0x3Fu >> trailing;
        }
        for (int left = trailing; left != 0; --left) {
            if ((*byte & 0xC0) != 0x80) {
                return nullptr;
            }
            code = code << 6 | (*byte++ & 0x3Fu);
        }
        if (code < 0x10000) {
            *out++ = static_cast<char16_t>(code);
        } else {
            *out++ = static_cast<char16_t>(0xD7C0 + (code >> 10));
            *out++ = static_cast<char16_t>(0xDC00 + (code & 0x3FF));
        }
    }
    return out;
}

// ---- UTF-16 to UTF-8: tables ----------------------------------------------------------------------------------------

struct Packing {
    std::uint8_t length;
    Row row;
};

/// Indexed by a bit for each of eight lanes of two bytes: whether it has one byte.
std::array<Packing, 256> makeTwoBytePackings() {
    std::array<Packing, 256> packings = {};
    for (unsigned int ascii = 0; ascii != 256; ++ascii) {
        Packing& packing = packings[ascii];
        packing.row.fill(0x80);
        for (unsigned int lane = 0; lane != 8; ++lane) {
            packing.row[packing.length++] = static_cast<std::uint8_t>(2 * lane);
            if ((ascii >> lane & 1) == 0) {
                packing.row[packing.length++] = static_cast<std::uint8_t>(2 * lane + 1);
            }
        }
    }
    return packings;
}

/// Indexed by two bits for each of four lanes: whether it has one byte, and whether it has one or two.
std::array<Packing, 256> makeThreeBytePackings() {
    std::array<Packing, 256> packings = {};
    for (unsigned int mask = 0; mask != 256; ++mask) {
        Packing& packing = packings[mask];
        packing.row.fill(0x80);
        for (unsigned int lane = 0; lane != 4; ++lane) {
            const unsigned int bits = mask >> 2 * lane & 3;
            if ((bits & 1) != 0) {
                packing.row[packing.length++] = static_cast<std::uint8_t>(4 * lane);
                continue;
            }
            if ((bits & 2) == 0) {
                packing.row[packing.length++] = static_cast<std::uint8_t>(4 * lane + 2);
            }
            packing.row[packing.length++] = static_cast<std::uint8_t>(4 * lane + 3);
            packing.row[packing.length++] = static_cast<std::uint8_t>(4 * lane + 1);
        }
    }
    return packings;
}

const std::array<Packing, 256> kTwoBytePackings = makeTwoBytePackings();
const std::array<Packing, 256> kThreeBytePackings = makeThreeBytePackings();

// ---- UTF-16 to UTF-8 ------------------------------------------------------------------------------------------------

char* writePacked(__m128i lanes, const Packing& packing, char* out) {
    store(out, shuffled(lanes, packing.row));
    return out + packing.length;
}

/// Sixteen units below 0x800.
char* writeUpToTwo(__m256i units, __m256i isAscii, char* out) {
    const __m256i lead = _mm256_srli_epi16(units, 6);
    const __m256i trailing = _mm256_slli_epi16(_mm256_and_si256(units, everyUnit(0x3F)), 8);
    const __m256i two = _mm256_or_si256(_mm256_or_si256(lead, trailing), everyUnit(0x80C0));
    const __m256i bytes = _mm256_blendv_epi8(two, units, isAscii);
    const std::uint32_t mask = maskOf(_mm256_packs_epi16(isAscii, isAscii));
    out = writePacked(_mm256_castsi256_si128(bytes), kTwoBytePackings[mask & 0xFF], out);
    return writePacked(_mm256_extracti128_si256(bytes, 1), kTwoBytePackings[mask >> 16 & 0xFF], out);
}

/// Sixteen units without surrogates. Each gets a lane of four bytes: the byte of ASCII, the last byte, the lead byte of
/// three, and the byte before the last one.
char* writeUpToThree(__m256i units, __m256i isAscii, __m256i isShort, char* out) {
    const __m256i duplicate = _mm256_setr_epi8(0, 0, 2, 2, 4, 4, 6, 6, 8, 8, 10, 10, 12, 12, 14, 14,  //
                                               0, 0, 2, 2, 4, 4, 6, 6, 8, 8, 10, 10, 12, 12, 14, 14);
    const __m256i lower =
        _mm256_or_si256(_mm256_and_si256(_mm256_shuffle_epi8(units, duplicate), everyUnit(0x3F7F)), everyUnit(0x8000));
    const __m256i spread = _mm256_maddubs_epi16(_mm256_srli_epi16(units, 4), everyUnit(0x0140));
    const __m256i upper =
        _mm256_xor_si256(_mm256_or_si256(spread, everyUnit(0xC0E0)), _mm256_andnot_si256(isShort, everyUnit(0x4000)));
    const std::uint32_t mask = (maskOf(isAscii) & 0x55555555) | (maskOf(isShort) & 0xAAAAAAAA);
    const __m256i first = _mm256_unpacklo_epi16(lower, upper);
    const __m256i second = _mm256_unpackhi_epi16(lower, upper);
    out = writePacked(_mm256_castsi256_si128(first), kThreeBytePackings[mask & 0xFF], out);
    out = writePacked(_mm256_castsi256_si128(second), kThreeBytePackings[mask >> 8 & 0xFF], out);
    out = writePacked(_mm256_extracti128_si256(first, 1), kThreeBytePackings[mask >> 16 & 0xFF], out);
    return writePacked(_mm256_extracti128_si256(second, 1), kThreeBytePackings[mask >> 24], out);
}

/// Units from `unit` to `end`, one character at a time; a pair that begins before `end` is read whole. Returns null if
/// a surrogate is not part of a pair.
char* convertUnits(const char16_t*& unit, const char16_t* end, const char16_t* textEnd, char* out) {
    while (unit < end) {
        std::uint32_t code = *unit++;
        if ((code & 0xF800) == 0xD800) {
            if ((code & 0xFC00) != 0xD800 || unit == textEnd || (*unit & 0xFC00) != 0xDC00) {
                return nullptr;
            }
            code = 0x10000 + ((code & 0x3FF) << 10) + (*unit++ & 0x3FFu);
        }
        const int trailing = code < 0x80 ? 0 : code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
        *out++ = static_cast<char>(trailing == 0 ? code : (0x7F80u >> trailing & 0xFF) | code >> 6 * trailing);
        for (int left = trailing - 1; left >= 0; --left) {
            *out++ = static_cast<char>(0x80 | (code >> 6 * left & 0x3F));
        }
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

std::size_t utf8LengthAvx2(const char16_t* text, std::size_t units) {
    std::size_t bytes = 0;
    std::size_t at = 0;
    for (; at + 16 <= units; at += 16) {
        const __m256i block = load32(text + at);
        const __m256i upper = _mm256_and_si256(block, everyUnit(0xF800));
        const __m256i isAscii = _mm256_cmpeq_epi16(_mm256_and_si256(block, everyUnit(0xFF80)), _mm256_setzero_si256());
        const __m256i isTwo = _mm256_or_si256(_mm256_cmpeq_epi16(upper, _mm256_setzero_si256()),
                                              _mm256_cmpeq_epi16(upper, everyUnit(0xD800)));
        const int fewer = std::popcount(maskOf(isAscii)) + std::popcount(maskOf(isTwo));
        bytes += static_cast<std::size_t>(48 - fewer / 2);
    }
    for (; at != units; ++at) {
        bytes += text[at] < 0x80 ? 1 : text[at] < 0x800 || (text[at] & 0xF800) == 0xD800 ? 2 : 3;
    }
    return bytes;
}

std::size_t toUtf16Avx2(const char* text, std::size_t bytes, char16_t* out) {
    const char16_t* const start = out;
    std::size_t at = 0;
    // The last characters of a block are converted with the next one. The reserve is for whole windows at the end.
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
        // This block begins at a character, because the one before it was converted up to here.
        Validator validator;
        validator.check(first);
        validator.check(second);
        if (validator.failed()) {
            return 0;
        }
        const auto leads = static_cast<std::uint64_t>(maskOf(_mm256_cmpgt_epi8(second, everyByte(-65)))) << 32 |
                           maskOf(_mm256_cmpgt_epi8(first, everyByte(-65)));
        std::uint64_t ends = leads >> 1;
        const std::size_t last = at + 64 - 12;  // the end of the last byte is not known
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

std::size_t toUtf8Avx2(const char16_t* text, std::size_t units, char* out) {
    const char* const start = out;
    const char16_t* const end = text + units;
    const char16_t* unit = text;
    while (end - unit >= 16 + 12) {
        const __m256i block = load32(unit);
        if (_mm256_testz_si256(block, everyUnit(0xFF80))) {
            const __m256i next = load32(unit + 16);
            const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(block, next), 0xD8);
            if (end - unit >= 32 + 12 && _mm256_testz_si256(next, everyUnit(0xFF80))) {
                store32(out, packed);
                unit += 32;
                out += 32;
            } else {
                store(out, _mm256_castsi256_si128(packed));
                unit += 16;
                out += 16;
            }
            continue;
        }
        const __m256i zero = _mm256_setzero_si256();
        const __m256i isAscii = _mm256_cmpeq_epi16(_mm256_and_si256(block, everyUnit(0xFF80)), zero);
        const __m256i upper = _mm256_and_si256(block, everyUnit(0xF800));
        const __m256i isShort = _mm256_cmpeq_epi16(upper, zero);
        if (maskOf(isShort) == 0xFFFFFFFF) {
            out = writeUpToTwo(block, isAscii, out);
            unit += 16;
        } else if (maskOf(_mm256_cmpeq_epi16(upper, everyUnit(0xD800))) == 0) {
            out = writeUpToThree(block, isAscii, isShort, out);
            unit += 16;
        } else {
            out = convertUnits(unit, unit + 15, end, out);
            if (!out) {
                return 0;
            }
        }
    }
    out = convertUnits(unit, end, end, out);
    return out ? static_cast<std::size_t>(out - start) : 0;
}

}  // namespace bench
