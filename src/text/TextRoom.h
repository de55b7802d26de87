/// \file
/// Strings that a kernel writes into: room for the most that it can write, and the end when it has.
#pragma once

#include <cstdint>

#include "core/StringAccess.h"
#include "vorel/core/BaseString.h"
#include "vorel/core/Protocol.h"

namespace vorel::text {

/// The buffer of a string, with room for `units` in the place of its text; `endAt` tells what was written there.
template <class T>
T* roomFor(std::uint64_t units, BaseString<T>& string) {
    if (units >= BaseString<T>::kUnknownLength) {
        detail::throwMemory(BaseString<T>::kUnknownLength, sizeof(T));
    }
    return string.reserve(static_cast<unsigned int>(units), true);
}

/// Says where the text ends that was written into a string's buffer.
template <class T>
void endAt(const T* end, BaseString<T>& string) noexcept {
    detail::StringAccess<T>::setLength(string, static_cast<unsigned int>(end - string.data()));
}

}  // namespace vorel::text
