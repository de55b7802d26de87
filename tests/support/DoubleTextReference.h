/// \file
/// Reference implementation of the text of a double. It computes all decimal digits of the exact value, and rounds
/// them afterwards.
#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace test {

/// A positive integer as groups of nine decimal digits, the lowest group first.
class DecimalNumber {
public:
    explicit DecimalNumber(std::uint64_t value) {
        for (; value != 0; value /= kBase) {
            m_groups.push_back(static_cast<std::uint32_t>(value % kBase));
        }
    }

    void multiply(std::uint32_t factor) {
        std::uint64_t carry = 0;
        for (std::uint32_t& group : m_groups) {
            carry += std::uint64_t{group} * factor;
            group = static_cast<std::uint32_t>(carry % kBase);
            carry /= kBase;
        }
        for (; carry != 0; carry /= kBase) {
            m_groups.push_back(static_cast<std::uint32_t>(carry % kBase));
        }
    }

    /// Multiplies by a power of `base`. Combines several factors `base` into one factor below 10^9, so that `multiply`
    /// is called less often.
    void multiplyByPower(std::uint32_t base, int exponent) {
        std::uint32_t power = 1;
        for (; exponent != 0; --exponent) {
            if (std::uint64_t{power} * base >= kBase) {
                multiply(power);
                power = 1;
            }
            power *= base;
        }
        multiply(power);
    }

    [[nodiscard]] std::string digits() const {
        std::string result = std::to_string(m_groups.back());
        for (std::size_t group = m_groups.size() - 1; group-- != 0;) {
            const std::string nine = std::to_string(m_groups[group]);
            result += std::string(9 - nine.size(), '0') + nine;
        }
        return result;
    }

private:
    static constexpr std::uint64_t kBase = 1000000000;

    std::vector<std::uint32_t> m_groups;
};

/// A positive value in scientific notation: d.ddd… × 10^exponent.
struct ExactDecimal {
    explicit ExactDecimal(double value) {
        int binaryExponent = 0;
        const double fraction = std::frexp(value, &binaryExponent);
        DecimalNumber number(static_cast<std::uint64_t>(std::ldexp(fraction, 53)));
        binaryExponent -= 53;
        number.multiplyByPower(binaryExponent < 0 ? 5 : 2, std::abs(binaryExponent));
        digits = number.digits();
        exponent = static_cast<int>(digits.size()) - 1 + (binaryExponent < 0 ? binaryExponent : 0);
    }

    /// Rounds to fifteen digits. A tie is rounded away from zero if `tieAwayFromZero` is set, otherwise to the even
    /// digit.
    void roundToFifteen(bool tieAwayFromZero) {
        digits += std::string(16, '0');
        const std::string rest = digits.substr(15);
        digits.resize(15);
        const bool isTie = rest.find_last_not_of('0') == 0 && rest[0] == '5';
        const bool up = isTie ? tieAwayFromZero || (digits[14] - '0') % 2 != 0 : rest[0] >= '5';
        if (!up) {
            return;
        }
        digits = std::to_string(std::stoull(digits) + 1);
        if (digits.size() > 15) {
            digits.resize(15);
            ++exponent;
        }
    }

    std::string digits;
    int exponent;
};

/// The text of a finite value other than 0. If `json` is true, scientific notation always has a point and at least one
/// digit after the point.
inline std::string textOfDouble(double value, bool json) {
    const bool isSmall = std::fabs(value) < 0.1;
    ExactDecimal decimal(std::fabs(value));
    decimal.roundToFifteen(isSmall);
    std::string digits = decimal.digits.substr(0, decimal.digits.find_last_not_of('0') + 1);
    const std::string sign = value < 0 ? "-" : "";
    if (!isSmall && decimal.exponent < 0) {
        return sign + "0." + digits;
    }
    if (!isSmall && decimal.exponent < 15) {
        const auto whole = static_cast<std::size_t>(decimal.exponent) + 1;
        if (digits.size() <= whole) {
            return sign + digits + std::string(whole - digits.size(), '0');
        }
        return sign + digits.insert(whole, ".");
    }
    if (digits.size() > 1 || isSmall || json) {
        digits.insert(1, ".");
    }
    if (json && digits.back() == '.') {
        digits += '0';
    }
    char exponent[16];
    std::snprintf(exponent, sizeof exponent, "e%c%03d", decimal.exponent < 0 ? '-' : '+', std::abs(decimal.exponent));
    return sign + digits + exponent;
}

}  // namespace test
