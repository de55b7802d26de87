/// \file
/// Reference implementation of the UTF-8 and UTF-16 codecs, written only from the documented rules. It works byte by
/// byte, without blocks, fast paths or code of the library. Tests compare the results of the library with the results
/// of this implementation.
///
///     test::decodeUtf8(bytes, -1).units    // the expected result of ConvertUTF8toString
///
/// The second argument, `length`, limits the number of bytes or units that are converted; -1 means no limit. A zero
/// ends the text, unless the zero is a trailing byte of a sequence. The codecs also read beyond the limit to the end of
/// the last character, so the input must contain this character completely.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// The result of decoding a UTF-8 text.
struct DecodedText {
    std::wstring units;                ///< the decoded text up to its end or up to the error
    std::vector<std::size_t> unitsOf;  ///< the number of units of each character, in order
    std::optional<std::size_t> error;  ///< the index of the byte that is not a valid lead byte
    std::size_t bytesRead = 0;         ///< the number of bytes of the input that must be readable
};

/// The result of encoding a wide text.
struct EncodedText {
    std::string bytes;
    std::size_t unitsRead = 0;  ///< the number of units of the input that must be readable
};

/// Whether `index` is below the bound `length`. The result is true for any negative `length`.
inline bool withinBound(std::size_t index, int length) {
    return length < 0 || index < static_cast<std::size_t>(length);
}

/// The length of the sequence that `lead` starts; 0 if `lead` is not a valid lead byte.
inline unsigned int sequenceLength(unsigned char lead) {
    const unsigned int b = lead;
    if (b < 0x80) {
        return 1;
    }
    if (b >= 0xC0 && b <= 0xDF) {
        return 2;
    }
    if (b >= 0xE0 && b <= 0xEF) {
        return 3;
    }
    if (b >= 0xF0 && b % 2 == 0) {
        return 4;
    }
    // No sequence has five bytes: the documented rule for five bytes matches only the lead bytes F8 and FA, and the
    // rule for four bytes above matches them first.
    return b == 0xFD ? 6 : 0;
}

/// The value of a sequence of `length` bytes; the trailing bytes are not checked.
inline std::uint32_t sequenceValue(const unsigned char* bytes, unsigned int length) {
    const auto low = [bytes](unsigned int index, unsigned int bits) {
        return static_cast<std::uint32_t>(bytes[index] % (1u << bits));
    };
    switch (length) {
    case 1: return bytes[0];
    case 2: return low(0, 5) * 0x40 + low(1, 6);
    case 3: return low(0, 4) * 0x1000 + low(1, 6) * 0x40 + low(2, 6);
    case 4: return low(0, 4) * 0x40000 + low(1, 6) * 0x1000 + low(2, 6) * 0x40 + low(3, 6);
    default:  // six bytes: only two bits of the lead byte and four bits of each of the next two bytes are used
        return low(0, 2) * 0x40000000u + low(1, 4) * 0x1000000 + low(2, 4) * 0x40000 + low(3, 6) * 0x1000 +
               low(4, 6) * 0x40 + low(5, 6);
    }
}

/// Appends `value` as UTF-16 and returns the number of units. For a value above 0x10FFFF, the first unit need not be a
/// high surrogate.
inline std::size_t appendUtf16(std::wstring& units, std::uint32_t value) {
    if (value < 0x10000) {
        units += static_cast<wchar_t>(value);
        return 1;
    }
    units += static_cast<wchar_t>((value / 0x400 + 0x10000 - 0x2840) % 0x10000);
    units += static_cast<wchar_t>(0xDC00 + value % 0x400);
    return 2;
}

/// Decodes `input` up to a zero byte, a byte that is not a valid lead byte, or the bound `length`.
inline DecodedText decodeUtf8(std::string_view input, int length) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(input.data());
    DecodedText result;
    std::size_t at = 0;
    while (withinBound(at, length)) {
        result.bytesRead = at + 1;
        if (bytes[at] == 0) {
            break;
        }
        const unsigned int count = sequenceLength(bytes[at]);
        if (count == 0) {
            result.error = at;
            break;
        }
        result.unitsOf.push_back(appendUtf16(result.units, sequenceValue(bytes + at, count)));
        at += count;
        result.bytesRead = at;
    }
    return result;
}

/// The text in parentheses in the error message for `input`: "Hex string: " and the bytes, in hexadecimal, that follow
/// the byte at `error`, up to a zero. If no bytes follow, the text is empty. The byte at `error` is not a valid lead
/// byte.
inline std::wstring hexDump(const std::string& input, std::size_t error) {
    static constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
    std::wstring dump;
    for (std::size_t at = error + 1; input[at] != 0; ++at) {
        const unsigned int byte = static_cast<unsigned char>(input[at]);
        dump += dump.empty() ? L"Hex string: " : L"-";
        dump += kDigits[byte / 16];
        dump += kDigits[byte % 16];
    }
    return dump;
}

/// Encodes `value` by the original definition of UTF-8, which has sequences of one to six bytes. Returns an empty text
/// if `value` is 0x80000000 or more.
inline std::string encodeUtf8(std::uint32_t value) {
    struct Form {
        std::uint32_t end;      // the first value that is too large
        unsigned int marks;     // the bits of the lead byte that encode the length
        unsigned int trailing;  // the number of trailing bytes
    };
    static constexpr Form kForms[] = {{0x80, 0x00, 0},     {0x800, 0xC0, 1},     {0x10000, 0xE0, 2},
                                      {0x200000, 0xF0, 3}, {0x4000000, 0xF8, 4}, {0x80000000, 0xFC, 5}};
    for (const Form& form : kForms) {
        if (value < form.end) {
            std::string bytes(1 + form.trailing, '\0');
            for (unsigned int index = form.trailing; index > 0; --index) {
                bytes[index] = static_cast<char>(0x80 + value % 0x40);
                value /= 0x40;
            }
            bytes[0] = static_cast<char>(form.marks + value);
            return bytes;
        }
    }
    return {};
}

inline bool isHighSurrogate(wchar_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
inline bool isLowSurrogate(wchar_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

inline std::uint32_t unitAt(const std::wstring& text, std::size_t index) {
    return static_cast<std::uint32_t>(text[index]);
}

/// Encodes `input` up to a zero unit, or at most `length` units if `length` is not negative. `input` must include the
/// unit after the bound, because a surrogate pair that starts at the last unit is encoded completely.
inline EncodedText encodeUtf16(const std::wstring& input, int length) {
    EncodedText result;
    std::size_t at = 0;
    while (withinBound(at, length)) {
        result.unitsRead = at + 1;
        if (input[at] == 0) {
            break;
        }
        if (isHighSurrogate(input[at])) {
            result.unitsRead = at + 2;
        }
        if (isHighSurrogate(input[at]) && isLowSurrogate(input[at + 1])) {
            result.bytes +=
                encodeUtf8(0x10000u + (unitAt(input, at) - 0xD800u) * 0x400 + unitAt(input, at + 1) - 0xDC00u);
            at += 2;
            continue;
        }
        const bool lone = isHighSurrogate(input[at]) || isLowSurrogate(input[at]);
        result.bytes += lone ? std::string("?") : encodeUtf8(unitAt(input, at));
        ++at;
    }
    return result;
}

/// Encodes each unit up to a zero as a separate sequence, even the two surrogates of a pair.
inline std::string encodeUnits(const std::wstring& input) {
    std::string bytes;
    for (std::size_t at = 0; input[at] != 0; ++at) {
        bytes += encodeUtf8(unitAt(input, at));
    }
    return bytes;
}

}  // namespace test
