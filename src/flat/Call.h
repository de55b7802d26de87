/// \file
/// The wrapper around the body of each flat function whose body may throw. It converts an exception to a status, and
/// keeps the exception's text as the thread's last failure.
#pragma once

#include <utility>

#include "vorel/flat/Status.h"

namespace vorel::flat {

/// The exception of argument checks. The wrapper catches it and does not log it, because the error is the caller's.
struct ArgumentError {
    vorel_status status;
    const wchar_t* message;
};

/// Whether an enumerator of the flat interface equals an enumerator of the C++ interface.
constexpr bool sameValue(int flat, int library) noexcept {
    return flat == library;
}

/// Maps the current exception to a status. Stores the status and a text as the thread's last failure. The text is the
/// message of an `ArgumentError`, or the first message of a library exception. Other exceptions, and library exceptions
/// without a message, get a general text. Exceptions other than `ArgumentError` are also written to the error log.
vorel_status statusOfCurrentException(const wchar_t* function, vorel_status fallbackStatus) noexcept;

/// Runs `body` and returns its status. `function` is the name of the flat function, for the log. `fallbackStatus` is
/// the status for a library exception other than `MemoryException`.
template <class Body>
vorel_status guardedCall(const wchar_t* function, vorel_status fallbackStatus, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return statusOfCurrentException(function, fallbackStatus);
    }
}

/// Overload for a body that throws no library exception other than `MemoryException`.
template <class Body>
vorel_status guardedCall(const wchar_t* function, Body&& body) noexcept {
    return guardedCall(function, VOREL_ERROR_INTERNAL, std::forward<Body>(body));
}

}  // namespace vorel::flat
