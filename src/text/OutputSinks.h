/// \file
/// Output of a conversion to a string or array. If the maximum length is known, `reserveUnits` returns a buffer for the
/// whole text, and `setEnd` sets the length afterwards. Otherwise `fill` writes the output to a sink. `fill` writes
/// directly into the sink's unused capacity, so nothing is copied if the capacity is large enough. If the capacity is
/// too small, `fill` writes the next part of the output into a local block, and counts the units of the output after
/// this part. The sink then grows once, so that the block and these units fit, and the block is appended.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <type_traits>

#include "core/StringAccess.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"
#include "vorel/core/Protocol.h"

namespace vorel::text {

/// Converts `units` to the type of a string's length. \throws MemoryException if a string cannot hold so many units.
template <class T>
unsigned int checkedUnits(std::uint64_t units) {
    if (units >= BaseString<T>::kUnknownLength) {
        detail::throwMemory(BaseString<T>::kUnknownLength, sizeof(T));
    }
    return static_cast<unsigned int>(units);
}

/// Reserves `units` in a string, discards its text, and returns its buffer. `setEnd` must follow. If `units` is 0, and
/// the string has no buffer, the result is null, and `setEnd` must not be called.
template <class T>
T* reserveUnits(std::uint64_t units, BaseString<T>& string) {
    const unsigned int count = checkedUnits<T>(units);
    if (count != 0 && count < string.capacity()) {
        // The buffer is large enough, so `reserve` would only write this terminator and set the length. `setEnd` sets
        // the length later.
        string.data()[count] = 0;
        return string.data();
    }
    return string.reserve(count, true);
}

/// Reserves `units` in a string and keeps its text. `units` must be at least the length of the text.
template <class T>
void growUnits(std::uint64_t units, BaseString<T>& string) {
    string.reserve(checkedUnits<T>(units), false);
}

/// Sets the length of a string to the text written to its buffer.
template <class T>
void setEnd(const T* end, BaseString<T>& string) noexcept {
    detail::StringAccess<T>::setLength(string, static_cast<unsigned int>(end - string.data()));
}

/// The capacity of a string that grows.
enum class Growth {
    ByPieces,  ///< as if the text is appended piece by piece
    AtOnce,    ///< as if one `reserve` is called for the whole text
};

/// Overwrites a string from its first unit. One unit is reserved for the terminator.
template <class T, Growth Rule>
class StringSink {
public:
    using Unit = T;

    explicit StringSink(BaseString<T>& string) noexcept : m_string(string) {}

    /// Sets the length to the number of units written, even if the conversion fails.
    ~StringSink() { commitLength(); }

    StringSink(const StringSink&) = delete;
    StringSink& operator=(const StringSink&) = delete;

    [[nodiscard]] T* writePosition() const noexcept { return m_string.data() + m_length; }
    [[nodiscard]] unsigned int available() const noexcept {
        return m_string.capacity() != 0 ? m_string.capacity() - m_length - 1 : 0;
    }
    void advance(std::size_t units) noexcept { m_length += static_cast<unsigned int>(units); }
    /// Provides capacity for `units` more units. If a long text and its terminator fill a multiple of the growth step
    /// exactly, one `reserve` for the whole text allocates one more step. Appending piece by piece does not.
    void grow(std::uint64_t units) {
        constexpr std::uint64_t kGrowthStep = 0x100000;  // the growth step of strings that are at least this long
        commitLength();
        const std::uint64_t length = m_length + units;
        const bool endsAtStep = Rule == Growth::ByPieces && length > kGrowthStep && (length + 1) % kGrowthStep == 0;
        growUnits(endsAtStep ? length - 1 : length, m_string);
    }
    void append(const T* block, std::size_t units) {
        commitLength();
        const auto count = static_cast<unsigned int>(units);
        m_string.append(block, count);
        m_length += count;
    }

private:
    void commitLength() noexcept {
        if (m_string.capacity() != 0) {
            detail::StringAccess<T>::setLength(m_string, m_length);
        }
    }

    BaseString<T>& m_string;
    unsigned int m_length = 0;
};

/// Overwrites an array from index `start`. The destructor removes the elements after the last written element. So a
/// reused array need not be cleared first. Clearing would take longer, because it fills the array with zeros.
template <class T>
class ArraySink {
public:
    using Unit = T;

    explicit ArraySink(Array<T>& array, unsigned int start) noexcept : m_array(array), m_count(start) {}

    /// Sets the count to `start` plus the number of units written, even if the conversion fails. The array does not
    /// grow, so this cannot fail.
    ~ArraySink() { m_array.setCount(m_count); }

    ArraySink(const ArraySink&) = delete;
    ArraySink& operator=(const ArraySink&) = delete;

    [[nodiscard]] T* writePosition() const noexcept { return m_array.data() + m_count; }
    [[nodiscard]] unsigned int available() const noexcept { return m_array.allocated() - m_count; }
    void advance(std::size_t units) noexcept { m_count += static_cast<unsigned int>(units); }
    /// Reserves capacity for `units` more elements.
    void reserve(std::size_t units) {
        m_array.setCount(m_count);
        m_array.reserve(checkedCount(units), true);
    }
    /// Like `reserve`, but the new capacity is the capacity that appending piece by piece would give.
    void grow(std::size_t units) {
        m_array.setCount(m_count);
        m_array.reserve(checkedCount(units), false);
    }
    void append(const T* block, std::size_t units) {
        const auto count = static_cast<unsigned int>(units);
        m_array.setCount(m_count);
        m_array.append(block, count);
        m_count += count;
    }

private:
    /// The count after `units` more elements.
    [[nodiscard]] unsigned int checkedCount(std::size_t units) const {
        const std::size_t needed = m_count + units;
        if (needed > 0xFFFFFFFFu) {
            detail::throwMemory(0xFFFFFFFFu, sizeof(T));
        }
        return static_cast<unsigned int>(needed);
    }

    Array<T>& m_array;
    unsigned int m_count;
};

/// Writes the output piece by piece until `atEnd()` returns true. `produce(out, capacity)` writes at most `capacity`
/// units to the sink and returns their number. The number is 0 if the next character does not fit or is invalid. In
/// that case, or if the sink has no unused capacity, `produceBlock(out)` writes the next units to a local block, and
/// the block is appended to the sink. `produceBlock` writes at least `Block` units unless the text ends or an invalid
/// character follows, and at most `Block` + `Overhang` units. `unitsLeft()` counts the units that follow, or returns
/// nullopt if the text is invalid. If the text is invalid, `fill` returns false before the sink grows. If another
/// thread changes the text meanwhile, the sink grows again.
template <unsigned int Block, unsigned int Overhang, class Sink, class Produce, class ProduceBlock, class UnitsLeft,
          class AtEnd>
bool fill(Sink&& sink, Produce&& produce, ProduceBlock&& produceBlock, UnitsLeft&& unitsLeft, AtEnd&& atEnd) {
    typename std::remove_cvref_t<Sink>::Unit block[Block + Overhang];
    while (!atEnd()) {
        const std::size_t available = sink.available();
        const std::size_t units = available != 0 ? produce(sink.writePosition(), available) : 0;
        if (units != 0) {
            sink.advance(units);
        } else if (!atEnd()) {
            const std::size_t produced = produceBlock(std::span(block));
            if (!atEnd()) {
                const std::optional<std::size_t> left = unitsLeft();
                if (!left) {
                    return false;
                }
                sink.grow(produced + *left);
            }
            sink.append(block, produced);
        }
    }
    return true;
}

}  // namespace vorel::text
