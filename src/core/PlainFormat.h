/// \file
/// Renders formats that have only plain conversions, three times as fast as the runtime's print functions. Most
/// messages have such a format. The text is the same as the runtime's.
#pragma once

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdint>

#include "algorithms/Ascii.h"
#include "algorithms/AsciiRuns.h"
#include "algorithms/NumberText.h"

namespace vorel::baseutil {

/// Writes to a buffer of limited size. Each `append` function returns false if the text does not fit. The last unit of
/// the buffer remains free for a terminator.
template <class T>
class PlainText {
public:
    PlainText(T* buffer, std::size_t size) noexcept : m_start(buffer), m_next(buffer), m_last(buffer + size - 1) {}

    /// Adds a terminator, and returns the number of units before it.
    int finish() noexcept {
        *m_next = 0;
        return static_cast<int>(m_next - m_start);
    }

    bool append(T unit) noexcept {
        if (m_next == m_last) {
            return false;
        }
        *m_next++ = unit;
        return true;
    }

    /// Appends a zero-terminated text. If the text has another width than the buffer and is not ASCII, also returns
    /// false, because its conversion depends on the locale.
    template <class From>
    bool append(const From* text) noexcept {
        for (;;) {
            const std::size_t ascii = algorithms::copyAsciiRun(text, room(), m_next);
            m_next += ascii;
            text += ascii;
            if (*text == 0) {
                return true;
            }
            if (m_next == m_last || sizeof(From) != sizeof(T)) {
                return false;
            }
            while (*text != 0 && !algorithms::isAsciiText(*text) && m_next != m_last) {
                *m_next++ = static_cast<T>(*text++);
            }
        }
    }

    bool appendDecimal(std::uint64_t magnitude, bool negative) noexcept {
        constexpr std::size_t kAccessed = algorithms::kMaxIntegerCharacters + 1;
        const auto length = static_cast<std::size_t>(algorithms::integerLength(magnitude, negative));
        if (length > room()) {
            return false;
        }
        if (room() >= kAccessed) {
            algorithms::writeInteger<algorithms::Rest::Unspecified>(magnitude, negative, length, m_next);
        } else {
            T text[kAccessed];
            algorithms::writeInteger<algorithms::Rest::Unspecified>(magnitude, negative, length, text);
            std::copy_n(text, length, m_next);
        }
        m_next += length;
        return true;
    }

    /// `letters` contains the sixteen hexadecimal digits.
    bool appendHexadecimal(std::uint64_t value, const char* letters) noexcept {
        constexpr unsigned int kDigitBits = 4;
        const auto digits = (static_cast<unsigned int>(std::bit_width(value | 1)) + kDigitBits - 1) / kDigitBits;
        if (digits > room()) {
            return false;
        }
        for (unsigned int shift = digits * kDigitBits; shift != 0;) {
            shift -= kDigitBits;
            *m_next++ = static_cast<T>(letters[value >> shift & 0xF]);
        }
        return true;
    }

private:
    [[nodiscard]] std::size_t room() const noexcept { return static_cast<std::size_t>(m_last - m_next); }

    T* m_start;
    T* m_next;
    T* m_last;
};

/// The size of a conversion's argument. With `Default`, a text has the width of the format, and an integer is an `int`.
enum class ArgumentSize {
    Default,
    Short,  // h
    Long,   // l
    Wide,   // ll, I64, z
};

/// Reads the size prefix of a conversion.
template <class T>
ArgumentSize readArgumentSize(const T*& fmt) noexcept {
    if (*fmt == 'l') {
        ++fmt;
        if (*fmt != 'l') {
            return ArgumentSize::Long;
        }
        ++fmt;
        return ArgumentSize::Wide;
    }
    if (*fmt == 'h') {
        ++fmt;
        return ArgumentSize::Short;
    }
    if (*fmt == 'z') {
        ++fmt;
        return ArgumentSize::Wide;
    }
    if (*fmt == 'I' && fmt[1] == '6' && fmt[2] == '4') {
        fmt += 3;
        return ArgumentSize::Wide;
    }
    return ArgumentSize::Default;
}

/// Appends a text argument. Returns false if the runtime must render it.
template <class T>
bool appendText(PlainText<T>& text, ArgumentSize size, const void* argument) noexcept {
    if (size == ArgumentSize::Wide) {
        return false;
    }
    if (!argument) {
        return text.append("(null)");
    }
    const bool isNarrow = size == ArgumentSize::Short || (size == ArgumentSize::Default && sizeof(T) == 1);
    return isNarrow ? text.append(static_cast<const char*>(argument))
                    : text.append(static_cast<const wchar_t*>(argument));
}

/// Appends the next argument in the form of `conversion`. Returns false if the runtime must render it.
template <class T>
bool appendArgument(PlainText<T>& text, T conversion, ArgumentSize size, va_list& args) noexcept {
    if (conversion == 's') {
        return appendText(text, size, va_arg(args, const void*));
    }
    if (size == ArgumentSize::Short) {
        return false;
    }
    const bool isWide = size == ArgumentSize::Wide;
    if (conversion == 'd' || conversion == 'i') {
        const std::int64_t value = isWide ? va_arg(args, long long) : va_arg(args, int);
        return text.appendDecimal(algorithms::magnitudeOf(value), value < 0);
    }
    if (conversion != 'u' && conversion != 'x' && conversion != 'X') {
        return false;
    }
    const std::uint64_t value = isWide ? va_arg(args, unsigned long long) : va_arg(args, unsigned int);
    return conversion == 'u'
               ? text.appendDecimal(value, false)
               : text.appendHexadecimal(value, conversion == 'x' ? "0123456789abcdef" : "0123456789ABCDEF");
}

/// Renders into `buffer`, which has `size` units, and returns the number of units before the terminator. Returns -1,
/// with unspecified content of the buffer, if the runtime must render the format:
///
/// - if it has a conversion other than `%%`, `%s` and the integers `%d`, `%i`, `%u`, `%x` and `%X`;
/// - if a conversion has a flag, a width, a precision, or an unsupported size prefix;
/// - if an argument is a text whose width differs from the format's, and the text is not ASCII;
/// - if text and terminator do not fit, or if `buffer` or `fmt` is null.
template <class T>
int renderPlainFormat(T* buffer, std::size_t size, const T* fmt, va_list args) noexcept {
    if (!buffer || size == 0 || !fmt) {
        return -1;
    }
    PlainText<T> text(buffer, std::min<std::size_t>(size, INT_MAX));
    for (; *fmt; ++fmt) {
        bool isDone = false;
        if (*fmt != '%') {
            isDone = text.append(*fmt);
        } else if (fmt[1] == '%') {
            isDone = text.append(*++fmt);
        } else {
            ++fmt;
            const ArgumentSize argumentSize = readArgumentSize(fmt);
            isDone = appendArgument(text, *fmt, argumentSize, args);
        }
        if (!isDone) {
            return -1;
        }
    }
    return text.finish();
}

}  // namespace vorel::baseutil
