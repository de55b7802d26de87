/// \file
/// Reading UTF-8 into 16-bit units and writing units as UTF-8, piece by piece, under the rules of a length: below 0 the
/// input runs to its first zero; otherwise the length is a bound, and a zero still ends the input.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>

#include "kernels/AsciiRuns.h"
#include "kernels/Processor.h"
#include "kernels/Utf8.h"
#include "kernels/Utf8Avx2.h"

namespace vorel::kernels {

/// A place in an input that may have a bound.
template <class Element>
class BoundedCursor {
public:
    BoundedCursor(const Element* input, int length) noexcept
        : m_position(input),
          m_left(length < 0 ? std::numeric_limits<std::size_t>::max() : static_cast<std::size_t>(length)) {}

    [[nodiscard]] const Element* position() const noexcept { return m_position; }

    /// The elements before the bound.
    [[nodiscard]] std::size_t left() const noexcept { return m_left; }
    [[nodiscard]] bool atEnd() const noexcept { return m_left == 0 || *m_position == 0; }

    /// Goes on; what lies beyond the bound is passed too.
    void pass(std::size_t elements) noexcept {
        m_position += elements;
        m_left -= std::min(m_left, elements);
    }

private:
    const Element* m_position;
    std::size_t m_left;
};

/// How many characters are looked at one by one before blocks are tried again.
inline constexpr unsigned int kPlainly = 8;

/// Reads one input. The bytes of a sequence are taken even when they lie beyond the bound, or beyond the zero byte that
/// would have ended the input; reading then goes on to the bound, or to the next zero.
class Utf8Reader {
public:
    /// What happens to a surrogate pair of which only the first unit has room.
    enum class LastPair {
        Written,  ///< whole: one unit more than the room is written
        Left,     ///< not at all: it stays unread
    };

    Utf8Reader(const unsigned char* input, int length) noexcept : m_cursor(input, length) {}

    /// Reads until `room` units are written or the input ends, and returns the number of units.
    template <LastPair Rule, class Unit>
    std::size_t read(Unit* out, std::size_t room) noexcept {
        std::size_t units = 0;
        unsigned int plainly = 0;
        while (!m_cursor.atEnd()) {
            if (*m_cursor.position() < 0x80) {
                if (units >= room) {
                    break;
                }
                const std::size_t most = std::min(m_cursor.left(), room - units);
                const std::size_t run = widenAsciiRun(m_cursor.position(), most, out + units);
                m_cursor.pass(run);
                units += run;
                continue;
            }
            if (plainly == 0 && units < room) {
                const Stretch done = decodeStretch(out + units, room - units);
                units += done.written;
                if (done.read != 0) {
                    continue;
                }
                plainly = kPlainly;
            }
            plainly -= plainly != 0 ? 1 : 0;
            // Decoded before the room is looked at: a bad byte behind the last unit that fits is an error too.
            const Utf8Sequence sequence = decodeUtf8Sequence(m_cursor.position());
            if (sequence.bytes == 0) {
                m_failed = true;
                break;
            }
            const std::size_t needed = Rule == LastPair::Left && sequence.value >= 0x10000 ? 2 : 1;
            if (units + needed > room) {
                break;
            }
            units += putUnits(sequence.value, out + units);
            m_cursor.pass(sequence.bytes);
        }
        return units;
    }

    [[nodiscard]] bool atEnd() const noexcept { return m_cursor.atEnd(); }

    /// Whether a byte was met that starts no sequence; `position` stands on it then.
    [[nodiscard]] bool failed() const noexcept { return m_failed; }
    [[nodiscard]] const unsigned char* position() const noexcept { return m_cursor.position(); }

private:
    /// Decodes what is well-formed in whole blocks; nothing, where there is no such thing.
    template <class Unit>
    Stretch decodeStretch(Unit* out, std::size_t room) noexcept {
        static_assert(sizeof(Unit) == 2);
        if (!s_useAvx2) {
            return {0, 0};
        }
        const std::size_t most = std::min(m_cursor.left(), room * kMostUtf8BytesPerUnit);
        const Stretch done = decodeUtf8Avx2(m_cursor.position(), most, out, room);
        m_cursor.pass(done.read);
        return done;
    }

    BoundedCursor<unsigned char> m_cursor;
    bool m_failed = false;
};

/// Writes one input. A surrogate pair that starts on the last unit before the bound is taken whole.
template <Surrogates Rule, class Unit>
class Utf8Writer {
public:
    Utf8Writer(const Unit* input, int length) noexcept : m_cursor(input, length) {}

    /// Writes until at least `enough` bytes are written or the input ends, and returns the number of bytes. `out` has
    /// room for `enough` bytes and one sequence more.
    std::size_t write(unsigned char* out, std::size_t enough) noexcept {
        std::size_t bytes = 0;
        while (bytes < enough && !m_cursor.atEnd()) {
            const std::size_t most = std::min(m_cursor.left(), enough - bytes);
            const std::size_t run = narrowAsciiRun(m_cursor.position(), most, out + bytes);
            m_cursor.pass(run);
            bytes += run;
            unsigned int plainly = 0;
            while (bytes < enough && !m_cursor.atEnd() && *m_cursor.position() >= 0x80) {
                if (plainly == 0) {
                    const Stretch done = encodeStretch(out + bytes, enough - bytes + kLongestUtf8Sequence);
                    bytes += done.written;
                    if (done.read != 0) {
                        continue;
                    }
                    plainly = kPlainly;
                }
                --plainly;
                const Unit* next = m_cursor.position();
                bytes += encodeUtf8Sequence(takeValue<Rule>(next), out + bytes);
                m_cursor.pass(static_cast<std::size_t>(next - m_cursor.position()));
            }
        }
        return bytes;
    }

    [[nodiscard]] bool atEnd() const noexcept { return m_cursor.atEnd(); }

private:
    /// Encodes what is well-formed in whole blocks; nothing, where there is no such thing.
    Stretch encodeStretch(unsigned char* out, std::size_t room) noexcept {
        static_assert(sizeof(Unit) == 2);
        if (!s_useAvx2) {
            return {0, 0};
        }
        constexpr bool kPaired = Rule == Surrogates::Paired;
        const Stretch done = encodeUtf8Avx2(m_cursor.position(), m_cursor.left(), out, room, kPaired);
        m_cursor.pass(done.read);
        return done;
    }

    BoundedCursor<Unit> m_cursor;
};

}  // namespace vorel::kernels
