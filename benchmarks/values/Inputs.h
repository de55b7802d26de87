/// \file
/// Random inputs of the values benchmarks, with a fixed seed.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

inline constexpr std::size_t kNumbers = 100000;

/// Zero-terminated texts in one buffer.
template <class T>
class Texts {
public:
    void add(std::string_view text) {
        m_starts.push_back(m_units.size());
        for (const char c : text) {
            m_units.push_back(static_cast<T>(c));
        }
        m_units.push_back(0);
    }

    [[nodiscard]] std::size_t size() const { return m_starts.size(); }
    [[nodiscard]] const T* begin(std::size_t index) const { return m_units.data() + m_starts[index]; }

    /// The position of the terminator, for peers that need it.
    [[nodiscard]] const T* end(std::size_t index) const {
        return m_units.data() + (index + 1 < m_starts.size() ? m_starts[index + 1] : m_units.size()) - 1;
    }

private:
    std::vector<T> m_units;
    std::vector<std::size_t> m_starts;
};

/// The same texts in both widths.
struct BothWidths {
    void add(std::string_view text) {
        narrow.add(text);
        wide.add(text);
    }

    Texts<char> narrow;
    Texts<wchar_t> wide;
};

using Random = std::mt19937_64;

/// A random integer. Every digit count from `fewestDigits` to `mostDigits` is equally likely.
// cppcheck-suppress constParameter; a random number changes the generator
inline std::uint64_t integerOf(unsigned int fewestDigits, unsigned int mostDigits, Random& random) {
    std::uint64_t limit = 1;
    const std::uint64_t digits = fewestDigits + random() % (mostDigits - fewestDigits + 1);
    for (std::uint64_t digit = 1; digit < digits; ++digit) {
        limit *= 10;
    }
    // A number of twenty digits must be below 2^64.
    return limit + random() % (digits == 20 ? ~limit : limit * 9);
}

/// A finite number with random bits.
inline double randomBits(Random& random) {
    for (;;) {
        const auto value = std::bit_cast<double>(static_cast<std::uint64_t>(random()));
        if (value - value == 0) {  // false for infinities and NaN
            return value;
        }
    }
}

/// A number with three decimals, below a million.
inline double threeDecimals(Random& random) {
    return static_cast<double>(random() % 1000000000) / 1000.0;
}

inline BothWidths textsOf(const char* format, double (*value)(Random&)) {
    Random random(20261121);
    BothWidths texts;
    for (std::size_t number = 0; number < kNumbers; ++number) {
        char text[64];
        std::snprintf(text, sizeof text, format, value(random));
        texts.add(text);
    }
    return texts;
}

inline std::vector<double> doublesOf(double (*value)(Random&)) {
    Random random(20261121);
    std::vector<double> doubles(kNumbers);
    for (double& number : doubles) {
        number = value(random);
    }
    return doubles;
}

}  // namespace bench
