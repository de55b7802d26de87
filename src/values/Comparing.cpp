#include "vorel/values/Comparing.h"

#include <utility>

#include "algorithms/TextOrder.h"

namespace vorel::util {

namespace {

template <bool numeric, class T>
int compareBy(const T* a, const T* b, strcmpAdvFlag flags) noexcept {
    return algorithms::compareTexts(a, b,
                                    {.ignoreCase = (flags & SCMP_IgnoreCase) != 0,
                                     .numeric = numeric,
                                     .slashesEqual = (flags & SCMP_SlashesEqual) != 0});
}

template <class T>
int compare(const T* a, const T* b, strcmpAdvFlag flags) noexcept {
    if (flags & SCMP_Reverse) {
        std::swap(a, b);
    }
    return flags & SCMP_Numeric ? compareBy<true>(a, b, flags) : compareBy<false>(a, b, flags);
}

}  // namespace

int strcmpAdvanced(const char* a, const char* b, strcmpAdvFlag flags) noexcept {
    // Characters are compared as signed numbers, even where plain `char` is unsigned.
    return compare(reinterpret_cast<const signed char*>(a), reinterpret_cast<const signed char*>(b), flags);
}

int strcmpAdvanced(const wchar_t* a, const wchar_t* b, strcmpAdvFlag flags) noexcept {
    return compare(a, b, flags);
}

bool stringVersionAtLeast(const wchar_t* version, const wchar_t* required) noexcept {
    return algorithms::versionAtLeast(version, required);
}

}  // namespace vorel::util
