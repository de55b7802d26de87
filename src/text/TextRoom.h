/// \file
/// Strings that a kernel writes into: room for the most that it can write, and the end when it has.
#pragma once

#include <cstdint>

#include "core/StringAccess.h"
#include "vorel/core/BaseString.h"
#include "vorel/core/Protocol.h"

namespace vorel::text {

/// `units` as a string counts them. \throws MemoryException for more than one can hold.
template <class T>
unsigned int checkedUnits(std::uint64_t units) {
    if (units >= BaseString<T>::kUnknownLength) {
        detail::throwMemory(BaseString<T>::kUnknownLength, sizeof(T));
    }
    return static_cast<unsigned int>(units);
}

/// The buffer of a string, with room for `units` in the place of its text; `endAt` tells what was written there.
template <class T>
T* roomFor(std::uint64_t units, BaseString<T>& string) {
    return string.reserve(checkedUnits<T>(units), true);
}

/// Makes room for `units` in a string, and keeps its text; `units` is not below its length.
template <class T>
void growFor(std::uint64_t units, BaseString<T>& string) {
    string.reserve(checkedUnits<T>(units), false);
}

/// Says where the text ends that was written into a string's buffer.
template <class T>
void endAt(const T* end, BaseString<T>& string) noexcept {
    detail::StringAccess<T>::setLength(string, static_cast<unsigned int>(end - string.data()));
}

}  // namespace vorel::text
