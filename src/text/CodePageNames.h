/// \file
/// The table of code-page names.
#pragma once

#include <cstddef>

namespace vorel::text {

struct CodePageName {
    unsigned int codePage;
    const char* name;  ///< in upper case
};

inline constexpr std::size_t kCodePageNameCount = 617;

extern const CodePageName kCodePageNames[kCodePageNameCount];

}  // namespace vorel::text
