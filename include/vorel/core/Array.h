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
/// Elements that are not plain values (strings) need a default state that cannot fail, and a copy assignment; growth
/// gives each its own deep copy in the new storage. Storage never shrinks. An array belongs to one thread at a time.
///
/// Elements may be arrays, exceptions, and other types whose destructor may throw. An operation that gives elements up
/// releases all of them, also after the destructor of one has failed. The first failure leaves the operation once its
/// work is done; later ones are recorded in the log as "Array::~Array: … suppressed", and swallowed.
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
    Array(const Array& other) : Array() { fill(other.m_count, other.m_items, other.m_count); }

    /// Takes over the storage; `other` is left empty.
    Array(Array&& other) noexcept { swap(other); }

    /// Releases the elements and the storage under the rules of a destructor that may throw.
    /// \throws the first failure of an element's destructor, with the record "Array::~Array: Vorel exception rethrown",
    ///         or Exception "Array::~Array: Severe error thrown" for one that is not an Exception.
    ~Array() noexcept(false) {
        detail::guardedDestructor(L"Array", [this] { release(); });
    }

    /// Replaces the elements by deep copies. The storage is kept when it is large enough, and otherwise grows to the
    /// count of `other`.
    /// \throws MemoryException and leaves the array as it was.
    Array& operator=(const Array& other) {
        if (this == &other) {
            return *this;
        }
        if (other.m_count > m_allocated || !std::is_nothrow_move_assignable_v<T>) {
            // Elements that may fail to be moved stay where they are copied to.
            Array copy;
            copy.fill(std::max(other.m_count, m_allocated), other.m_items, other.m_count);
            swap(copy);
        } else if constexpr (std::is_trivially_copyable_v<T>) {
            std::copy_n(other.m_items, other.m_count, m_items);
            setCountWithin(other.m_count);
        } else {
            Array copy(other);
            moveElementsFrom(copy);
        }
        return *this;
    }

    /// Takes over the elements: with their storage, unless that has fewer slots than the array has. `other` is left
    /// empty, without storage.
    /// \throws the first failure of an element's destructor.
    // NOLINTNEXTLINE(bugprone-exception-escape,performance-noexcept-move-constructor): it throws what elements throw
    Array& operator=(Array&& other) noexcept(kMovesCannotFail) {
        Array taken(std::move(other));
        if (taken.m_allocated < m_allocated) {
            moveElementsFrom(taken);
        } else {
            swap(taken);
        }
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
        setCountWithin(m_count - 1);
        return last;
    }

    /// Sets the number of elements: new ones are value-initialised, slots given up are reset.
    /// \throws MemoryException and leaves the array as it was.
    void setCount(unsigned int count) {
        if (count > m_allocated) {
            Array grown = grownTo(count, false);
            grown.m_count = count;
            swap(grown);
        } else {
            setCountWithin(count);
        }
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

    // The second trait is not asked for where the first is false: an element that contains an array of its own type
    // would ask for itself.
    static constexpr bool kMovesCannotFail =
        std::conjunction_v<std::is_nothrow_destructible<T>, std::is_nothrow_move_assignable<T>>;

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
        if (slots == 0) {
            return;
        }
        m_items = static_cast<T*>(std::malloc(std::size_t{slots} * sizeof(T)));
        if (!m_items) {
            detail::throwMemory(slots, sizeof(T));
        }
        if constexpr (std::is_trivially_copyable_v<T>) {
            std::uninitialized_copy_n(items, count, m_items);
            std::uninitialized_value_construct_n(m_items + count, slots - count);
            m_allocated = slots;
        } else {
            // The standard library's trait would ask for a destructor that cannot fail as well.
            static_assert(noexcept(::new (std::declval<void*>()) T()), "an element's default state must not fail");
            for (unsigned int slot = 0; slot < slots; ++slot) {
                std::construct_at(m_items + slot);
            }
            m_allocated = slots;
            std::copy_n(items, count, m_items);
        }
        m_count = count;
    }

    /// Replaces the elements by those of `other`, for which there is storage.
    void moveElementsFrom(Array& other) {
        m_count = std::max(m_count, other.m_count);
        std::move(other.begin(), other.end(), m_items);
        setCountWithin(other.m_count);
    }

    /// Sets a count that the storage has slots for: those given up become value-initialised again.
    void setCountWithin(unsigned int count) {
        const unsigned int end = std::exchange(m_count, count);
        releaseEach(count, end, [](T* item) {
            const std::unique_ptr<T, Renew> renewed(item);
            std::destroy_at(item);
        });
    }

    /// Value-initialises a slot at the end of a block, also after the destructor of its element has failed.
    struct Renew {
        void operator()(T* slot) const { std::construct_at(slot); }
    };

    void release() {
        const std::unique_ptr<T, decltype(&std::free)> storage(m_items, &std::free);
        releaseEach(0, m_allocated, [](T* item) { std::destroy_at(item); });
    }

    /// Calls `release` for each slot from `slot` to before `end`, also after one has failed.
    template <class Release>
    void releaseEach(unsigned int slot, unsigned int end, Release release) {
        if constexpr (std::is_nothrow_destructible_v<T>) {
            for (; slot < end; ++slot) {
                release(m_items + slot);
            }
        } else {
            detail::releaseAll(L"Array", [&] {
                if (slot >= end) {
                    return false;
                }
                release(m_items + slot++);
                return true;
            });
        }
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
