/// \file
/// A value with a throwing destructor, for tests of containers.
#pragma once

#include <string>

#include "vorel/exceptions/ExceptionFamily.h"

namespace test {

/// Selects the exception that the destructor of a value throws.
enum class Explosion {
    None,
    Library,  ///< `MemoryException(number, 2)`
    Other,    ///< `OtherException{number}`
};

/// An exception that is not a library exception.
struct OtherException {
    int number;
};

/// A value whose destructor throws the exception that `explosion` selects. A copy gets only the number, so its
/// destructor does not throw. An assignment also changes only the number. The class counts its live objects.
struct Explosive {
    Explosive() noexcept { ++s_alive; }
    explicit Explosive(int value) noexcept : number(value) { ++s_alive; }
    Explosive(const Explosive& other) noexcept : number(other.number) { ++s_alive; }
    // cppcheck-suppress operatorEqVarError ; copies never throw
    Explosive& operator=(const Explosive& other) noexcept {
        number = other.number;
        return *this;
    }

    // NOLINTBEGIN(bugprone-exception-escape): throwing is its purpose
    ~Explosive() noexcept(false) {
        --s_alive;
        switch (explosion) {
        case Explosion::Library: throw vorel::MemoryException(number, 2);  // cppcheck-suppress exceptThrowInDestructor
        case Explosion::Other: throw OtherException{number};               // cppcheck-suppress exceptThrowInDestructor
        case Explosion::None: break;
        }
    }
    // NOLINTEND(bugprone-exception-escape)

    int number = 0;
    Explosion explosion = Explosion::None;

    static inline int s_alive = 0;
};

/// The message of the library exception that a value with this number throws.
inline std::wstring explosionOf(int number) {
    return L"No more memory is available: " + std::to_wstring(number) + L" objects of size 2 requested";
}

/// The prefix and the message of the log line of this exception.
inline std::string explosionLine(int number) {
    return "Vorel Error: No more memory is available: " + std::to_string(number) + " objects of size 2 requested";
}

}  // namespace test
