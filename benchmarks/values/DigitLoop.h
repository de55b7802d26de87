/// \file
/// A peer for the integer parsers: the method of fast_float 5. The method is written again here, because Debian's older
/// version of fast_float does not parse integers. Eight decimal digits are parsed at once in one register, the
/// remaining digits one by one with a table. The range is checked at the end.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

namespace bench {

inline constexpr auto kDigitValues = [] {
    std::array<unsigned char, 256> values = {};
    values.fill(255);
    for (unsigned char digit = 0; digit < 10; ++digit) {
        values['0' + digit] = digit;
    }
    for (unsigned char letter = 0; letter < 26; ++letter) {
        values['a' + letter] = values['A' + letter] = static_cast<unsigned char>(10 + letter);
    }
    return values;
}();

inline bool areEightDigits(std::uint64_t text) {
    return (((text + 0x4646464646464646) | (text - 0x3030303030303030)) & 0x8080808080808080) == 0;
}

inline std::uint32_t valueOfEightDigits(std::uint64_t text) {
    constexpr std::uint64_t kMask = 0x000000FF000000FF;
    text -= 0x3030303030303030;
    text = text * 10 + (text >> 8);
    return static_cast<std::uint32_t>(
        ((text & kMask) * (100 + (1000000ULL << 32)) + (text >> 16 & kMask) * (1 + (10000ULL << 32))) >> 32);
}

/// Parses the number at `begin`, which must be before `end`. Returns its bits, or 0 if the number is out of range. For
/// unsigned 64-bit values, some numbers of 20 digits that are too large are accepted, for example 28446744073709551616.
/// The result is then the number modulo 2^64.
template <class Value, unsigned int base>
std::uint64_t parseByTable(const char* begin, const char* end) {
    const bool negative = std::is_signed_v<Value> && *begin == '-';
    begin += negative ? 1 : 0;
    while (begin != end && *begin == '0') {
        ++begin;
    }
    const char* const digits = begin;
    std::uint64_t value = 0;
    for (std::uint64_t eight = 0; base == 10 && end - begin >= 8; begin += 8) {
        std::memcpy(&eight, begin, sizeof eight);
        if (!areEightDigits(eight)) {
            break;
        }
        value = value * 100000000 + valueOfEightDigits(eight);
    }
    for (; begin != end; ++begin) {
        const unsigned int digit = kDigitValues[static_cast<unsigned char>(*begin)];
        if (digit >= base) {
            break;
        }
        value = value * base + digit;
    }
    constexpr std::ptrdiff_t kMaxDigits = base == 10 ? 20 : 16;
    constexpr auto kMax = static_cast<std::uint64_t>(std::numeric_limits<Value>::max());
    const bool wraps = begin - digits == kMaxDigits && base == 10 && value < 10000000000000000000u;
    if (begin - digits > kMaxDigits || wraps || value > kMax + (negative ? 1 : 0)) {
        return 0;
    }
    return negative ? 0 - value : value;
}

}  // namespace bench
