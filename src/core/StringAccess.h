/// \file
/// Operations on a `BaseString` that only the library may use. `tryReserve` and `tryAssign` do not throw, because an
/// exception class uses them to build the message of a failed allocation. `setLength` completes a text that was written
/// after `reserve`.
#pragma once

#include "vorel/core/BaseString.h"

namespace vorel::detail {

template <class T>
struct StringAccess {
    /// Like `BaseString::reserve`, but returns false if the buffer cannot be allocated. The string is then unchanged,
    /// and `capacityWanted` receives the size of this buffer in units.
    static bool tryReserve(BaseString<T>& string, unsigned int count, bool discard,
                           unsigned int& capacityWanted) noexcept;

    /// Replaces the text by the first `length` units of `text`, which may point into the string. Without `length`,
    /// `text` ends at its terminator; null is an empty text. If memory runs out, returns false, leaves the string
    /// unchanged, and sets `capacityWanted` as `tryReserve` does.
    static bool tryAssign(BaseString<T>& string, const T* text, unsigned int length,
                          unsigned int& capacityWanted) noexcept;
    static bool tryAssign(BaseString<T>& string, const T* text, unsigned int length) noexcept;
    static bool tryAssign(BaseString<T>& string, const T* text) noexcept;

    /// Whether `address` lies in the string's buffer, which is released when the string grows.
    static bool holds(const BaseString<T>& string, const void* address) noexcept { return string.holds(address); }

    /// Sets the length to `length` and writes the terminator, after the caller has written that many units. The string
    /// must have a buffer.
    static void setLength(BaseString<T>& string, unsigned int length) noexcept { string.setLength(length); }
};

extern template struct StringAccess<char>;
extern template struct StringAccess<wchar_t>;

}  // namespace vorel::detail
