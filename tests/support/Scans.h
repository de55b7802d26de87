/// \file
/// The result of a number scanner: the value, and the number of characters that the scanner read.
///
///     EXPECT_EQ((test::scan<TypeParam, int>("-7x", util::stringToInt)), (test::Scanned<int>{-7, 2}));
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "support/Widths.h"

namespace test {

/// Doubles are compared by their bits, so 0.0 and -0.0 differ.
inline std::uint64_t bitsOf(double value) {
    return std::bit_cast<std::uint64_t>(value);
}

inline std::vector<std::uint64_t> bitsOf(const std::vector<double>& values) {
    std::vector<std::uint64_t> bits;
    for (const double value : values) {
        bits.push_back(bitsOf(value));
    }
    return bits;
}

template <class Value>
bool isSame(Value a, Value b) {
    if constexpr (std::is_same_v<Value, double>) {
        return bitsOf(a) == bitsOf(b);
    } else {
        return a == b;
    }
}

template <class Value>
struct Scanned {
    Value value;
    std::ptrdiff_t read;

    bool operator==(const Scanned& other) const { return isSame(value, other.value) && read == other.read; }

    friend std::ostream& operator<<(std::ostream& out, const Scanned& scanned) {
        return out << scanned.value << " from " << scanned.read << " characters";
    }
};

/// Runs a scanner on a text. Also calls the scanner without an end pointer, and expects the same value.
template <class T, class Value>
Scanned<Value> scanUnits(const std::basic_string<T>& text, Value (*function)(const T*, T**) noexcept) {
    T* end = nullptr;
    const Value value = function(text.c_str(), &end);
    EXPECT_TRUE(isSame(function(text.c_str(), nullptr), value));
    return {value, end - text.c_str()};
}

template <class T, class Value>
Scanned<Value> scan(std::string_view units, Value (*function)(const T*, T**) noexcept) {
    return scanUnits<T, Value>(text<T>(units), function);
}

/// Runs a scanner that has a parameter for skipping white space after the number.
template <class T, class Value>
Scanned<Value> scan(std::string_view units, Value (*function)(const T*, const T**, bool) noexcept,
                    bool skipTrailingSpace) {
    const std::basic_string<T> text = test::text<T>(units);
    const T* end = nullptr;
    const Value value = function(text.c_str(), &end, skipTrailingSpace);
    EXPECT_EQ(function(text.c_str(), nullptr, skipTrailingSpace), value);
    return {value, end - text.c_str()};
}

}  // namespace test
