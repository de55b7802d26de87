/// \file
/// Output of a conversion: directly into the unused capacity of a string or array, or through a local block that is
/// appended where that capacity is too small. So a result grows in few steps and no further than its text requires, and
/// a reused result is written without a copy.
#pragma once

#include <cstddef>
#include <span>
#include <type_traits>

#include "core/StringAccess.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace vorel::text {

/// Overwrites a string from its first unit. One unit is reserved for the terminator.
template <class T>
class StringTail {
public:
    using Unit = T;

    explicit StringTail(BaseString<T>& string) noexcept : m_string(string) {}

    /// Sets the length to the units written, also when the conversion fails.
    ~StringTail() { state(); }

    StringTail(const StringTail&) = delete;
    StringTail& operator=(const StringTail&) = delete;

    [[nodiscard]] T* free() const noexcept { return m_string.data() + m_length; }
    [[nodiscard]] unsigned int room() const noexcept {
        return m_string.capacity() != 0 ? m_string.capacity() - m_length - 1 : 0;
    }
    void written(std::size_t units) noexcept { m_length += static_cast<unsigned int>(units); }
    void append(const T* block, std::size_t units) {
        state();
        const auto count = static_cast<unsigned int>(units);
        m_string.append(block, count);
        m_length += count;
    }

private:
    void state() noexcept {
        if (m_string.capacity() != 0) {
            detail::StringAccess<T>::setLength(m_string, m_length);
        }
    }

    BaseString<T>& m_string;
    unsigned int m_length = 0;
};

/// Overwrites an array from `start` and truncates it to what was written. A reused array need not be cleared first,
/// which would fill it with zeros.
template <class T>
class ArrayTail {
public:
    using Unit = T;

    explicit ArrayTail(Array<T>& array, unsigned int start) noexcept : m_array(array), m_count(start) {}

    /// Sets the count to the units written, also when the conversion fails. The array does not grow, so this cannot
    /// fail.
    ~ArrayTail() { m_array.setCount(m_count); }

    ArrayTail(const ArrayTail&) = delete;
    ArrayTail& operator=(const ArrayTail&) = delete;

    [[nodiscard]] T* free() const noexcept { return m_array.data() + m_count; }
    [[nodiscard]] unsigned int room() const noexcept { return m_array.allocated() - m_count; }
    void written(std::size_t units) noexcept { m_count += static_cast<unsigned int>(units); }
    /// Reserves capacity for `units` more elements.
    void reserve(std::size_t units) {
        m_array.setCount(m_count);
        const std::size_t needed = m_count + units;
        if (needed > 0xFFFFFFFFu) {
            detail::throwMemory(0xFFFFFFFFu, sizeof(T));
        }
        m_array.reserve(static_cast<unsigned int>(needed), true);
    }
    void append(const T* block, std::size_t units) {
        const auto count = static_cast<unsigned int>(units);
        m_array.setCount(m_count);
        m_array.append(block, count);
        m_count += count;
    }

private:
    Array<T>& m_array;
    unsigned int m_count;
};

/// Writes pieces until `atEnd()`. `produce(out, capacity)` writes at most `capacity` units to the output and returns
/// their number, 0 if the next character does not fit. Then `produceBlock(out)` writes about `Block` units, at most
/// `Overhang` more, to a span that is appended.
template <unsigned int Block, unsigned int Overhang, class Tail, class Produce, class ProduceBlock, class AtEnd>
void fill(Tail&& tail, Produce&& produce, ProduceBlock&& produceBlock, AtEnd&& atEnd) {
    typename std::remove_cvref_t<Tail>::Unit block[Block + Overhang];
    while (!atEnd()) {
        const std::size_t room = tail.room();
        const std::size_t units = room != 0 ? produce(tail.free(), room) : 0;
        if (units != 0) {
            tail.written(units);
        } else if (!atEnd()) {
            tail.append(block, produceBlock(std::span(block)));
        }
    }
}

}  // namespace vorel::text
