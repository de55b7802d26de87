/// \file
/// `Array<T>`: the owning, growable array that carries every list of values across the interface.
///
///     vorel::Array<int> values;
///     values.append(3);
///     values[0] += 1;      // a bad index throws InvalidIndexException
///
/// The storage comes from the runtime's `malloc` and goes back through `free`. The three fields are standard-layout:
/// another compiler's caller sees the same bytes. Every slot behind the count holds a value-initialised element (zero,
/// or an empty string), so that growing the count never shows garbage.
///
/// Elements that are not plain values (strings) need a default state and a copy assignment; growth gives each its own
/// deep copy in the new storage. Their destructors must not throw. An array belongs to one thread at a time.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>

#include "vorel/core/Protocol.h"

namespace vorel {

/// An owning, growable sequence of elements.
template <class T>
class Array {
public:
    /// No elements, no storage.
    Array() noexcept = default;

    /// A deep copy with storage of its own, as large as the count; an empty array has none.
    /// \throws MemoryException when the storage or an element's copy cannot be had.
    Array(const Array& other) : Array() {
        if (other.m_count != 0) {
            fill(other.m_count, other.m_items, other.m_count);
        }
    }

    /// Takes over the storage; `other` is left empty.
    Array(Array&& other) noexcept { swap(other); }

    /// Releases the elements and the storage under the rules of a destructor that may throw.
    ~Array() noexcept(false) {
        detail::guardedDestructor(L"Array", [this] { release(); });
    }

    /// Replaces the elements by deep copies, with the strong guarantee.
    /// \throws MemoryException and leaves the array as it was.
    Array& operator=(const Array& other) {
        if (this != &other) {
            Array copy(other);
            swap(copy);
        }
        return *this;
    }

    /// Takes over the storage; `other` is left empty.
    Array& operator=(Array&& other) noexcept {
        Array taken(std::move(other));
        swap(taken);
        return *this;
    }

    /// The element at `index`, counted from 0.
    /// \throws InvalidIndexException when `index` is not below the count.
    T& operator[](unsigned int index) { return m_items[checked(index)]; }
    const T& operator[](unsigned int index) const { return m_items[checked(index)]; }

    /// Number of elements in use, and number of slots in the storage.
    [[nodiscard]] unsigned int size() const noexcept { return m_count; }
    [[nodiscard]] bool empty() const noexcept { return m_count == 0; }
    [[nodiscard]] unsigned int allocated() const noexcept { return m_allocated; }

    /// Adds a copy of `item`, or `item` itself; it may be an element of this array.
    /// \throws MemoryException and leaves the array as it was.
    void append(const T& item) { appendOne(item); }
    void append(T&& item) { appendOne(std::move(item)); }

    /// Adds `count` plain values, which may lie in this array.
    /// \throws MemoryException and leaves the array as it was.
    void append(const T* items, unsigned int count) requires std::is_trivially_copyable_v<T> {
        const unsigned int after = grownCount(count);
        if (after > m_allocated) {
            Array grown = grownTo(after, false);
            std::copy_n(items, count, grown.m_items + m_count);
            swap(grown);
        } else if (count != 0) {
            std::memmove(m_items + m_count, items, std::size_t{count} * sizeof(T));
        }
        m_count = after;
    }

    /// Takes the last element out of the array and returns it.
    /// \throws InvalidIndexException when there is none.
    T removeLast() {
        T last = std::move(m_items[checked(m_count - 1)]);
        --m_count;
        reset(m_items[m_count]);
        return last;
    }

    /// Sets the number of elements: new ones are value-initialised, slots given up are reset.
    /// \throws MemoryException and leaves the array as it was.
    void setCount(unsigned int count) {
        reserve(count);
        for (unsigned int slot = count; slot < m_count; ++slot) {
            reset(m_items[slot]);
        }
        m_count = count;
    }

    /// No elements; the storage is kept.
    void clear() { setCount(0); }

    /// The elements in a row; null while nothing was ever reserved.
    T* data() noexcept { return m_items; }
    [[nodiscard]] const T* data() const noexcept { return m_items; }
    T* begin() noexcept { return m_items; }
    [[nodiscard]] const T* begin() const noexcept { return m_items; }
    T* end() noexcept { return m_items + m_count; }
    [[nodiscard]] const T* end() const noexcept { return m_items + m_count; }

    /// Makes room for at least `count` elements; storage never shrinks. With `exact` it has just that many slots,
    /// otherwise it doubles from 5 upwards, for appending in amortised constant time.
    /// \throws MemoryException(slots, element size) and leaves the array as it was when the storage, or the copy of an
    ///         element, cannot be had.
    void reserve(unsigned int count, bool exact = false) {
        if (count > m_allocated) {
            Array grown = grownTo(count, exact);
            swap(grown);
        }
    }

private:
    static constexpr unsigned int kFirstSlots = 5;
    static constexpr unsigned int kMostSlots = 0xFFFFFFFFu;

    template <class Item>
    void appendOne(Item&& item) {
        if (m_count < m_allocated) {
            m_items[m_count] = std::forward<Item>(item);
            ++m_count;
        } else {
            Array grown = grownTo(grownCount(1), false);
            grown.m_items[m_count] = std::forward<Item>(item);  // the storage that it may lie in is still there
            ++grown.m_count;
            swap(grown);
        }
    }

    [[nodiscard]] unsigned int doubledUpTo(unsigned int count) const noexcept {
        unsigned int slots = m_allocated > kFirstSlots ? m_allocated : kFirstSlots;
        while (slots < count) {
            slots = slots > kMostSlots / 2 ? kMostSlots : slots * 2;
        }
        return slots;
    }

    [[nodiscard]] unsigned int grownCount(unsigned int more) const {
        if (more > kMostSlots - m_count) {
            detail::throwMemory(kMostSlots, sizeof(T));
        }
        return m_count + more;
    }

    [[nodiscard]] unsigned int checked(unsigned int index) const {
        if (index >= m_count) {
            detail::throwInvalidIndex(index, m_count);
        }
        return index;
    }

    /// The elements in storage of their own with at least `count` slots.
    [[nodiscard]] Array grownTo(unsigned int count, bool exact) const {
        Array grown;
        grown.fill(exact ? count : doubledUpTo(count), m_items, m_count);
        return grown;
    }

    /// Gives an array that has no storage yet `slots` slots, the first of them copies of `items`, the others
    /// value-initialised. What was copied is released with the array when a later copy fails.
    void fill(unsigned int slots, const T* items, unsigned int count) {
        m_items = static_cast<T*>(std::malloc(std::size_t{slots} * sizeof(T)));
        if (!m_items) {
            detail::throwMemory(slots, sizeof(T));
        }
        if constexpr (std::is_trivially_copyable_v<T>) {
            std::uninitialized_copy_n(items, count, m_items);
            std::uninitialized_value_construct_n(m_items + count, slots - count);
            m_allocated = slots;
        } else {
            static_assert(std::is_nothrow_default_constructible_v<T> && std::is_nothrow_destructible_v<T>);
            std::uninitialized_value_construct_n(m_items, slots);
            m_allocated = slots;
            std::copy_n(items, count, m_items);
        }
        m_count = count;
    }

    static void reset(T& slot) { slot = T(); }

    void release() {
        std::destroy_n(m_items, m_allocated);
        std::free(m_items);
    }

    void swap(Array& other) noexcept {
        std::swap(m_items, other.m_items);
        std::swap(m_count, other.m_count);
        std::swap(m_allocated, other.m_allocated);
    }

    T* m_items = nullptr;
    unsigned int m_count = 0;
    unsigned int m_allocated = 0;
};

}  // namespace vorel
