/// \file
/// The frame that every function of the flat interface runs in: whatever leaves its body becomes a status, and the text
/// of the thread's last failure.
#pragma once

#include <utility>

#include "vorel/flat/Status.h"

namespace vorel::flat {

/// Thrown by the checks of arguments, and met by the frame: a failure of the caller's, and no error of the library's.
struct Refused {
    vorel_status status;
    const wchar_t* message;
};

/// Whether an enumerator of the flat interface and one of the library have the same value.
constexpr bool areOneNumber(int flat, int library) noexcept {
    return flat == library;
}

/// The status for what is being handled. An exception of the library ends here, with its record in the error log.
vorel_status handled(const wchar_t* function, vorel_status meaning) noexcept;

/// Runs `body`, which returns a status, under the name of its function. `meaning` is the status of an exception of the
/// library that is not about memory.
template <class Body>
vorel_status call(const wchar_t* function, vorel_status meaning, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return handled(function, meaning);
    }
}

/// The same for a body that throws no exceptions but for memory.
template <class Body>
vorel_status call(const wchar_t* function, Body&& body) noexcept {
    return call(function, VOREL_ERROR_INTERNAL, std::forward<Body>(body));
}

}  // namespace vorel::flat
