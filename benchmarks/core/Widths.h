/// \file
/// The names and texts of cases that exist for both character types.
#pragma once

#include <string>
#include <string_view>
#include <type_traits>

namespace bench {

template <class T>
std::string named(const std::string& what) {
    return what + (std::is_same_v<T, char> ? ", narrow" : ", wide");
}

template <class T>
std::basic_string<T> textOf(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

}  // namespace bench
