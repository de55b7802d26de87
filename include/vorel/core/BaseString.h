/// \file
/// `BaseString<T>`: the owning, null-terminated, growable string of the interface, for `char` and `wchar_t`.
///
///     vorel::BaseString<wchar_t> name(L"Parser");
///     name += L"::run";
///     name.format(L"%ls, attempt %d", name.c_str(), 3);   // an argument may point into `name` itself
///
/// The buffer comes from the runtime's `malloc` and is released by `free`, so modules that share the runtime may pass
/// it to each other. The class is standard-layout, so its layout is the same with every compiler. Lengths and
/// capacities are in code units (`char`, or UTF-16 units of `wchar_t`).
///
/// Members marked `VOREL_API` are compiled into the library, for both widths. The short members are inline, so each
/// program compiles its own copy. The library also exports the inline members that are marked `VOREL_API_INLINE`.
///
/// Several threads may read a string at the same time. While a thread changes a string, no other thread may use it.
#pragma once

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string_view>
#include <utility>

#include "vorel/Attributes.h"
#include "vorel/Export.h"
#include "vorel/core/Protocol.h"

namespace vorel {

namespace detail {

template <class T>
struct StringAccess;

/// Copies `bytes` bytes as two words, the first and the last, which may overlap. `bytes` must be at least the size of
/// one word and at most the size of two.
template <class Word>
void moveEnds(void* to, const void* from, std::size_t bytes) noexcept {
    Word first;
    Word last;
    std::memcpy(&first, from, sizeof(Word));
    std::memcpy(&last, static_cast<const char*>(from) + bytes - sizeof(Word), sizeof(Word));
    std::memcpy(to, &first, sizeof(Word));
    std::memcpy(static_cast<char*>(to) + bytes - sizeof(Word), &last, sizeof(Word));
}

/// Copies `count` units, at least one; the ranges may overlap. Short texts are copied inline, because a call of the
/// runtime's function takes longer than the copy.
template <class T>
void moveUnits(T* to, const T* from, std::size_t count) noexcept {
    struct Block {
        std::uint64_t words[2];
    };
    struct Blocks {
        Block first;
        Block second;
    };
    const std::size_t bytes = count * sizeof(T);
    if (bytes > 2 * sizeof(Blocks)) {
        std::memmove(to, from, bytes);
    } else if (bytes > sizeof(Blocks)) {
        moveEnds<Blocks>(to, from, bytes);
    } else if (bytes > sizeof(Block)) {
        moveEnds<Block>(to, from, bytes);
    } else if (bytes > sizeof(std::uint64_t)) {
        moveEnds<std::uint64_t>(to, from, bytes);
    } else if (bytes > sizeof(std::uint32_t)) {
        moveEnds<std::uint32_t>(to, from, bytes);
    } else if (bytes > 1) {
        moveEnds<std::uint16_t>(to, from, bytes);
    } else {
        *to = *from;
    }
}

}  // namespace detail

/// An owning, null-terminated, growable string.
template <class T>
class BaseString {
public:
    /// The value of the length field while the length is unknown. The text then ends at its first zero.
    static constexpr unsigned int kUnknownLength = 0xFFFFFFFFu;

    /// The empty string. Allocates nothing.
    BaseString() noexcept = default;

    /// A copy of the null-terminated `text`; null gives the empty string.
    /// \throws MemoryException if the buffer cannot be allocated.
    // NOLINTNEXTLINE(google-explicit-constructor): text converts to a string implicitly by design
    VOREL_API BaseString(const T* text);

    /// A copy of the first `length` units of `text`; null gives the empty string.
    /// \throws MemoryException if the buffer cannot be allocated.
    VOREL_API BaseString(const T* text, unsigned int length);

    /// A copy of `text`.
    /// \throws MemoryException if the buffer cannot be allocated.
    explicit BaseString(std::basic_string_view<T> text) : BaseString(text.data(), countOf(text)) {}

    /// A copy with its own buffer. Allocates nothing for an empty string.
    /// \throws MemoryException if the buffer cannot be allocated.
    VOREL_API BaseString(const BaseString& other);

    /// Takes over the buffer of `other`, which becomes an empty string without a buffer.
    VOREL_API_INLINE BaseString(BaseString&& other) noexcept
        : m_data(std::exchange(other.m_data, nullptr)),
          m_capacity(std::exchange(other.m_capacity, 0)),
          m_length(std::exchange(other.m_length, kUnknownLength)) {}

    VOREL_API_INLINE ~BaseString() { release(); }

    /// Replaces the content. Null empties the string and keeps its buffer. `text` may point into the string itself.
    /// \throws MemoryException if the buffer cannot be allocated; the string is unchanged.
    VOREL_API BaseString& operator=(const T* text);
    VOREL_API BaseString& operator=(std::basic_string_view<T> text);
    VOREL_API BaseString& operator=(const BaseString& other);
    VOREL_API_INLINE BaseString& operator=(BaseString&& other) noexcept {
        if (this != &other) {
            release();
            m_data = std::exchange(other.m_data, nullptr);
            m_capacity = std::exchange(other.m_capacity, 0);
            m_length = std::exchange(other.m_length, kUnknownLength);
        }
        return *this;
    }

    /// The buffer; null if the string has none.
    const T* c_str() const noexcept { return m_data; }
    T* data() noexcept { return m_data; }

    /// The text as a view; its pointer is never null.
    std::basic_string_view<T> view() const noexcept {
        static constexpr T kEmpty[1] = {};
        return {m_data ? m_data : kEmpty, length()};
    }

    // NOLINTNEXTLINE(google-explicit-constructor): a string converts to a view implicitly by design
    operator std::basic_string_view<T>() const noexcept { return view(); }

    /// The number of units before the terminator; 0 if the string has no buffer. If the length of a text in the buffer
    /// is unknown, the units are counted, and the length is stored.
    VOREL_API_INLINE unsigned int length() const noexcept {
        // Several threads may count the same text; all store the same length.
        const unsigned int known = std::atomic_ref<unsigned int>(m_length).load(std::memory_order_relaxed);
        if (known != kUnknownLength) [[likely]] {
            return known;
        }
        return countLength();
    }

    /// Whether the length is 0.
    bool empty() const noexcept { return length() == 0; }

    /// The size of the buffer in units, including the terminator; 0 if the string has no buffer.
    unsigned int capacity() const noexcept { return m_capacity; }

    /// Appends `text`: up to its terminator, or `count` units of it. Null appends nothing. The argument may point into
    /// the string itself.
    /// \throws MemoryException if the string cannot grow; the string is unchanged.
    VOREL_API_INLINE BaseString& append(const T* text) { return append(viewOf(text)); }
    VOREL_API_INLINE BaseString& append(const T* text, unsigned int count) {
        const unsigned int before = m_length;
        if (text && count != 0 && fits(before, count)) [[likely]] {
            detail::moveUnits(m_data + before, text, count);
            setLength(before + count);
            return *this;
        }
        return appendSlowly(text, count);
    }
    VOREL_API_INLINE BaseString& append(const BaseString& text) { return append(text.m_data, text.length()); }
    BaseString& append(std::basic_string_view<T> text) { return append(text.data(), countOf(text)); }
    VOREL_API_INLINE BaseString& append(T unit) {
        const unsigned int before = m_length;
        if (fits(before, 1)) [[likely]] {
            m_data[before] = unit;
            setLength(before + 1);
            return *this;
        }
        return appendSlowly(&unit, 1);
    }
    BaseString& operator+=(const T* text) { return append(text); }
    BaseString& operator+=(const BaseString& text) { return append(text); }
    BaseString& operator+=(std::basic_string_view<T> text) { return append(text); }
    BaseString& operator+=(T unit) { return append(unit); }

    /// Empties the string and keeps the buffer.
    VOREL_API_INLINE void clear() noexcept {
        if (m_data) {
            setLength(0);
        }
    }

    /// Provides space for `count` units and a terminator, writes a terminator at index `count`, and returns the buffer.
    /// Every growth of the string follows these rules.
    ///
    /// - If `count` is 0, the string is emptied and nothing is allocated. The result is null if the string has no
    ///   buffer.
    /// - If the buffer is large enough, a length above `count` becomes `count`; so does an unknown length.
    /// - Otherwise a new buffer is allocated. Its capacity is a power of two, at least 16, up to 1 Mi units, and a
    ///   multiple of 1 Mi above that. With `discard` false, the new buffer holds the old text and a known length is
    ///   kept. With `discard` true, its content is undefined and the length is unknown.
    ///
    /// \throws MemoryException(capacity, unit size) if the buffer cannot be allocated or its size exceeds the limits of
    ///         the string; the string is unchanged.
    VOREL_API T* reserve(unsigned int count, bool discard = false);

    /// Replaces the content by the printf-style rendering of `fmt` and returns the string. A null `fmt` empties the
    /// string and releases its buffer. In a wide format `%s` takes wide text, as it does by default in the runtime's
    /// print functions. In formats of both widths, `%hs` takes narrow text and `%ls` takes wide text. Arguments may
    /// point into the string itself.
    /// \throws Exception "Unable to format: %ls (%hs)" (for a narrow format, "Unable to format: %hs (%hs)") with the
    ///         format and the runtime's error text if the format cannot be rendered; MemoryException if the string
    ///         cannot grow. The string is then empty, unless the format or an argument points into it. In that case it
    ///         keeps its text.
    VOREL_API BaseString& format(const T* fmt, ...);

    /// `format` with an argument list.
    VOREL_API BaseString& vformat(const T* fmt, va_list args);

    /// Compares unit by unit; units are unsigned. A null text equals the empty string.
    friend bool operator==(const BaseString& a, const BaseString& b) noexcept { return a.view() == b.view(); }
    friend bool operator==(const BaseString& a, const T* b) noexcept { return a.view() == viewOf(b); }
    friend bool operator<(const BaseString& a, const BaseString& b) noexcept { return a.view() < b.view(); }
    friend bool operator<(const BaseString& a, const T* b) noexcept { return a.view() < viewOf(b); }
    friend bool operator<(const T* a, const BaseString& b) noexcept { return viewOf(a) < b.view(); }

private:
    friend struct detail::StringAccess<T>;

    static std::basic_string_view<T> viewOf(const T* text) noexcept {
        return text ? std::basic_string_view<T>(text) : std::basic_string_view<T>();
    }

    /// The length of `text`, or `kUnknownLength` for a text that is too long for a string.
    static unsigned int countOf(std::basic_string_view<T> text) noexcept {
        return text.size() < kUnknownLength ? static_cast<unsigned int>(text.size()) : kUnknownLength;
    }

    /// Whether `address` lies in the buffer. Such an address becomes invalid when the string grows.
    bool holds(const void* address) const noexcept {
        return reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(m_data) <
               std::uintptr_t{m_capacity} * sizeof(T);
    }

    /// Whether the buffer has space for `count` units and a terminator after the first `before` units. If `before` is
    /// `kUnknownLength`, the result is false, because no buffer is that large.
    bool fits(unsigned int before, unsigned int count) const noexcept {
        return std::uint64_t{before} + count < m_capacity;
    }

    /// Sets the length of a text in the buffer and writes the terminator.
    void setLength(unsigned int length) noexcept {
        m_data[length] = 0;  // NOLINT(clang-analyzer-core.NullDereference): the caller has a buffer
        m_length = length;
    }

    unsigned int countLength() const noexcept {
        if (!m_data) {
            return 0;
        }
        const unsigned int length = countOf(viewOf(m_data));
        std::atomic_ref<unsigned int>(m_length).store(length, std::memory_order_relaxed);
        return length;
    }

    /// The cases of `append` that are not inline: the length is unknown, the string must grow, or nothing is appended
    /// because `text` is null or `count` is 0.
    BaseString& appendSlowly(const T* text, unsigned int count) {
        if (!text || count == 0) {
            return *this;
        }
        const unsigned int before = length();
        if (count > kUnknownLength - before) {
            detail::throwMemory(kUnknownLength, sizeof(T));
        }
        if (!fits(before, count)) {
            const std::ptrdiff_t offset = holds(text) ? text - m_data : -1;
            reserve(before + count, false);
            text = offset >= 0 ? m_data + offset : text;
        }
        detail::moveUnits(m_data + before, text, count);
        setLength(before + count);
        return *this;
    }

    void release() noexcept {
        if (m_data) {
            std::free(m_data);
        }
    }

    T* m_data = nullptr;
    unsigned int m_capacity = 0;
    mutable unsigned int m_length = kUnknownLength;
};

// Each width is declared separately, because the compiler checks the arguments of the narrow form only.
/// \cond
template <>
VOREL_PRINTF(2, 3)
VOREL_API BaseString<char>& BaseString<char>::format(const char* fmt, ...);
template <>
VOREL_API BaseString<wchar_t>& BaseString<wchar_t>::format(const wchar_t* fmt, ...);
/// \endcond

}  // namespace vorel

/// A string has the same hash as a view of the same text.
template <class T>
struct std::hash<vorel::BaseString<T>> {
    std::size_t operator()(const vorel::BaseString<T>& text) const noexcept {
        return std::hash<std::basic_string_view<T>>()(text.view());
    }
};
