/// \file
/// Removes white space from both ends of a text.
#pragma once

#include <string_view>

#include "algorithms/Characters.h"

namespace vorel::algorithms {

template <class T>
constexpr std::basic_string_view<T> trimmed(std::basic_string_view<T> text) noexcept {
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

}  // namespace vorel::algorithms
