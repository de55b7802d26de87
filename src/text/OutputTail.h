/// \file
/// Where a conversion writes next: straight into the free part of a string or array, or, when that is short, into a
/// local block that is appended. So a result grows in a few steps, no further than its text asks for, and a result
/// that is used again is written without a copy.
#pragma once

#include <cstddef>
#include <type_traits>

#include "core/StringAccess.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace vorel::text {

/// The free part of a string; one unit stays for the terminator.
template <class T>
class StringTail {
public:
    using Unit = T;

    explicit StringTail(BaseString<T>& string) noexcept : m_string(string) {}

    [[nodiscard]] T* free() const noexcept { return m_string.data() + m_string.length(); }
    [[nodiscard]] unsigned int room() const noexcept {
        return m_string.capacity() != 0 ? m_string.capacity() - m_string.length() - 1 : 0;
    }
    void written(std::size_t units) noexcept {
        detail::StringAccess<T>::setLength(m_string, m_string.length() + static_cast<unsigned int>(units));
    }
    void append(const T* block, std::size_t units) { m_string.append(block, static_cast<unsigned int>(units)); }

private:
    BaseString<T>& m_string;
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

/// Takes pieces from `produce(out, enough)`, which writes about `enough` units, at most `Overhang` more, and returns
/// their number, until `atEnd()` says so.
template <unsigned int Block, unsigned int Overhang, class Tail, class Produce, class AtEnd>
void fill(Tail&& tail, Produce&& produce, AtEnd&& atEnd) {
    typename std::remove_cvref_t<Tail>::Unit block[Block + Overhang];
    while (!atEnd()) {
        if (tail.room() > Overhang) {
            tail.written(produce(tail.free(), tail.room() - Overhang));
        } else {
            tail.append(block, produce(block, Block));
        }
    }
}

}  // namespace vorel::text
