/// \file
/// Comparing texts under a set of flags, and version texts. Nothing in here allocates, throws or asks the locale, and
/// everything may be called from any thread.
#pragma once

#include "vorel/Export.h"

namespace vorel::util {

/// How `strcmpAdvanced` compares; flags may be combined.
enum strcmpAdvFlag : int {
    SCMP_IgnoreCase = 0x001,    ///< A to Z, and no other letters, equal a to z
    SCMP_Numeric = 0x002,       ///< runs of digits are compared as numbers
    SCMP_SlashesEqual = 0x004,  ///< '/' and '\' are equal
    SCMP_Reverse = 0x100,       ///< the texts change places, and so the sign of the result
};

/// Both sets of flags.
constexpr strcmpAdvFlag operator|(strcmpAdvFlag a, strcmpAdvFlag b) noexcept {
    return static_cast<strcmpAdvFlag>(static_cast<int>(a) | static_cast<int>(b));
}

/// Compares two texts: below 0, 0, or above 0, as `a` comes before, is equal to, or comes behind `b`; only the sign
/// means anything. A null text comes before every other. Characters of narrow text are compared as signed numbers.
///
///     "file9", "file10"  →  above 0, with SCMP_Numeric below 0        "007", "7" with SCMP_Numeric  →  0
VOREL_API int strcmpAdvanced(const char* a, const char* b, strcmpAdvFlag flags) noexcept;
VOREL_API int strcmpAdvanced(const wchar_t* a, const wchar_t* b, strcmpAdvFlag flags) noexcept;

/// Whether `version` is at least `required`, number by number; any one character separates two numbers. A version with
/// fewer numbers than required fails, also when the missing ones are zero; that is meant. False for a null and for an
/// empty text.
///
///     "10.2", "9.9"  →  true        "1.2.3", "1.2"  →  true        "1.2", "1.2.0"  →  false
VOREL_API bool stringVersionAtLeast(const wchar_t* version, const wchar_t* required) noexcept;

}  // namespace vorel::util
