/// \file
/// The frame of every function of the flat interface. It turns an exception into a status and keeps its text as the
/// thread's last failure.
#pragma once

#include <utility>

#include "vorel/flat/Status.h"

namespace vorel::flat {

/// Thrown by argument checks and caught by the frame. It is the caller's error and is not logged.
struct ArgumentError {
    vorel_status status;
    const wchar_t* message;
};

/// Whether an enumerator of the flat interface equals one of the C++ interface.
constexpr bool sameValue(int flat, int library) noexcept {
    return flat == library;
}

/// The status of the exception that is being handled, which is remembered as the thread's last failure. Exceptions
/// other than `ArgumentError` are recorded in the error log.
vorel_status statusOfCurrentException(const wchar_t* function, vorel_status fallbackStatus) noexcept;

/// Runs `body`, which returns a status, under the name of its function. `fallbackStatus` is the status for an exception
/// of the library other than `MemoryException`.
template <class Body>
vorel_status guardedCall(const wchar_t* function, vorel_status fallbackStatus, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return statusOfCurrentException(function, fallbackStatus);
    }
}

/// The same for a body whose only exception of the library is `MemoryException`.
template <class Body>
vorel_status guardedCall(const wchar_t* function, Body&& body) noexcept {
    return guardedCall(function, VOREL_ERROR_INTERNAL, std::forward<Body>(body));
}

}  // namespace vorel::flat
