/// \file
/// Renders formats that have only plain conversions, three times as fast as the runtime's print functions. Most formats
/// of messages are such formats. The text is the same as the runtime's.
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

/// Writes to a buffer of limited size. Each function returns false if the text does not fit. The last unit of the
/// buffer remains free for a terminator.
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

    /// `letters` are the sixteen digits.
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

/// Renders into `buffer`, which has `size` units, and returns the number of units before the terminator. Returns -1,
/// with unspecified content of the buffer, if the runtime must render the format:
///
/// - if it has a conversion other than `%%`, `%s` and the integers `%d`, `%i`, `%u`, `%x` and `%X`;
/// - if a conversion has a flag, a width, a precision or an unusual prefix;
/// - if an argument is a text whose width differs from the format's, and the text is not ASCII;
/// - if text and terminator do not fit.
template <class T>
int renderPlainFormat(T* buffer, std::size_t size, const T* fmt, va_list args) noexcept {
    if (!buffer || size == 0 || !fmt) {
        return -1;
    }
    PlainText<T> text(buffer, std::min<std::size_t>(size, INT_MAX));
    for (; *fmt; ++fmt) {
        if (*fmt != '%') {
            if (!text.append(*fmt)) {
                return -1;
            }
            continue;
        }
        ++fmt;
        const ArgumentSize argument = readArgumentSize(fmt);
        bool done = false;
        switch (*fmt) {
        case '%': done = argument == ArgumentSize::Default && text.append(T{'%'}); break;
        case 's': {
            const bool isNarrow =
                argument == ArgumentSize::Short || (argument == ArgumentSize::Default && sizeof(T) == 1);
            const void* const string = va_arg(args, const void*);
            done = argument != ArgumentSize::Wide && (!string    ? text.append("(null)")
                                                      : isNarrow ? text.append(static_cast<const char*>(string))
                                                                 : text.append(static_cast<const wchar_t*>(string)));
            break;
        }
        case 'd':
        case 'i': {
            const std::int64_t value = argument == ArgumentSize::Wide ? va_arg(args, long long) : va_arg(args, int);
            done = argument != ArgumentSize::Short && text.appendDecimal(algorithms::magnitudeOf(value), value < 0);
            break;
        }
        case 'u':
        case 'x':
        case 'X': {
            const std::uint64_t value =
                argument == ArgumentSize::Wide ? va_arg(args, unsigned long long) : va_arg(args, unsigned int);
            done =
                argument != ArgumentSize::Short && (*fmt == 'u'   ? text.appendDecimal(value, false)
                                                    : *fmt == 'x' ? text.appendHexadecimal(value, "0123456789abcdef")
                                                                  : text.appendHexadecimal(value, "0123456789ABCDEF"));
            break;
        }
        default: break;
        }
        if (!done) {
            return -1;
        }
    }
    return text.finish();
}

}  // namespace vorel::baseutil
