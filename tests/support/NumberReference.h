/// \file
/// Reference implementation of the number parsers. It is simple, and uses other algorithms than the library.
/// The functions that check a whole text, except `tryDouble`, use regular expressions. Values are computed from the
/// last digit to the first. The functions expect texts in the narrow form that `shapeOf` returns (see Shape.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <regex>
#include <string>
#include <string_view>

#include "support/Shape.h"

namespace test {

/// The value that a parser returns, and the index of the first character that the parser does not read.
template <class Value>
struct Reading {
    Value value{};
    std::size_t end = 0;
};

/// The number of consecutive characters from `at` that are in `wanted`.
inline std::size_t runOf(std::string_view wanted, std::string_view text, std::size_t at) {
    const std::size_t end = text.find_first_not_of(wanted, at);
    return (end == std::string_view::npos ? text.size() : end) - at;
}

inline constexpr std::string_view kDecimalDigits = "0123456789";

/// The value of `digits` in the given base, modulo 2^64.
inline std::uint64_t valueOf(std::string_view digits, unsigned int base = 10) {
    std::uint64_t value = 0;
    std::uint64_t weight = 1;
    for (std::size_t digit = digits.size(); digit-- != 0; weight *= base) {
        value += weight * std::string_view("0123456789abcdef")
                              .find(static_cast<char>(digits[digit] >= 'A' && digits[digit] <= 'F' ? digits[digit] + 32
                                                                                                   : digits[digit]));
    }
    return value;
}

/// Reads an integer modulo 2^64. For a 32-bit function of the library, the lower half of the value is expected.
inline Reading<std::uint64_t> readInteger(std::string_view text, bool isSigned, bool skipTrailing) {
    std::size_t at = runOf(kBlanks, text, 0);
    const bool hasSign = at < text.size() && (text[at] == '+' || (isSigned && text[at] == '-'));
    const bool negative = hasSign && text[at] == '-';
    at += hasSign ? 1 : 0;
    const std::size_t digits = runOf(kDecimalDigits, text, at);
    const std::uint64_t value = valueOf(text.substr(at, digits));
    at += digits;
    at += skipTrailing ? runOf(kBlanks, text, at) : 0;
    return {negative ? ~value + 1 : value, at};
}

/// Reads at most `maxDigits` hexadecimal digits, and the white space before and after them.
inline Reading<std::uint32_t> readHex(std::string_view text, std::size_t maxDigits) {
    std::size_t at = runOf(kBlanks, text, 0);
    std::size_t digits = runOf("0123456789abcdefABCDEF", text, at);
    digits = digits < maxDigits ? digits : maxDigits;
    const auto value = static_cast<std::uint32_t>(valueOf(text.substr(at, digits), 16));
    at += digits;
    return {value, at + runOf(kBlanks, text, at)};
}

/// The parts of a decimal number. `mantissaEnd` is the position after the mantissa, and `end` is the position after the
/// exponent.
struct DecimalParts {
    bool negative = false;
    std::string digits;       ///< without the point
    std::int64_t before = 0;  ///< the number of digits before the point
    std::size_t mantissaEnd = 0;
    bool hasExponent = false;
    bool exponentNegative = false;
    std::uint32_t exponent = 0;
    std::size_t end = 0;
};

inline DecimalParts partsOf(std::string_view text) {
    DecimalParts parts;
    std::size_t at = runOf(kBlanks, text, 0);
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) {
        parts.negative = text[at++] == '-';
    }
    const std::size_t whole = runOf(kDecimalDigits, text, at);
    parts.digits = text.substr(at, whole);
    parts.before = static_cast<std::int64_t>(whole);
    at += whole;
    if (at < text.size() && text[at] == '.') {
        const std::size_t fraction = runOf(kDecimalDigits, text, ++at);
        parts.digits += text.substr(at, fraction);
        at += fraction;
    }
    parts.mantissaEnd = at;
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        parts.hasExponent = true;
        ++at;
        if (at < text.size() && (text[at] == '-' || text[at] == '+')) {
            parts.exponentNegative = text[at++] == '-';
        }
        const std::size_t digits = runOf(kDecimalDigits, text, at);
        parts.exponent = static_cast<std::uint32_t>(valueOf(text.substr(at, digits)));
        at += digits;
    }
    parts.end = at;
    return parts;
}

/// The value of the first eighteen digits, computed in two parts. The second part consists of the last nine of these
/// digits, or of all of them if there are fewer than nine.
inline double mantissaOf(const DecimalParts& parts) {
    const std::string used = parts.digits.substr(0, 18);
    const std::size_t high = used.size() <= 9 ? 0 : used.size() - 9;
    const auto upper = static_cast<double>(valueOf(std::string_view(used).substr(0, high)));
    const auto lower = static_cast<double>(valueOf(std::string_view(used).substr(high)));
    return upper * 1.0e9 + lower;
}

/// The signed value: the mantissa scaled by the total exponent. The scaling factor is a product of powers from the list
/// 10^1, 10^2, 10^4, ….
inline double scaledValueOf(const DecimalParts& parts) {
    constexpr double kPowers[] = {1.0e1, 1.0e2, 1.0e4, 1.0e8, 1.0e16, 1.0e32, 1.0e64, 1.0e128, 1.0e256};
    const auto used = static_cast<std::int64_t>(parts.digits.size() < 18 ? parts.digits.size() : 18);
    auto total = static_cast<std::uint32_t>(parts.before - used);
    total += parts.exponentNegative ? ~parts.exponent + 1 : parts.exponent;
    const auto exponent = static_cast<std::int64_t>(static_cast<std::int32_t>(total));
    const std::int64_t magnitude = exponent < 0 ? -exponent : exponent;
    const std::int64_t capped = magnitude < 511 ? magnitude : 511;
    double factor = 1.0;
    for (unsigned int bit = 0; bit < 9; ++bit) {
        factor *= capped >> bit & 1 ? kPowers[bit] : 1.0;
    }
    const double value = exponent < 0 ? mantissaOf(parts) / factor : mantissaOf(parts) * factor;
    return parts.negative ? -value : value;
}

inline Reading<double> readDouble(std::string_view text) {
    const DecimalParts parts = partsOf(text);
    if (parts.digits.empty()) {
        return {parts.negative ? -0.0 : 0.0, 0};
    }
    return {scaledValueOf(parts), parts.end};
}

/// The result of a `try…` function, and the value that it stores in the caller's variable; nullopt if it stores none.
template <class Value>
struct TryResult {
    bool result = false;
    std::optional<Value> value;
};

inline TryResult<double> tryDouble(std::string_view text) {
    const DecimalParts parts = partsOf(text);
    if (parts.digits.empty()) {
        return {};
    }
    if (parts.hasExponent && parts.exponent == 0) {
        return {false, mantissaOf(parts)};
    }
    return {parts.end + runOf(kBlanks, text, parts.end) == text.size(), scaledValueOf(parts)};
}

inline bool matches(std::string_view text, const std::regex& pattern) {
    return std::regex_match(text.begin(), text.end(), pattern);
}

inline TryResult<int> tryInteger(std::string_view text) {
    static const std::regex whole(R"([ \t\n\r]*[-+]?[0-9]+(\.0*)?[ \t\n\r]*)");
    return {matches(text, whole), static_cast<int>(readInteger(text, true, false).value)};
}

inline bool canBeInteger(std::string_view text, bool allowLeadingZeros) {
    static const std::regex whole(R"([ \t\n\r]*[-+]?[0-9]+(\.0*)?[ \t\n\r]*)");
    static const std::regex leadingZero(R"([ \t\n\r]*[-+]?0[0-9]*[1-9][0-9]*[ \t\n\r]*)");
    return matches(text, whole) && (allowLeadingZeros || !matches(text, leadingZero));
}

inline bool canBeDouble(std::string_view text, bool allowLeadingZeros) {
    static const std::regex number(R"([ \t\n\r]*[-+]?([0-9]+\.?[0-9]*|\.[0-9]+)([eE][-+]?[0-9]+)?[ \t\n\r]*)");
    static const std::regex leadingZero(R"([ \t\n\r]*[-+]?0[0-9]*[1-9][0-9]*[ \t\n\r]*)");
    return matches(text, number) && (allowLeadingZeros || !matches(text, leadingZero));
}

}  // namespace test
