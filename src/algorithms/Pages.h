/// \file
/// Reads in blocks may extend past the end of a text: they do not fault while they stay in a page that holds a part of
/// the text. Functions are static, so that sources for special processors can use them.
#pragma once

#include <cstdint>

namespace vorel::algorithms {

constexpr std::uintptr_t kPageBytes = 4096;  // the smallest page size

/// Whether `size` bytes from `position` lie in one page.
static inline bool isInPage(const void* position, std::uintptr_t size) noexcept {
    return reinterpret_cast<std::uintptr_t>(position) % kPageBytes <= kPageBytes - size;
}

}  // namespace vorel::algorithms
