/// \file
/// The flat interface: comparison of texts and versions. vorelCoreC.h has the rules for all functions.
#pragma once

#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// \name Comparing
/// \{

/// The flags of `vorel_compare`.
enum {
    VOREL_COMPARE_IGNORE_CASE = 0x001,    ///< A to Z are equal to a to z; the case of other letters matters
    VOREL_COMPARE_NUMERIC = 0x002,        ///< runs of digits are compared as numbers: the natural order
    VOREL_COMPARE_SLASHES_EQUAL = 0x004,  ///< '/' and '\' are equal
    VOREL_COMPARE_REVERSE = 0x100,        ///< the order is reversed: `b` is compared with `a`
};

/// Sets `order` to -1, 0 or 1 if `a` is before, equal to, or after `b`. Code units are compared by their values.
///
///     "file9", "file10"  ->  1        with VOREL_COMPARE_NUMERIC  ->  -1
VOREL_API vorel_status vorel_compare(const vorel_char16* a, size_t aLength, const vorel_char16* b, size_t bLength,
                                     uint32_t flags, int32_t* order);

/// Compares two versions number by number; any single character separates two numbers. The first pair of numbers that
/// differ decides: `isAtLeast` becomes 1 if the number of `version` is larger, else 0. If no pair differs, it becomes 1
/// unless `required` has more numbers than `version` (even if its additional numbers are zero) or ends with a
/// separator. It becomes 0 if either text is empty.
///
///     "10.2", "9.9"  ->  1        "1.2", "1.2.0"  ->  0        "1.2.3", "1.2."  ->  0
VOREL_API vorel_status vorel_version_at_least(const vorel_char16* version, size_t versionLength,
                                              const vorel_char16* required, size_t requiredLength, int32_t* isAtLeast);

/// \}

#ifdef __cplusplus
}
#endif
