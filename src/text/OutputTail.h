/// \file
/// Where a conversion writes next: straight into the free part of a string or array, or, when that is short, into a
/// local block that is appended. So a result grows in a few steps, no further than its text asks for, and a result
/// that is used again is written without a copy.
#pragma once

#include <cstddef>
#include <span>
#include <type_traits>

#include "core/StringAccess.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace vorel::text {

/// A string from its first unit on; what stood there is overwritten. One unit stays for the terminator.
template <class T>
class StringTail {
public:
    using Unit = T;

    explicit StringTail(BaseString<T>& string) noexcept : m_string(string) {}

    /// The string has what was written, also when the conversion fails.
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

/// An array from `start` on. What stood there is overwritten, and what is left of it in the end goes: an array that is
/// used again need not be emptied, which would mean to zero it, before it is filled.
template <class T>
class ArrayTail {
public:
    using Unit = T;

    explicit ArrayTail(Array<T>& array, unsigned int start) noexcept : m_array(array), m_count(start) {}

    /// The array has what was written, also when the conversion fails. Nothing grows here, so nothing can fail.
    ~ArrayTail() { m_array.setCount(m_count); }

    ArrayTail(const ArrayTail&) = delete;
    ArrayTail& operator=(const ArrayTail&) = delete;

    [[nodiscard]] T* free() const noexcept { return m_array.data() + m_count; }
    [[nodiscard]] unsigned int room() const noexcept { return m_array.allocated() - m_count; }
    void written(std::size_t units) noexcept { m_count += static_cast<unsigned int>(units); }
    /// Makes room for `units` more.
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

/// Takes pieces until `atEnd()` says so: straight from `produce(out, room)`, which writes at most `room` units and
/// returns their number, and nothing when the next character has no room; and then from `produceBlock(out)`, which
/// writes about `Block` units into a span, at most `Overhang` more.
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
