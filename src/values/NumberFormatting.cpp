#include "vorel/values/NumberFormatting.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "algorithms/Attributes.h"
#include "algorithms/NumberText.h"
#include "core/StringAccess.h"
#include "values/DoubleFormat.h"

namespace vorel::util {

namespace {

using algorithms::Rest;

constexpr unsigned long long kWorkCharacters = 64;

/// Whether the digits of a value must be computed: whether it is finite and not 0. Other values have fixed texts.
bool hasDigits(double value) noexcept {
    constexpr std::uint64_t kInfinite = std::uint64_t{0x7FF0000000000000} << 1;  // without the sign
    return (std::bit_cast<std::uint64_t>(value) << 1) - 1 < kInfinite - 1;
}

/// The text of an infinite value or NaN.
std::string_view specialWord(double value, bool json) noexcept {
    constexpr std::uint64_t kWithoutSign = 0x7FFFFFFFFFFFFFFF;
    constexpr std::uint64_t kNotAvailable = 0x7FF80000000007A2;
    if (std::isinf(value)) {
        if (json) {
            return value < 0 ? "\"-Infinity\"" : "\"Infinity\"";
        }
        return value < 0 ? "-Inf" : "Inf";
    }
    if ((std::bit_cast<std::uint64_t>(value) & kWithoutSign) == kNotAvailable) {
        return json ? "\"NA\"" : "NA";
    }
    return json ? "\"NaN\"" : "NaN";
}

/// Writes a finite value, which must not be 0, and then a terminator. `out` has space for `kDoubleCapacity` characters.
template <Rest rest, class T>
VOREL_ALWAYS_INLINE T* writeInForm(double value, T* out, FormattingOptions options) noexcept {
    return algorithms::writeDouble<rest>(
        value, options & FO_JSON ? algorithms::DoubleForm::Json : algorithms::DoubleForm::Plain, out);
}

bool isSmall(double value) noexcept {
    return std::fabs(value) < 0.1;
}

/// Writes a finite value other than 0 to a buffer that may be too small. If the magnitude is 0.1 or more, truncates the
/// text. Then normalises the form of the text.
char* writeTruncated(double value, char* buffer, unsigned long long size, FormattingOptions options) noexcept {
    char text[algorithms::kDoubleCapacity];
    const char* const end = algorithms::writeDouble<Rest::Unspecified>(value, algorithms::DoubleForm::Raw, text);
    const auto length = static_cast<std::size_t>(end - text);
    if (isSmall(value)) {
        // The text of a small value is not truncated. It always fits, because the caller's buffer must have space for
        // 64 characters, whatever `size` is. If no digit follows the point, a zero is inserted here, because the
        // normalisation cannot insert a zero if `size` is small. Without `FO_JSON`, the normalisation removes this
        // zero.
        char* out = buffer;
        for (const char* next = text; next != end; ++next) {
            *out++ = *next;
            if (*next == '.' && next[1] == 'e') {
                *out++ = '0';
            }
        }
        *out = 0;
    } else {
        algorithms::copyTruncatedText(text, length, buffer, size);
        if (size == 0) {
            return buffer;
        }
    }
    return baseutil::makeDoubleFormatConsistent(buffer, size, options);
}

/// Writes 0, an infinite value or NaN, or any value if the buffer may be too small. Returns the buffer.
VOREL_COLD char* writeSpecial(double value, char* buffer, unsigned long long size, FormattingOptions options) noexcept {
    if (value == 0.0) {
        buffer[0] = '0';
        buffer[1] = 0;
    } else if (!std::isfinite(value)) {
        const std::string_view word = specialWord(value, (options & FO_JSON) != 0);
        algorithms::copyTruncatedText(word.data(), word.size(), buffer, size);
    } else {
        writeTruncated(value, buffer, size, options);
    }
    return buffer;
}

VOREL_COLD wchar_t* writeSpecial(double value, wchar_t* buffer, unsigned long long size,
                                 FormattingOptions options) noexcept {
    char text[kWorkCharacters];
    doubleToString(value, text, kWorkCharacters, options);
    std::copy_n(text, std::min<unsigned long long>(std::strlen(text) + 1, size), buffer);
    return buffer;
}

/// Calls `write` and appends the text that it writes. `write` gets space for `capacity` units and returns the length of
/// the text.
template <unsigned int capacity, class Write>
void appendWritten(BaseString<wchar_t>& text, Write&& write) {
    const unsigned int before = text.length();
    if (text.capacity() - before >= capacity) {
        const auto written = static_cast<unsigned int>(write(text.data() + before));
        detail::StringAccess<wchar_t>::setLength(text, before + written);
    } else {
        wchar_t characters[capacity];
        const auto written = static_cast<unsigned int>(write(characters));
        text.append(characters, written);
    }
}

}  // namespace

const char* doubleToString(double value, char* buffer, unsigned long long size, FormattingOptions options) {
    if (size < algorithms::kDoubleCapacity || !hasDigits(value)) [[unlikely]] {
        return writeSpecial(value, buffer, size, options);
    }
    writeInForm<Rest::Unchanged>(value, buffer, options);
    if (!isSmall(value)) {
        buffer[size - 1] = 0;
    }
    return buffer;
}

const wchar_t* doubleToString(double value, wchar_t* buffer, unsigned long long size, FormattingOptions options) {
    if (!buffer) {
        return nullptr;
    }
    if (size < algorithms::kDoubleCapacity || !hasDigits(value)) [[unlikely]] {
        return writeSpecial(value, buffer, size, options);
    }
    writeInForm<Rest::Unchanged>(value, buffer, options);
    return buffer;
}

void appendDouble(BaseString<wchar_t>& text, double value) {
    if (hasDigits(value)) {
        appendWritten<algorithms::kDoubleCapacity>(
            text, [value](wchar_t* out) { return writeInForm<Rest::Unspecified>(value, out, FO_Default) - out; });
    } else {
        wchar_t characters[kWorkCharacters];
        text.append(doubleToString(value, characters, kWorkCharacters, FO_Default));
    }
}

void appendInteger(BaseString<wchar_t>& text, int value) {
    appendWritten<algorithms::kDigitBlock>(text, [value](wchar_t* out) {
        const std::uint64_t magnitude = algorithms::magnitudeOf(value);
        const std::uint64_t length = algorithms::integerLength(magnitude, value < 0);
        algorithms::writeInteger<Rest::Unspecified>(magnitude, value < 0, length, out);
        return length;
    });
}

const char* Int64ToStr(long long value, char* buffer, unsigned long long size) {
    return algorithms::writeBoundedInteger(algorithms::magnitudeOf(value), value < 0, buffer, size);
}

const wchar_t* Int64ToStr(long long value, wchar_t* buffer, unsigned long long size) {
    return algorithms::writeBoundedInteger(algorithms::magnitudeOf(value), value < 0, buffer, size);
}

const char* UInt64ToStr(unsigned long long value, char* buffer, unsigned long long size) {
    return algorithms::writeBoundedInteger(value, false, buffer, size);
}

const wchar_t* UInt64ToStr(unsigned long long value, wchar_t* buffer, unsigned long long size) {
    return algorithms::writeBoundedInteger(value, false, buffer, size);
}

}  // namespace vorel::util
