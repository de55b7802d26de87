/// \file
/// Reading UTF-8 into 16-bit units, piece by piece, under the rules of a length: up to a zero byte, or to a bound.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "kernels/Utf8.h"

namespace vorel::kernels {

/// A walk through one input. The bytes of a sequence are taken even when they lie beyond the bound, or beyond the zero
/// byte that would have ended the input; reading then goes on to the bound, or to the next zero.
class Utf8Reader {
public:
    /// `length` in bytes; below 0 the input runs to its first zero.
    Utf8Reader(const unsigned char* input, int length) noexcept
        : m_cursor(input), m_end(input), m_bound(length < 0 ? nullptr : input + length) {
        findEnd();
    }

    /// What happens to a surrogate pair of which only the first unit has room.
    enum class LastPair {
        Written,  ///< whole: one unit more than the room is written
        Left,     ///< not at all: it stays unread
    };

    /// Reads until `room` units are written or the input ends, and returns the number of units.
    template <LastPair Rule, class Unit>
    std::size_t read(Unit* out, std::size_t room) noexcept {
        std::size_t units = 0;
        while (m_cursor < m_end) {
            if (*m_cursor < 0x80) {
                if (units >= room) {
                    break;
                }
                const std::size_t run = widenAsciiRun(m_cursor, std::min(left(), room - units), out + units);
                m_cursor += run;
                units += run;
                continue;
            }
            // Decoded before the room is looked at: a bad byte behind the last unit that fits is an error too.
            const Utf8Sequence sequence = decodeUtf8Sequence(m_cursor);
            if (sequence.bytes == 0) {
                m_failed = true;
                break;
            }
            const std::size_t needed = Rule == LastPair::Left && sequence.value >= 0x10000 ? 2 : 1;
            if (units + needed > room) {
                break;
            }
            units += putUnits(sequence.value, out + units);
            pass(sequence.bytes);
        }
        return units;
    }

    /// Whether a byte was met that starts no sequence; `position` stands on it then.
    bool failed() const noexcept { return m_failed; }
    const unsigned char* position() const noexcept { return m_cursor; }

private:
    std::size_t left() const noexcept { return static_cast<std::size_t>(m_end - m_cursor); }

    void pass(unsigned int bytes) noexcept {
        m_cursor += bytes;
        if (m_cursor > m_end) {
            findEnd();
        }
    }

    void findEnd() noexcept {
        if (!m_bound) {
            m_end = m_cursor + std::strlen(reinterpret_cast<const char*>(m_cursor));
        } else if (m_cursor < m_bound) {
            const void* const zero = std::memchr(m_cursor, 0, static_cast<std::size_t>(m_bound - m_cursor));
            m_end = zero ? static_cast<const unsigned char*>(zero) : m_bound;
        } else {
            m_end = m_cursor;
        }
    }

    const unsigned char* m_cursor;
    const unsigned char* m_end;
    const unsigned char* m_bound;
    bool m_failed = false;
};

}  // namespace vorel::kernels
