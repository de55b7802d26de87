/// \file
/// `BaseString<T>`: the owning, null-terminated, growable string of the whole interface, for `char` and `wchar_t`.
///
///     vorel::BaseString<wchar_t> name(L"Parser");
///     name += L"::run";
///     name.format(L"%ls, attempt %d", name.c_str(), 3);   // an argument may point into the string itself
///
/// The buffer comes from the runtime's `malloc` and goes back through `free`, so it may be handed between modules that
/// share the runtime. The three fields are standard-layout: another compiler's caller sees the same bytes.
/// Lengths and capacities are counted in code units (`char`, or UTF-16 units of `wchar_t`).
///
/// What is marked `VOREL_API` lives in the library, for both widths; the short members are compiled into their callers.
///
/// A string belongs to one thread at a time; several threads may read one that nobody changes.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <functional>
#include <string_view>

#include "vorel/Attributes.h"
#include "vorel/Export.h"

namespace vorel {

namespace detail {
template <class T>
struct StringAccess;
}

/// An owning, null-terminated, growable string.
template <class T>
class BaseString {
public:
    /// The value of the length field that stands for "not known: count up to the terminator".
    static constexpr unsigned int kUnknownLength = 0xFFFFFFFFu;

    /// The empty string; nothing is allocated.
    BaseString() noexcept = default;

    /// A copy of the null-terminated `text`; null gives the empty string.
    /// \throws MemoryException when the buffer cannot be had.
    // NOLINTNEXTLINE(google-explicit-constructor): text is meant to become a string wherever one is asked for
    VOREL_API BaseString(const T* text);

    /// A copy of the first `length` units of `text`; null gives the empty string.
    /// \throws MemoryException when the buffer cannot be had.
    VOREL_API BaseString(const T* text, unsigned int length);

    /// A copy of `text`.
    /// \throws MemoryException when the buffer cannot be had.
    explicit BaseString(std::basic_string_view<T> text) : BaseString(text.data(), countOf(text)) {}

    /// A copy with a buffer of its own; nothing is allocated for an empty string.
    /// \throws MemoryException when the buffer cannot be had.
    VOREL_API BaseString(const BaseString& other);

    /// Takes over the buffer; `other` is left as a string that never allocated.
    VOREL_API BaseString(BaseString&& other) noexcept;

    VOREL_API ~BaseString();

    /// Replaces the content; null empties the string and keeps its buffer. `text` may point into the string itself.
    /// \throws MemoryException and leaves the string as it was when the buffer cannot be had.
    VOREL_API BaseString& operator=(const T* text);
    VOREL_API BaseString& operator=(std::basic_string_view<T> text);
    VOREL_API BaseString& operator=(const BaseString& other);
    VOREL_API BaseString& operator=(BaseString&& other) noexcept;

    /// The buffer itself, null when the string never allocated.
    const T* c_str() const noexcept { return m_data; }
    T* data() noexcept { return m_data; }

    /// The same characters, never null.
    std::basic_string_view<T> view() const noexcept {
        static constexpr T kNothing[1] = {};
        return {m_data ? m_data : kNothing, length()};
    }

    // NOLINTNEXTLINE(google-explicit-constructor): a string is meant to go wherever text is asked for
    operator std::basic_string_view<T>() const noexcept { return view(); }

    /// Units before the terminator; counts them and remembers the result when the length is not known.
    VOREL_API unsigned int length() const noexcept;

    /// Whether there is no text.
    bool empty() const noexcept { return length() == 0; }

    /// Size of the buffer in units, the terminator included; 0 when there is no buffer.
    unsigned int capacity() const noexcept { return m_capacity; }

    /// Adds `text` (to its terminator, or `count` units of it) at the end; null adds nothing. The argument may point
    /// into the string itself.
    /// \throws MemoryException and leaves the string as it was when it cannot grow.
    VOREL_API BaseString& append(const T* text);
    VOREL_API BaseString& append(const T* text, unsigned int count);
    VOREL_API BaseString& append(const BaseString& text);
    BaseString& append(std::basic_string_view<T> text) { return append(text.data(), countOf(text)); }
    VOREL_API BaseString& append(T unit);
    BaseString& operator+=(const T* text) { return append(text); }
    BaseString& operator+=(const BaseString& text) { return append(text); }
    BaseString& operator+=(std::basic_string_view<T> text) { return append(text); }
    BaseString& operator+=(T unit) { return append(unit); }

    /// Makes the string empty and keeps the buffer.
    VOREL_API void clear() noexcept;

    /// Makes room for `count` units and the terminator, writes a terminator at index `count` and returns the buffer.
    /// This is the single growth point of the string.
    ///
    /// A `count` of 0 empties the string and allocates nothing (null when there is no buffer). When the buffer is large
    /// enough, a length above `count` becomes `count`, and a length that is not known counts as larger than any
    /// `count`. Otherwise a new buffer is allocated, a power of two up to 1 Mi units and whole steps of 1 Mi above it,
    /// at least 16: with `discard` false it holds the old text and keeps its known length, with `discard` true it
    /// holds nothing yet and the length is not known.
    /// \throws MemoryException(capacity, unit size) and leaves the string as it was when the buffer cannot be had or
    ///         its size cannot be expressed.
    VOREL_API T* reserve(unsigned int count, bool discard = false);

    /// Replaces the content by the printf-style rendering of `fmt` and returns the string itself; a null `fmt` also
    /// gives the buffer back. In a wide format `%s` takes wide text, as the runtime's print functions do by default;
    /// `%hs` and `%ls` say it either way. Arguments may point into the string itself.
    /// \throws Exception "Unable to format: %ls (%hs)" (narrow: "%hs") with the format and the runtime's error text
    ///         when the format cannot be rendered; MemoryException when the string cannot grow. The string is
    ///         empty then, unless an argument or the format lies in it: then it keeps its text.
    VOREL_API BaseString& format(const T* fmt, ...);

    /// `format` with an argument list.
    VOREL_API BaseString& vformat(const T* fmt, va_list args);

    /// Unit-wise comparison, units taken as unsigned; a null text equals the empty string.
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

    /// A text that is too long for any string has a count that no string can have either.
    static unsigned int countOf(std::basic_string_view<T> text) noexcept {
        return text.size() < kUnknownLength ? static_cast<unsigned int>(text.size()) : kUnknownLength;
    }

    T* m_data = nullptr;
    unsigned int m_capacity = 0;
    mutable unsigned int m_length = kUnknownLength;
};

// Declared for each width, because the compiler checks the arguments of the narrow form.
/// \cond
template <>
VOREL_PRINTF(2, 3)
VOREL_API BaseString<char>& BaseString<char>::format(const char* fmt, ...);
template <>
VOREL_API BaseString<wchar_t>& BaseString<wchar_t>::format(const wchar_t* fmt, ...);
/// \endcond

}  // namespace vorel

/// Equal strings, and views of the same text, have the same hash.
template <class T>
struct std::hash<vorel::BaseString<T>> {
    std::size_t operator()(const vorel::BaseString<T>& text) const noexcept {
        return std::hash<std::basic_string_view<T>>()(text.view());
    }
};
