/// \file
/// Templates that run the body of an operation and handle its exceptions (these templates are called "the frame"), and
/// functions that throw the failures of the core templates. The functions that are not templates are only declared
/// here, so that the core headers include nothing from the layers above. The sources of the exception classes define
/// these functions.
///
///     return detail::runRethrowing(L"vorel::util", L"gmtime", [&] { ... });
///
/// If a library exception leaves the body, it gets the record "vorel::util::gmtime: Vorel exception rethrown" and is
/// rethrown with its dynamic type. Any other exception becomes a new `Exception` "vorel::util::gmtime: Severe error
/// thrown".
#pragma once

#include <cstddef>
#include <utility>

#include "vorel/Export.h"

namespace vorel::detail {

/// Throws `MemoryException(count, size)`: `count` elements of `size` bytes cannot be allocated.
[[noreturn]] VOREL_API void throwMemory(unsigned int count, std::size_t size);

/// Throws `InvalidIndexException` for `index` in a sequence of `count` elements.
[[noreturn]] VOREL_API void throwInvalidIndex(unsigned int index, unsigned int count);

/// Throws an `Exception` whose text is exactly `message`.
[[noreturn]] VOREL_API void throwFailure(const wchar_t* message);

/// The handlers that the functions below call. Call them only inside a `catch` block; they check whether the current
/// exception is a library exception.
[[noreturn]] VOREL_API void rethrowWithRecord(const wchar_t* location);
[[noreturn]] VOREL_API void rethrowWithRecord(const wchar_t* className, const wchar_t* operation);
VOREL_API void rethrowFromDestructor(const wchar_t* className);
VOREL_API void logAndSwallow(const wchar_t* location) noexcept;

/// Runs `body` and returns its result. A failure is recorded with the names of the class and the operation, and
/// rethrown.
template <class Body>
decltype(auto) runRethrowing(const wchar_t* className, const wchar_t* operation, Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        rethrowWithRecord(className, operation);
    }
}

/// Runs `body` and returns its result. A failure is recorded with the name of the free function, and rethrown.
template <class Body>
decltype(auto) runRethrowing(const wchar_t* location, Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        rethrowWithRecord(location);
    }
}

/// Runs the body of a destructor. A failure is recorded. It is swallowed while another exception unwinds the stack, and
/// rethrown otherwise.
template <class Body>
void runDestructor(const wchar_t* className, Body&& body) {
    try {
        std::forward<Body>(body)();
    } catch (...) {
        rethrowFromDestructor(className);
    }
}

/// Releases a sequence of resources completely, even if some releases fail. `releaseNext` releases one resource, if
/// there is one, and returns whether it must be called again. It must advance to the next resource before it throws,
/// because it is then called again. The first failure is thrown after everything is released. Later failures are
/// recorded and swallowed, because the first is already unwinding the stack.
template <class ReleaseNext>
void releaseAll(const wchar_t* className, ReleaseNext&& releaseNext) {
    // NOLINTNEXTLINE(cppcoreguidelines-special-member-functions): local, never copied
    struct Remaining {
        ~Remaining() {
            while (hasMore) {
                runDestructor(className, [this] { hasMore = releaseNext(); });
            }
        }

        const wchar_t* className;
        ReleaseNext& releaseNext;
        bool hasMore = true;
    } remaining{className, releaseNext};
    while (remaining.hasMore) {
        remaining.hasMore = releaseNext();
    }
}

/// Runs `body` in an operation that must not throw. A failure is recorded in the log and swallowed.
template <class Body>
void runNoThrow(const wchar_t* location, Body&& body) noexcept {
    try {
        std::forward<Body>(body)();
    } catch (...) {
        logAndSwallow(location);
    }
}

}  // namespace vorel::detail
