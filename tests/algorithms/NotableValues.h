/// \file
/// Values for tests of UTF-8 and UTF-16, up to the largest value of 31 bits. They include the first and the last value
/// of each form of the two encodings.
#pragma once

#include <cstdint>
#include <vector>

namespace test {

/// The powers of two and their neighbours, the limits of the surrogates and of Unicode, and the largest value.
inline std::vector<std::uint32_t> notableValues() {
    std::vector<std::uint32_t> values;
    for (unsigned int bit = 0; bit < 31; ++bit) {
        const std::uint32_t power = 1u << bit;
        values.insert(values.end(), {power - 1, power, power + 1});
    }
    values.insert(values.end(), {0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0x10FFFF, 0x110000, 0x7FFFFFFF});
    return values;
}

}  // namespace test
