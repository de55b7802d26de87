#include "vorel/values/NumberFormatting.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "algorithms/NumberText.h"
#include "values/DoubleFormat.h"

namespace vorel::util {

namespace {

constexpr unsigned long long kWorkCharacters = 64;

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

/// Writes a finite value other than 0. `out` has space for `kDoubleCapacity` characters.
template <class T>
T* writeInForm(double value, T* out, FormattingOptions options) noexcept {
    return algorithms::writeDouble(
        value, options & FO_JSON ? algorithms::DoubleForm::Json : algorithms::DoubleForm::Plain, out);
}

/// The same into a caller's buffer that is large enough. Nothing after the terminator is written.
template <class T>
void writeWhole(double value, T* buffer, FormattingOptions options) noexcept {
    T text[algorithms::kDoubleCapacity];
    T* const end = writeInForm(value, text, options);
    *end = 0;
    algorithms::copyShortText(text, static_cast<std::size_t>(end - text) + 1, buffer);
}

bool isSmall(double value) noexcept {
    return value < 0.1 && value > -0.1;
}

/// Writes to a buffer that may be too small: truncates first, then normalises the form.
char* writeTruncated(double value, char* buffer, unsigned long long size, FormattingOptions options) noexcept {
    char text[algorithms::kDoubleCapacity];
    const char* const end = algorithms::writeDouble(value, algorithms::DoubleForm::Raw, text);
    const auto length = static_cast<std::size_t>(end - text);
    if (isSmall(value)) {
        std::copy_n(text, length, buffer);  // never truncated: callers provide enough space
        buffer[length] = 0;
    } else {
        algorithms::copyTruncatedText(text, length, buffer, size);
        if (size == 0) {
            return buffer;
        }
    }
    return baseutil::makeDoubleFormatConsistent(buffer, size, options);
}

}  // namespace

const char* doubleToString(double value, char* buffer, unsigned long long size, FormattingOptions options) {
    if (value == 0.0) {
        buffer[0] = '0';
        buffer[1] = 0;
    } else if (!std::isfinite(value)) {
        const std::string_view word = specialWord(value, (options & FO_JSON) != 0);
        algorithms::copyTruncatedText(word.data(), word.size(), buffer, size);
    } else if (size < algorithms::kDoubleCapacity) {
        writeTruncated(value, buffer, size, options);
    } else {
        writeWhole(value, buffer, options);
        if (!isSmall(value)) {
            buffer[size - 1] = 0;
        }
    }
    return buffer;
}

const wchar_t* doubleToString(double value, wchar_t* buffer, unsigned long long size, FormattingOptions options) {
    if (!buffer) {
        return nullptr;
    }
    if (size >= algorithms::kDoubleCapacity && value != 0.0 && std::isfinite(value)) {
        writeWhole(value, buffer, options);
    } else {
        char text[kWorkCharacters];
        doubleToString(value, text, kWorkCharacters, options);
        std::copy_n(text, std::min<unsigned long long>(std::strlen(text) + 1, size), buffer);
    }
    return buffer;
}

void appendDouble(BaseString<wchar_t>& text, double value) {
    wchar_t characters[kWorkCharacters];
    if (value != 0.0 && std::isfinite(value)) {
        const wchar_t* const end = writeInForm(value, characters, FO_Default);
        text.append(characters, static_cast<unsigned int>(end - characters));
    } else {
        text.append(doubleToString(value, characters, kWorkCharacters, FO_Default));
    }
}

void appendInteger(BaseString<wchar_t>& text, int value) {
    wchar_t characters[algorithms::kMaxIntegerCharacters];
    const wchar_t* const end = algorithms::writeSigned(algorithms::magnitudeOf(value), value < 0, characters);
    text.append(characters, static_cast<unsigned int>(end - characters));
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
