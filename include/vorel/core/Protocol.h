/// \file
/// The frame that every operation of the library runs in, written once, and the failures that the core templates
/// raise. Both are declared here, below the exception family, so that the core headers include nothing from above
/// them; they are defined together with the family.
///
///     return detail::guarded(L"vorel::util", L"gmtime", [&] { … });
///
/// A library exception that leaves the body gets the record "vorel::util::gmtime: Vorel exception rethrown" and goes
/// on with its dynamic type; anything else becomes a fresh `Exception` "vorel::util::gmtime: Severe error thrown".
#pragma once

#include <cstddef>
#include <utility>

#include "vorel/Export.h"

namespace vorel::detail {

/// Throws `MemoryException(count, size)`: `count` elements of `size` bytes could not be had.
[[noreturn]] VOREL_API void throwMemory(unsigned int count, std::size_t size);

/// Throws `InvalidIndexException` for `index` in a sequence of `count` elements.
[[noreturn]] VOREL_API void throwInvalidIndex(unsigned int index, unsigned int count);

/// Throws a plain `Exception` that says `message` as it stands.
[[noreturn]] VOREL_API void throwFailure(const wchar_t* message);

/// The handlers behind the frames below. Each is called while an exception is being handled, and finds out for itself
/// whether that is one of the library's.
[[noreturn]] VOREL_API void passOn(const wchar_t* location);
[[noreturn]] VOREL_API void passOn(const wchar_t* className, const wchar_t* operation);
VOREL_API void passOnFromDestructor(const wchar_t* className);
VOREL_API void contain(const wchar_t* location) noexcept;

/// Runs `body` under the name of a class and one of its operations, and returns its result.
template <class Body>
decltype(auto) guarded(const wchar_t* className, const wchar_t* operation, Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        passOn(className, operation);
    }
}

/// Runs `body` under the name of a free function, and returns its result.
template <class Body>
decltype(auto) guarded(const wchar_t* location, Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        passOn(location);
    }
}

/// Runs the body of a destructor: a failure is recorded and swallowed while another exception unwinds the stack, and
/// recorded and thrown on otherwise.
template <class Body>
void guardedDestructor(const wchar_t* className, Body&& body) {
    try {
        std::forward<Body>(body)();
    } catch (...) {
        passOnFromDestructor(className);
    }
}

/// Releases things one after another, all of them, even when releasing one fails: `releaseNext` releases one and
/// returns whether there may be more, and a call that throws has moved past its own. The first failure leaves when
/// nothing remains. Later ones are recorded and swallowed, because the first already unwinds the stack by then.
template <class ReleaseNext>
void releaseAll(const wchar_t* className, ReleaseNext&& releaseNext) {
    // NOLINTNEXTLINE(cppcoreguidelines-special-member-functions): local, never copied
    struct Remaining {
        ~Remaining() {
            while (hasMore) {
                guardedDestructor(className, [this] { hasMore = releaseNext(); });
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

/// Runs `body` in an operation that must not throw: a failure is recorded in the log and ends here.
template <class Body>
void contained(const wchar_t* location, Body&& body) noexcept {
    try {
        std::forward<Body>(body)();
    } catch (...) {
        contain(location);
    }
}

}  // namespace vorel::detail
