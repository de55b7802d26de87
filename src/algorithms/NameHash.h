/// \file
/// The hash of a name, without regard to the case of A to Z.
#pragma once

#include <cstdint>
#include <type_traits>

#include "algorithms/Characters.h"

namespace vorel::algorithms {

/// A polynomial hash. It is 0 for an empty name and for null.
template <class T>
constexpr std::uint32_t nameHash(const T* name) noexcept {
    constexpr std::uint32_t kMultiplier = 31;
    std::uint32_t hash = 0;
    for (; name && *name; ++name) {
        hash = hash * kMultiplier + static_cast<std::make_unsigned_t<T>>(foldCase(*name));
    }
    return hash;
}

}  // namespace vorel::algorithms
