/// \file
/// Checks the inputs of the flat interface (vorelCoreC.h) and copies texts with a terminator, because most functions of
/// the library read up to a zero.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include "flat/Call.h"
#include "vorel/core/Array.h"
#include "vorel/core/Protocol.h"
#include "vorel/flat/Status.h"

namespace vorel::flat {

/// \throws ArgumentError for null.
template <class T>
// cppcheck-suppress constParameter; the caller writes to the object
T& notNull(T* pointer) {
    if (!pointer) {
        throw ArgumentError{VOREL_ERROR_INVALID_ARGUMENT, L"A pointer is null"};
    }
    return *pointer;
}

/// The number of units of an input, which ends at its first zero if `count` is VOREL_ZERO_TERMINATED. \throws
/// ArgumentError if the input is too long, or if the input is null and `count` is not 0.
template <class Unit>
std::size_t checkedCount(const Unit* input, std::size_t count) {
    if (!input && count != 0) {
        throw ArgumentError{VOREL_ERROR_INVALID_ARGUMENT, L"An input is null"};
    }
    if (count == VOREL_ZERO_TERMINATED) {
        for (count = 0; count <= VOREL_MOST_UNITS && input[count] != 0; ++count) {}
    }
    if (count > VOREL_MOST_UNITS) {
        throw ArgumentError{VOREL_ERROR_INVALID_ARGUMENT, L"An input is too long"};
    }
    return count;
}

/// \throws ArgumentError if `flags` contains a flag that is not in `known`.
inline void checkFlags(uint32_t flags, uint32_t known) {
    if ((flags & ~known) != 0) {
        throw ArgumentError{VOREL_ERROR_INVALID_ARGUMENT, L"A flag is unknown"};
    }
}

enum class Zeros {
    Rejected,
    Allowed,
};

/// A copy of a text, followed by zeros.
template <class Unit>
class TextCopy {
public:
    /// \throws ArgumentError, MemoryException.
    template <class Source>
    TextCopy(const Source* text, std::size_t length, Zeros zeros) : m_length(checkedCount(text, length)) {
        static_assert(sizeof(Unit) == sizeof(Source));
        const std::size_t capacity = m_length + kTrailingZeros;
        if (capacity > kShort) {
            m_heap.reset(static_cast<Unit*>(std::malloc(capacity * sizeof(Unit))));
            if (!m_heap) {
                detail::throwMemory(static_cast<unsigned int>(capacity), sizeof(Unit));
            }
            m_text = m_heap.get();
        }
        if (m_length != 0) {
            std::memcpy(m_text, text, m_length * sizeof(Unit));
        }
        std::memset(m_text + m_length, 0, sizeof(Unit[kTrailingZeros]));
        if (zeros == Zeros::Rejected && view().find(Unit()) != std::basic_string_view<Unit>::npos) {
            throw ArgumentError{VOREL_ERROR_INVALID_TEXT, L"The text contains a zero character"};
        }
    }

    ~TextCopy() = default;

    TextCopy(const TextCopy&) = delete;
    TextCopy& operator=(const TextCopy&) = delete;

    [[nodiscard]] const Unit* c_str() const noexcept { return m_text; }
    [[nodiscard]] std::size_t length() const noexcept { return m_length; }
    [[nodiscard]] std::basic_string_view<Unit> view() const noexcept { return {m_text, m_length}; }

private:
    struct Free {
        void operator()(Unit* block) const noexcept { std::free(block); }
    };

    static constexpr std::size_t kTrailingZeros = 8;  // the UTF-8 decoder may read past the end of the text
    static constexpr std::size_t kShort = 128;

    std::size_t m_length;
    std::unique_ptr<Unit, Free> m_heap;
    Unit m_short[kShort];
    Unit* m_text = m_short;
};

using Utf8Text = TextCopy<char>;

/// A UTF-16 text.
class WideText : public TextCopy<wchar_t> {
public:
    WideText(const vorel_char16* text, std::size_t length, Zeros zeros = Zeros::Rejected)
        : TextCopy(text, length, zeros) {}
};

/// A view of the caller's bytes. The constructor throws `ArgumentError` if the input is not valid.
class Bytes {
public:
    Bytes(const void* bytes, std::size_t size) : m_bytes(static_cast<const unsigned char*>(bytes)) {
        if (size == VOREL_ZERO_TERMINATED) {
            throw ArgumentError{VOREL_ERROR_INVALID_ARGUMENT, L"Bytes have no terminator"};
        }
        m_size = static_cast<unsigned int>(checkedCount(m_bytes, size));
    }

    [[nodiscard]] const unsigned char* data() const noexcept { return m_bytes; }
    [[nodiscard]] unsigned int size() const noexcept { return m_size; }

    /// A copy as an array. \throws MemoryException.
    [[nodiscard]] Array<unsigned char> array() const {
        Array<unsigned char> copy;
        copy.reserve(m_size, true);
        copy.append(m_bytes, m_size);
        return copy;
    }

private:
    const unsigned char* m_bytes;
    unsigned int m_size;
};

}  // namespace vorel::flat
