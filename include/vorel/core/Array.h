/// \file
/// `Array<T>`: the owning, growable array for all lists of values in the interface.
///
///     vorel::Array values{1, 2, 3};   // an Array<int>
///     values.append(4);
///     values[0] += 1;      // a bad index throws InvalidIndexException
///
/// The storage comes from the runtime's `malloc` and is released by `free`. The class is standard-layout, so its layout
/// is the same with every compiler. Every slot from the count up to the capacity holds a value-initialised element
/// (zero, or an empty string), so a larger count never exposes garbage.
///
/// Elements that are not trivially copyable, such as strings, need a default constructor that cannot fail, and a copy
/// assignment. When the array grows, it copies each element into the new storage. Storage never shrinks. An array may
/// be used by one thread at a time.
///
/// Elements may be arrays, exceptions, and other types whose destructor may throw. An operation that removes elements,
/// or copies them into new storage, releases all old elements, even if one destructor fails. It then throws the first
/// failure. Later failures are recorded in the log as "Array::~Array: ... suppressed" and swallowed.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <ranges>
#include <type_traits>
#include <utility>

#include "vorel/core/Protocol.h"

namespace vorel {

template <class T>
class Array;

namespace detail {

template <class T>
struct ArrayAccess;

/// A range whose elements can be converted to `T`. Excludes `Array<T>` itself, which has a copy and a move constructor.
template <class Range, class T>
concept ArraySource = !std::is_base_of_v<Array<T>, std::remove_cvref_t<Range>> && std::ranges::input_range<Range> &&
                      std::is_constructible_v<T, std::ranges::range_reference_t<Range>>;

}  // namespace detail

/// An owning, growable sequence of elements.
template <class T>
class Array {
public:
    /// \name Types for algorithms of the standard library
    /// \{
    using value_type = T;
    using size_type = unsigned int;
    using difference_type = std::ptrdiff_t;
    using reference = T&;
    using const_reference = const T&;
    using pointer = T*;
    using const_pointer = const T*;
    using iterator = T*;
    using const_iterator = const T*;
    /// \}

    /// Creates an empty array without storage.
    Array() noexcept = default;

    /// Creates an array of copies of `items`, in their order. The array has exactly as many slots as elements; for an
    /// empty list it has no storage. A number in braces is an element, not a count: `Array<int>{3}` has one element, 3.
    ///
    ///     vorel::Array<vorel::BaseString<char>> names{"left", "right"};   // 2 elements
    ///
    /// \throws MemoryException if the storage or the copy of an element cannot be allocated.
    Array(std::initializer_list<T> items) : Array() {
        const unsigned int count = countOf(items.size());
        fill(count, items.begin(), count);
    }

    /// Creates an array of the elements of `range`, in their order. The range may be a container or a view of the
    /// standard library, or a built-in array. Each element is converted by `T(element)`. The zero at the end of a
    /// string literal is an element too. If the size of the range is known in advance, the array has exactly that
    /// number of slots.
    ///
    ///     std::vector<std::string> lines = ...;
    ///     vorel::Array<vorel::BaseString<char>> copies(lines);
    ///
    /// \throws MemoryException if the storage or an element cannot be allocated; the exceptions of the range and of the
    ///         conversion.
    template <detail::ArraySource<T> Range>
    // NOLINTNEXTLINE(bugprone-forwarding-reference-overload): the constraint excludes arrays of this class
    explicit Array(Range&& range) : Array() {
        if constexpr (std::ranges::sized_range<Range>) {
            const unsigned int count = countOf(std::ranges::size(range));
            if constexpr (std::ranges::contiguous_range<Range> &&
                          std::is_same_v<std::ranges::range_value_t<Range>, T>) {
                fill(count, std::ranges::data(range), count);
                return;
            }
            reserve(count, true);
        }
        for (auto&& element : range) {
            append(T(std::forward<decltype(element)>(element)));
        }
    }

    /// A deep copy. It has exactly as many slots as elements; the copy of an empty array has no storage.
    /// \throws MemoryException if the storage or the copy of an element cannot be allocated.
    Array(const Array& other) : Array() { fill(other.m_count, other.m_items, other.m_count); }

    /// Takes over the storage of `other`, which becomes empty.
    Array(Array&& other) noexcept { swap(other); }

    /// Releases the elements and the storage. If an element's destructor fails while another exception unwinds the
    /// stack, the failure is recorded and swallowed.
    /// \throws Exception or a derived class: the first failure of an element's destructor, with the record
    ///         "Array::~Array: Vorel exception rethrown"; or Exception "Array::~Array: Severe error thrown" if the
    ///         failure is not an Exception.
    ~Array() noexcept(false) {
        detail::runDestructor(L"Array", [this] { release(); });
    }

    /// Replaces the elements by deep copies. The number of slots stays the same if it is large enough; otherwise it
    /// becomes the count of `other`.
    /// \throws MemoryException; the array is unchanged.
    Array& operator=(const Array& other) {
        if (this == &other) {
            return *this;
        }
        if (other.m_count > m_allocated || !std::is_nothrow_move_assignable_v<T>) {
            // If the move of an element may fail, this array takes over the copy's storage instead of moving elements.
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

    /// Moves the elements of `other` into this array. The storage of `other` moves too, unless it has fewer slots than
    /// this array. `other` becomes empty and has no storage.
    /// \throws Exception or any other class: the failure of an element's assignment, or the first failure of an
    ///         element's destructor.
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
    /// \throws InvalidIndexException if `index` is not below the count.
    T& operator[](unsigned int index) { return m_items[checked(index)]; }
    const T& operator[](unsigned int index) const { return m_items[checked(index)]; }

    /// The number of elements, whether it is 0, and the number of slots in the storage.
    [[nodiscard]] unsigned int size() const noexcept { return m_count; }
    [[nodiscard]] bool empty() const noexcept { return m_count == 0; }
    [[nodiscard]] unsigned int allocated() const noexcept { return m_allocated; }

    /// Appends a copy of `item`, or moves `item` to the end. `item` may be an element of this array.
    /// \throws MemoryException; the array is unchanged.
    void append(const T& item) { appendOne(item); }
    void append(T&& item) { appendOne(std::move(item)); }

    /// Appends `count` trivially copyable values, which may be elements of this array.
    /// \throws MemoryException; the array is unchanged.
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

    /// `append` under the name that the standard library uses.
    void push_back(const T& item) { append(item); }
    void push_back(T&& item) { append(std::move(item)); }

    /// Appends `T(arguments...)` and returns the new element. The arguments may refer to elements of this array.
    /// \throws MemoryException, or what the constructor throws; the array is unchanged.
    template <class... Arguments>
    requires std::is_constructible_v<T, Arguments...> T& emplace_back(Arguments&&... arguments) {
        append(T(std::forward<Arguments>(arguments)...));
        return m_items[m_count - 1];
    }

    /// Removes the last element and returns it.
    /// \throws InvalidIndexException if the array is empty.
    T removeLast() {
        T last = std::move(m_items[checked(m_count - 1)]);
        setCountWithin(m_count - 1);
        return last;
    }

    /// Sets the number of elements. New elements are value-initialised, and so are the slots of removed elements.
    /// \throws MemoryException; the array is unchanged.
    void setCount(unsigned int count) {
        if (count > m_allocated) {
            Array grown = grownTo(count, false);
            grown.m_count = count;
            swap(grown);
        } else {
            setCountWithin(count);
        }
    }

    /// Removes all elements and keeps the storage.
    void clear() { setCount(0); }

    /// A pointer to the elements, which are contiguous; null if the array has no storage.
    T* data() noexcept { return m_items; }
    [[nodiscard]] const T* data() const noexcept { return m_items; }
    T* begin() noexcept { return m_items; }
    [[nodiscard]] const T* begin() const noexcept { return m_items; }
    T* end() noexcept { return m_items + m_count; }
    [[nodiscard]] const T* end() const noexcept { return m_items + m_count; }

    /// Provides slots for at least `count` elements; storage never shrinks. If the array must grow and `exact` is true,
    /// it then has exactly `count` slots. If `exact` is false, the number of slots (5 if there are fewer) is doubled
    /// until it is large enough. So an append takes amortised constant time.
    /// \throws MemoryException(slots, element size) if the storage cannot be allocated; MemoryException if the copy of
    ///         an element cannot be allocated. In both cases the array is unchanged.
    void reserve(unsigned int count, bool exact = false) {
        if (count > m_allocated) {
            Array grown = grownTo(count, exact);
            swap(grown);
        }
    }

private:
    friend struct detail::ArrayAccess<T>;

    static constexpr unsigned int kMinSlots = 5;
    static constexpr unsigned int kMaxSlots = 0xFFFFFFFFu;

    /// If true, all bytes of a value-initialised element are 0.
    static constexpr bool kIsZeroInitially = std::is_arithmetic_v<T> || std::is_pointer_v<T>;

    // `conjunction` evaluates the second trait only if the first is true. If both were always evaluated, the trait of a
    // type that contains an array of itself would depend on itself.
    static constexpr bool kMovesCannotFail =
        std::conjunction_v<std::is_nothrow_destructible<T>, std::is_nothrow_move_assignable<T>>;

    template <class Item>
    void appendOne(Item&& item) {
        // The count is read once, because the compiler must assume that writing the element changes `m_count`.
        const unsigned int count = m_count;
        if (count < m_allocated) [[likely]] {
            m_items[count] = std::forward<Item>(item);
            m_count = count + 1;
        } else {
            appendGrowing(std::forward<Item>(item));
        }
    }

    template <class Item>
    void appendGrowing(Item&& item) {
        Array grown = grownTo(grownCount(1), false);
        grown.m_items[m_count] = std::forward<Item>(item);  // `item` may be in the old storage, which still exists
        ++grown.m_count;
        swap(grown);
    }

    [[nodiscard]] unsigned int doubledUpTo(unsigned int count) const noexcept {
        unsigned int slots = m_allocated > kMinSlots ? m_allocated : kMinSlots;
        while (slots < count) {
            slots = slots > kMaxSlots / 2 ? kMaxSlots : slots * 2;
        }
        return slots;
    }

    /// `count` as a number of slots. Throws MemoryException for more than `kMaxSlots`.
    [[nodiscard]] static unsigned int countOf(std::size_t count) {
        if (count > kMaxSlots) {
            detail::throwMemory(kMaxSlots, sizeof(T));
        }
        return static_cast<unsigned int>(count);
    }

    [[nodiscard]] unsigned int grownCount(unsigned int more) const {
        if (more > kMaxSlots - m_count) {
            detail::throwMemory(kMaxSlots, sizeof(T));
        }
        return m_count + more;
    }

    [[nodiscard]] unsigned int checked(unsigned int index) const {
        if (index >= m_count) {
            detail::throwInvalidIndex(index, m_count);
        }
        return index;
    }

    /// A copy of the array with at least `count` slots.
    [[nodiscard]] Array grownTo(unsigned int count, bool exact) const {
        Array grown;
        grown.fill(exact ? count : doubledUpTo(count), m_items, m_count);
        return grown;
    }

    /// Allocates `slots` slots for an array without storage. The first `count` slots become copies of `items`, and the
    /// other slots are value-initialised. If a copy fails, the destructor of the array releases all slots.
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
            // The trait `is_nothrow_default_constructible` would also require a destructor that does not throw.
            static_assert(noexcept(::new (std::declval<void*>()) T()), "an element's default state must not fail");
            for (unsigned int slot = 0; slot < slots; ++slot) {
                std::construct_at(m_items + slot);
            }
            m_allocated = slots;
            std::copy_n(items, count, m_items);
        }
        m_count = count;
    }

    /// Moves the elements of `other` into this array and removes the old elements. The storage must be large enough.
    void moveElementsFrom(Array& other) {
        m_count = std::max(m_count, other.m_count);
        std::move(other.begin(), other.end(), m_items);
        setCountWithin(other.m_count);
    }

    /// Sets a count that is at most the number of slots. The slots of removed elements become value-initialised.
    void setCountWithin(unsigned int count) {
        const unsigned int end = std::exchange(m_count, count);
        if constexpr (kIsZeroInitially) {
            if (count < end) {
                std::memset(static_cast<void*>(m_items + count), 0, std::size_t{end - count} * sizeof(T));
            }
        } else {
            releaseEach(count, end, [](T* item) {
                const std::unique_ptr<T, Renew> renewed(item);
                std::destroy_at(item);
            });
        }
    }

    /// Value-initialises a slot at the end of a scope, even if the destructor of the slot's element fails.
    struct Renew {
        void operator()(T* slot) const { std::construct_at(slot); }
    };

    void release() {
        const std::unique_ptr<T, decltype(&std::free)> storage(m_items, &std::free);
        releaseEach(0, m_allocated, [](T* item) { std::destroy_at(item); });
    }

    /// Calls `release` for each slot in [slot, end), even if a call fails.
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

/// `Array(range)` deduces the type of its elements from the range.
template <std::ranges::input_range Range>
Array(Range&&) -> Array<std::ranges::range_value_t<Range>>;

}  // namespace vorel
