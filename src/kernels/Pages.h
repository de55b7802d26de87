/// \file
/// Reading blocks that may reach beyond the end of a text: nothing faults as long as they stay in a page of which the
/// text has a part. Compiled into each source by itself, so that sources for special processors may use it.
#pragma once

#include <cstdint>

namespace vorel::kernels {

constexpr std::uintptr_t kPageBytes = 4096;  // of the smallest page

/// Whether `size` bytes from `place` on lie in one page.
static inline bool isInPage(const void* place, std::uintptr_t size) noexcept {
    return reinterpret_cast<std::uintptr_t>(place) % kPageBytes <= kPageBytes - size;
}

}  // namespace vorel::kernels
