/// \file
/// The messages of an exception as one text, for Streams.h and Formatters.h.
#pragma once

#include "vorel/core/BaseString.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/text/Unicode.h"

namespace vorel::detail {

/// All messages of `exception`, oldest first, separated by "; ": in UTF-8 or in UTF-16.
/// \throws MemoryException
template <class T>
BaseString<T> trailOf(const Exception& exception) {
    constexpr T kSeparator[] = {';', ' '};
    BaseString<T> trail;
    for (unsigned int index = 0; index != exception.getMessageTotal(); ++index) {
        if (index != 0) {
            trail.append(kSeparator, 2);
        }
        if constexpr (sizeof(T) == sizeof(wchar_t)) {
            trail.append(exception.getErrorMessage(index));
        } else {
            BaseString<T> message;
            util::ConvertStringtoUTF8(exception.getErrorMessage(index), message, -1);
            trail.append(message);
        }
    }
    return trail;
}

}  // namespace vorel::detail
