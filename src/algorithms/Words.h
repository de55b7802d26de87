/// \file
/// Compares text with ASCII words, without regard to the case of A to Z.
#pragma once

#include <string_view>

#include "algorithms/Characters.h"

namespace vorel::algorithms {

/// Whether the whole zero-terminated text is `word`, which is in lower case.
template <class T>
constexpr bool equalsWord(const T* text, std::string_view word) noexcept {
    for (const char c : word) {
        if (foldCase(*text) != static_cast<T>(c)) {
            return false;
        }
        ++text;
    }
    return *text == 0;
}

}  // namespace vorel::algorithms
