/// \file
/// What only the library itself may do with a `BaseString`: grow and fill it without an exception (the message of a
/// failed allocation must not fail for the same reason), and say how much it wrote behind `reserve`.
#pragma once

#include <cstdint>

#include "vorel/core/BaseString.h"

namespace vorel::detail {

template <class T>
struct StringAccess {
    /// `BaseString::reserve` that answers false, with the string untouched, where that throws. `capacityWanted` gets
    /// the size of the buffer that could not be had.
    static bool tryReserve(BaseString<T>& string, unsigned int count, bool discard,
                           unsigned int& capacityWanted) noexcept;

    /// Replaces the text by the first `length` units of `text`, which may point into the string. On failure the string
    /// is untouched, and `capacityWanted` is set as above.
    static bool tryAssign(BaseString<T>& string, const T* text, unsigned int length,
                          unsigned int& capacityWanted) noexcept;
    static bool tryAssign(BaseString<T>& string, const T* text, unsigned int length) noexcept;
    static bool tryAssign(BaseString<T>& string, const T* text) noexcept;

    /// Whether `address` lies in the string's buffer, which a call that grows the string gives back.
    static bool holds(const BaseString<T>& string, const void* address) noexcept {
        return reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(string.m_data) <
               std::uintptr_t{string.m_capacity} * sizeof(T);
    }

    /// States the length after the first `length` units have been written, and terminates them. The string has a
    /// buffer.
    static void setLength(BaseString<T>& string, unsigned int length) noexcept {
        string.m_data[length] = 0;  // NOLINT(clang-analyzer-core.NullDereference): a caller has written to it
        string.m_length = length;
    }
};

extern template struct StringAccess<char>;
extern template struct StringAccess<wchar_t>;

}  // namespace vorel::detail
