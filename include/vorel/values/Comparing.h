/// \file
/// Text comparison with flags, and version comparison. No function allocates, throws or uses the locale, and every
/// function may be called from any thread.
#pragma once

#include "vorel/Export.h"

namespace vorel::util {

/// Flags of `strcmpAdvanced`; they may be combined.
enum strcmpAdvFlag : int {
    SCMP_IgnoreCase = 0x001,    ///< A to Z equal a to z; the case of other letters matters
    SCMP_Numeric = 0x002,       ///< runs of digits are compared as numbers
    SCMP_SlashesEqual = 0x004,  ///< '/' and '\' are equal
    SCMP_Reverse = 0x100,       ///< the texts are swapped, which reverses the sign of the result
};

/// Combines two sets of flags.
constexpr strcmpAdvFlag operator|(strcmpAdvFlag a, strcmpAdvFlag b) noexcept {
    return static_cast<strcmpAdvFlag>(static_cast<int>(a) | static_cast<int>(b));
}

/// Compares two texts. The result is below 0, 0, or above 0 if `a` is before, equal to, or after `b`; only the sign
/// matters. A null text is before every other text. Characters of narrow text are compared as signed numbers.
///
///     "file9", "file10"  ->  above 0, with SCMP_Numeric below 0        "007", "7" with SCMP_Numeric  ->  0
VOREL_API int strcmpAdvanced(const char* a, const char* b, strcmpAdvFlag flags) noexcept;
VOREL_API int strcmpAdvanced(const wchar_t* a, const wchar_t* b, strcmpAdvFlag flags) noexcept;

/// Whether `version` is at least `required`, compared number by number; any single character separates two numbers.
/// False if either text is null or empty. By design, if all numbers of `version` are equal to the first numbers of
/// `required`, and `required` has more numbers, the result is false, even if the additional numbers are zero. Also by
/// design, if no two numbers at the same position differ, and `required` ends with a separator, the result is false.
///
///     "10.2", "9.9"  ->  true        "1.2.3", "1.2"  ->  true        "1.2", "1.2.0"  ->  false
///     "1.2.3", "1.2."  ->  false
VOREL_API bool stringVersionAtLeast(const wchar_t* version, const wchar_t* required) noexcept;

}  // namespace vorel::util
