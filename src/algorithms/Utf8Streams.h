/// \file
/// Converts between UTF-8 and 16-bit units, piece by piece. If the caller passes a length below 0, the input ends at
/// its first zero. Otherwise the length is a bound, and the input ends at the bound or at an earlier zero.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>

#include "algorithms/Ascii.h"
#include "algorithms/AsciiRuns.h"
#include "algorithms/Processor.h"
#include "algorithms/Utf16.h"
#include "algorithms/Utf8.h"
#include "algorithms/Utf8Avx2.h"

namespace vorel::algorithms {

/// A position in input that may have a bound.
template <class Element>
class BoundedCursor {
public:
    BoundedCursor(const Element* input, int length) noexcept
        : m_position(input),
          m_left(length < 0 ? std::numeric_limits<std::size_t>::max() : static_cast<std::size_t>(length)) {}

    [[nodiscard]] const Element* position() const noexcept { return m_position; }

    /// The number of elements before the bound.
    [[nodiscard]] std::size_t left() const noexcept { return m_left; }
    [[nodiscard]] bool atEnd() const noexcept { return m_left == 0 || *m_position == 0; }

    /// Advances by `elements`, even past the bound.
    void pass(std::size_t elements) noexcept {
        m_position += elements;
        m_left -= std::min(m_left, elements);
    }

private:
    const Element* m_position;
    std::size_t m_left;
};

/// The number of characters that are converted one by one before blocks are tried again.
inline constexpr unsigned int kScalarCharacters = 8;

/// Decodes one UTF-8 input. The bytes of a sequence are read even past the bound or past a zero. After such a zero,
/// reading continues to the bound or to the next zero.
class Utf8Reader {
public:
    /// How a surrogate pair is handled if only its first unit fits.
    enum class LastPair {
        Written,  ///< both units are written, one more than the capacity
        Left,     ///< nothing is written, and the character is not read
    };

    Utf8Reader(const unsigned char* input, int length) noexcept : m_cursor(input, length) {}

    /// Reads until the next character does not fit into `capacity` units, the input ends, or a byte does not start a
    /// sequence. Returns the number of units. `Rule` applies if only the first unit of a surrogate pair fits. `Rest`
    /// says whether unused capacity may be overwritten.
    template <LastPair Rule, Overwrite Rest = Overwrite::Allowed, class Unit>
    std::size_t read(Unit* out, std::size_t capacity) noexcept {
        std::size_t units = 0;
        while (!m_cursor.atEnd()) {
            if (units < capacity) {
                units += readBlocks<Rest>(out + units, capacity - units);
            }
            if (!readScalar<Rule>(out, units, capacity)) {
                break;
            }
        }
        return units;
    }

    [[nodiscard]] bool atEnd() const noexcept { return m_cursor.atEnd(); }

    /// The number of units that can be read: up to the end, or up to a byte that does not start a sequence. In the
    /// second case, `*invalid` becomes true, if `invalid` is not null.
    [[nodiscard]] std::size_t unitsLeft(bool* invalid = nullptr) const noexcept {
        BoundedCursor<unsigned char> cursor = m_cursor;
        std::size_t units = 0;
        while (!cursor.atEnd()) {
            if (Processor::usesAvx2()) {
                const Progress counted = countDecodedAvx2(cursor.position(), cursor.left());
                cursor.pass(counted.read);
                units += counted.written;
            }
            for (unsigned int left = kScalarCharacters; left != 0 && !cursor.atEnd(); --left) {
                const Utf8Sequence sequence = nextSequence(cursor);
                if (sequence.bytes == 0) {
                    if (invalid) {
                        *invalid = true;
                    }
                    return units;
                }
                units += sequence.value < kFirstPairedValue ? 1 : 2;
                cursor.pass(sequence.bytes);
            }
        }
        return units;
    }

    /// Whether a byte was found that does not start a sequence; `position` points to it.
    [[nodiscard]] bool failed() const noexcept { return m_failed; }
    [[nodiscard]] const unsigned char* position() const noexcept { return m_cursor.position(); }

private:
    static Utf8Sequence nextSequence(const BoundedCursor<unsigned char>& cursor) noexcept {
        const unsigned char byte = *cursor.position();
        return byte < 0x80 ? Utf8Sequence{byte, 1} : decodeUtf8Sequence(cursor.position());
    }

    /// Reads some characters one by one. Returns false if the next character does not fit, or if the next byte does not
    /// start a sequence.
    template <LastPair Rule, class Unit>
    bool readScalar(Unit* out, std::size_t& units, std::size_t capacity) noexcept {
        BoundedCursor<unsigned char> cursor = m_cursor;  // a copy that the compiler keeps in registers
        std::size_t at = units;
        bool goesOn = true;
        for (unsigned int left = kScalarCharacters; left != 0 && !cursor.atEnd(); --left) {
            // The sequence is decoded before the capacity is checked, because an invalid byte after the last unit that
            // fits is also an error.
            const Utf8Sequence sequence = nextSequence(cursor);
            const std::size_t needed = Rule == LastPair::Left && sequence.value >= kFirstPairedValue ? 2 : 1;
            m_failed = sequence.bytes == 0;
            if (m_failed || at + needed > capacity) {
                goesOn = false;
                break;
            }
            at += writeUnits(sequence.value, out + at);
            cursor.pass(sequence.bytes);
        }
        m_cursor = cursor;
        units = at;
        return goesOn;
    }

    /// Reads ASCII, and with AVX2 all well-formed text, in blocks. Returns the number of units.
    template <Overwrite Rest, class Unit>
    std::size_t readBlocks(Unit* out, std::size_t capacity) noexcept {
        static_assert(sizeof(Unit) == 2);
        if (!Processor::usesAvx2()) {
            const std::size_t run = widenAsciiRun(m_cursor.position(), std::min(m_cursor.left(), capacity), out);
            m_cursor.pass(run);
            return run;
        }
        const Progress done = decodeUtf8Avx2(m_cursor.position(), m_cursor.left(), out, capacity, Rest);
        m_cursor.pass(done.read);
        return done.written;
    }

    BoundedCursor<unsigned char> m_cursor;
    bool m_failed = false;
};

/// Encodes one input as UTF-8. With `Surrogates::Paired`, a surrogate pair is read whole even if only its first unit is
/// before the bound.
template <Surrogates Rule, class Unit>
class Utf8Writer {
public:
    Utf8Writer(const Unit* input, int length) noexcept : m_cursor(input, length) {}

    /// Writes until at least `enough` bytes are written, the next sequence does not fit into `capacity` bytes, or the
    /// input ends. Returns the number of bytes. `capacity` must be at least `enough`.
    std::size_t write(unsigned char* out, std::size_t enough, std::size_t capacity) noexcept {
        std::size_t bytes = 0;
        while (bytes < enough && !m_cursor.atEnd()) {
            bytes += writeBlocks(out + bytes, enough - bytes, capacity - bytes);
            if (!writeScalar(out, bytes, enough, capacity)) {
                break;
            }
        }
        return bytes;
    }

    [[nodiscard]] bool atEnd() const noexcept { return m_cursor.atEnd(); }

    /// The number of bytes that remain to be written.
    [[nodiscard]] std::size_t bytesLeft() const noexcept {
        BoundedCursor<Unit> cursor = m_cursor;
        std::size_t bytes = 0;
        while (!cursor.atEnd()) {
            if (Processor::usesAvx2()) {
                const Progress counted = countEncodedAvx2(cursor.position(), cursor.left(), Rule == Surrogates::Paired);
                cursor.pass(counted.read);
                bytes += counted.written;
            }
            for (unsigned int left = kScalarCharacters; left != 0 && !cursor.atEnd(); --left) {
                const Unit* next = cursor.position();
                bytes += utf8SequenceLength(consumeValue<Rule>(next));
                cursor.pass(static_cast<std::size_t>(next - cursor.position()));
            }
        }
        return bytes;
    }

private:
    /// Writes some characters one by one. Returns false if the next character does not fit.
    bool writeScalar(unsigned char* out, std::size_t& bytes, std::size_t enough, std::size_t capacity) noexcept {
        BoundedCursor<Unit> cursor = m_cursor;  // a copy that the compiler keeps in registers
        std::size_t at = bytes;
        bool goesOn = true;
        for (unsigned int left = kScalarCharacters; left != 0 && at < enough && !cursor.atEnd(); --left) {
            const Unit* next = cursor.position();
            const std::uint32_t value = consumeValue<Rule>(next);
            if (utf8SequenceLength(value) > capacity - at) {
                goesOn = false;
                break;
            }
            at += encodeUtf8Sequence(value, out + at);
            cursor.pass(static_cast<std::size_t>(next - cursor.position()));
        }
        m_cursor = cursor;
        bytes = at;
        return goesOn;
    }

    /// Writes ASCII, and with AVX2 all well-formed text, in blocks. Returns the number of bytes.
    std::size_t writeBlocks(unsigned char* out, std::size_t enough, std::size_t capacity) noexcept {
        static_assert(sizeof(Unit) == 2);
        if (!Processor::usesAvx2()) {
            const std::size_t run = narrowAsciiRun(m_cursor.position(), std::min(m_cursor.left(), enough), out);
            m_cursor.pass(run);
            return run;
        }
        constexpr bool kPaired = Rule == Surrogates::Paired;
        const Progress done = encodeUtf8Avx2(m_cursor.position(), m_cursor.left(), out, capacity, kPaired);
        m_cursor.pass(done.read);
        return done.written;
    }

    BoundedCursor<Unit> m_cursor;
};

}  // namespace vorel::algorithms
