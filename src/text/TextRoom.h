/// \file
/// Strings that an algorithm writes to: reserves the maximum capacity first and sets the length afterwards.
#pragma once

#include <cstdint>

#include "core/StringAccess.h"
#include "vorel/core/BaseString.h"
#include "vorel/core/Protocol.h"

namespace vorel::text {

/// Converts `units` to the type of a string's length. \throws MemoryException if a string cannot hold that many.
template <class T>
unsigned int checkedUnits(std::uint64_t units) {
    if (units >= BaseString<T>::kUnknownLength) {
        detail::throwMemory(BaseString<T>::kUnknownLength, sizeof(T));
    }
    return static_cast<unsigned int>(units);
}

/// Reserves `units` in a string, discards its text, and returns its buffer. `setEnd` must follow.
template <class T>
T* reserveUnits(std::uint64_t units, BaseString<T>& string) {
    return string.reserve(checkedUnits<T>(units), true);
}

/// Reserves `units` in a string and keeps its text. `units` is at least its length.
template <class T>
void growUnits(std::uint64_t units, BaseString<T>& string) {
    string.reserve(checkedUnits<T>(units), false);
}

/// Sets the length of a string to the text written to its buffer.
template <class T>
void setEnd(const T* end, BaseString<T>& string) noexcept {
    detail::StringAccess<T>::setLength(string, static_cast<unsigned int>(end - string.data()));
}

}  // namespace vorel::text
