/// \file
/// What a scanner of numbers gave for a text, and how many characters it went through.
///
///     EXPECT_EQ((test::scan<TypeParam, int>("-7x", util::stringToInt)), (test::Scanned<int>{-7, 2}));
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/Widths.h"

namespace test {

/// Doubles are compared by their bits: the sign of zero counts.
inline std::uint64_t bitsOf(double value) {
    return std::bit_cast<std::uint64_t>(value);
}

template <class Value>
struct Scanned {
    Value value;
    std::ptrdiff_t read;

    bool operator==(const Scanned& other) const { return isSame(value, other.value) && read == other.read; }

    static bool isSame(Value a, Value b) {
        if constexpr (std::is_same_v<Value, double>) {
            return bitsOf(a) == bitsOf(b);
        } else {
            return a == b;
        }
    }

    friend std::ostream& operator<<(std::ostream& out, const Scanned& scanned) {
        return out << scanned.value << " after " << scanned.read << " characters";
    }
};

/// Runs a scanner over a text, and once more without an end, which changes nothing.
template <class T, class Value>
Scanned<Value> scan(std::basic_string_view<T> units, Value (*function)(const T*, T**) noexcept) {
    const std::basic_string<T> text(units);
    T* end = nullptr;
    const Scanned<Value> scanned = {function(text.c_str(), &end), end - text.c_str()};
    EXPECT_TRUE(Scanned<Value>::isSame(function(text.c_str(), nullptr), scanned.value)) << scanned;
    return scanned;
}

template <class T, class Value>
Scanned<Value> scan(std::string_view units, Value (*function)(const T*, T**) noexcept) requires(sizeof(T) > 1)
{
    return scan<T, Value>(std::basic_string_view<T>(text<T>(units)), function);
}

/// The same for the scanners that are told whether to skip the white space behind a number.
template <class T, class Value>
Scanned<Value> scan(std::string_view units, Value (*function)(const T*, const T**, bool) noexcept,
                    bool skipTrailingSpace) {
    const std::basic_string<T> text = test::text<T>(units);
    const T* end = nullptr;
    const Scanned<Value> scanned = {function(text.c_str(), &end, skipTrailingSpace), end - text.c_str()};
    EXPECT_EQ(function(text.c_str(), nullptr, skipTrailingSpace), scanned.value);
    return scanned;
}

}  // namespace test
