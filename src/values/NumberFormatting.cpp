#include "vorel/values/NumberFormatting.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "kernels/DecimalText.h"
#include "values/DoubleFormat.h"

namespace vorel::util {

namespace {

constexpr unsigned long long kWorkCharacters = 64;

/// Copies as much of a text as fits into `size` characters, the last of which becomes a terminator.
template <class T>
void copyCut(const T* text, std::size_t length, T* buffer, unsigned long long size) noexcept {
    if (size == 0) {
        return;
    }
    const std::size_t copied = std::min<unsigned long long>(length, size - 1);
    std::copy_n(text, copied, buffer);
    buffer[copied] = 0;
    buffer[size - 1] = 0;
}

/// The word for a value that has no digits; empty for every other.
std::string_view specialWord(double value, bool json) noexcept {
    constexpr std::uint64_t kWithoutSign = 0x7FFFFFFFFFFFFFFF;
    constexpr std::uint64_t kNotAvailable = 0x7FF80000000007A2;
    if (std::isnan(value)) {
        const bool notAvailable = (std::bit_cast<std::uint64_t>(value) & kWithoutSign) == kNotAvailable;
        if (json) {
            return notAvailable ? "\"NA\"" : "\"NaN\"";
        }
        return notAvailable ? "NA" : "NaN";
    }
    if (std::isinf(value)) {
        if (json) {
            return value < 0 ? "\"-Infinity\"" : "\"Infinity\"";
        }
        return value < 0 ? "-Inf" : "Inf";
    }
    return {};
}

template <class T>
T* integerToString(std::uint64_t magnitude, bool negative, T* buffer, unsigned long long size) noexcept {
    if (buffer) {
        T text[kernels::kMostIntegerDigits + 1];
        T* const end = std::end(text);
        T* begin = kernels::writeIntegerBackwards(magnitude, end);
        if (negative) {
            *--begin = '-';
        }
        copyCut(begin, static_cast<std::size_t>(end - begin), buffer, size);
    }
    return buffer;
}

template <class T>
T* signedToString(long long value, T* buffer, unsigned long long size) noexcept {
    const auto bits = static_cast<std::uint64_t>(value);
    return integerToString(value < 0 ? 0 - bits : bits, value < 0, buffer, size);
}

/// The text of a double, wide.
class WideDouble {
public:
    WideDouble(double value, FormattingOptions options) noexcept {
        char narrow[kWorkCharacters];
        doubleToString(value, narrow, kWorkCharacters, options);
        m_length = std::strlen(narrow);
        std::copy_n(narrow, m_length + 1, m_text);
    }

    [[nodiscard]] const wchar_t* text() const noexcept { return m_text; }
    [[nodiscard]] std::size_t length() const noexcept { return m_length; }

private:
    std::size_t m_length;
    wchar_t m_text[kWorkCharacters];
};

}  // namespace

const char* doubleToString(double value, char* buffer, unsigned long long size, FormattingOptions options) {
    if (value == 0.0) {
        buffer[0] = '0';
        buffer[1] = 0;
        return buffer;
    }
    if (const std::string_view word = specialWord(value, (options & FO_JSON) != 0); !word.empty()) {
        copyCut(word.data(), word.size(), buffer, size);
        return buffer;
    }
    if (!(value >= 0.1) && !(value <= -0.1)) {
        *kernels::writeDouble(value, buffer) = 0;
        return baseutil::makeDoubleFormatConsistent(buffer, size, options);
    }
    char text[kernels::kMostDoubleCharacters];
    const char* const end = kernels::writeDouble(value, text);
    copyCut(text, static_cast<std::size_t>(end - text), buffer, size);
    return size != 0 ? baseutil::makeDoubleFormatConsistent(buffer, size, options) : buffer;
}

const wchar_t* doubleToString(double value, wchar_t* buffer, unsigned long long size, FormattingOptions options) {
    if (buffer) {
        const WideDouble text(value, options);
        std::copy_n(text.text(), std::min<unsigned long long>(text.length() + 1, size), buffer);
    }
    return buffer;
}

void appendDouble(BaseString<wchar_t>& text, double value) {
    const WideDouble digits(value, FO_Default);
    text.append(digits.text(), static_cast<unsigned int>(digits.length()));
}

void appendInteger(BaseString<wchar_t>& text, int value) {
    wchar_t digits[kernels::kMostIntegerDigits + 2];
    text.append(signedToString<wchar_t>(value, digits, std::size(digits)));
}

const char* Int64ToStr(long long value, char* buffer, unsigned long long size) {
    return signedToString(value, buffer, size);
}

const wchar_t* Int64ToStr(long long value, wchar_t* buffer, unsigned long long size) {
    return signedToString(value, buffer, size);
}

const char* UInt64ToStr(unsigned long long value, char* buffer, unsigned long long size) {
    return integerToString(value, false, buffer, size);
}

const wchar_t* UInt64ToStr(unsigned long long value, wchar_t* buffer, unsigned long long size) {
    return integerToString(value, false, buffer, size);
}

double round(double value) noexcept {
    const double below = std::floor(value);
    const double above = std::ceil(value);
    return above - value >= value - below ? below : above;
}

unsigned int doubleHashCode(double value) noexcept {
    constexpr unsigned int kMultiplier = 31;
    unsigned int hash = 0;
    for (auto bytes = std::bit_cast<std::uint64_t>(value), left = std::uint64_t{8}; left != 0; --left, bytes >>= 8) {
        hash = hash * kMultiplier + static_cast<unsigned int>(bytes & 0xFF);
    }
    return hash;
}

}  // namespace vorel::util
