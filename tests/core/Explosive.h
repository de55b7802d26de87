/// \file
/// A value whose destructor fails, for tests of what owns values.
#pragma once

#include <string>

#include "vorel/exceptions/ExceptionFamily.h"

namespace test {

/// What the destructor of a value throws.
enum class Explosion {
    None,
    Library,  ///< `MemoryException(number, 2)`
    Foreign,  ///< `ForeignFailure{number}`
};

/// What is not an exception of the library.
struct ForeignFailure {
    int number;
};

/// A value that is counted while it lives. Copies have its number; they never explode.
struct Explosive {
    Explosive() noexcept { ++s_alive; }
    explicit Explosive(int value) noexcept : number(value) { ++s_alive; }
    Explosive(const Explosive& other) noexcept : number(other.number) { ++s_alive; }
    // cppcheck-suppress operatorEqVarError ; copies never explode
    Explosive& operator=(const Explosive& other) noexcept {
        number = other.number;
        return *this;
    }

    // NOLINTBEGIN(bugprone-exception-escape): its failure is what it is for
    ~Explosive() noexcept(false) {
        --s_alive;
        switch (explosion) {
        case Explosion::Library: throw vorel::MemoryException(number, 2);  // cppcheck-suppress exceptThrowInDestructor
        case Explosion::Foreign: throw ForeignFailure{number};             // cppcheck-suppress exceptThrowInDestructor
        case Explosion::None: break;
        }
    }
    // NOLINTEND(bugprone-exception-escape)

    int number = 0;
    Explosion explosion = Explosion::None;

    static inline int s_alive = 0;
};

/// The message of the failure of the value `number`.
inline std::wstring explosionOf(int number) {
    return L"No more memory is available: " + std::to_wstring(number) + L" objects of size 2 requested";
}

/// The same as a line of the log.
inline std::string explosionLine(int number) {
    return "Vorel Error: No more memory is available: " + std::to_string(number) + " objects of size 2 requested";
}

}  // namespace test
