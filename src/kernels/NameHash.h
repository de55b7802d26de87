/// \file
/// The hash of a name whose letters A to Z are the same as a to z.
#pragma once

#include <cstdint>
#include <type_traits>

#include "kernels/Characters.h"

namespace vorel::kernels {

/// That of no name, and of null, is 0.
template <class T>
constexpr std::uint32_t nameHash(const T* name) noexcept {
    constexpr std::uint32_t kMultiplier = 31;
    std::uint32_t hash = 0;
    for (; name && *name; ++name) {
        hash = hash * kMultiplier + static_cast<std::make_unsigned_t<T>>(foldCase(*name));
    }
    return hash;
}

}  // namespace vorel::kernels
