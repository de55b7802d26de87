/// \file
/// Random numbers and bytes, and random texts from an alphabet. The same seed and the same calls give the same results.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace test {

class RandomText {
public:
    explicit RandomText(std::uint64_t seed) : m_engine(seed) {}

    std::size_t below(std::size_t end) { return m_engine() % end; }
    bool oneIn(std::size_t chances) { return below(chances) == 0; }
    std::uint64_t bits() { return m_engine(); }

    char oneOf(std::string_view alphabet) { return alphabet[below(alphabet.size())]; }

    std::string from(std::string_view alphabet, std::size_t length) {
        std::string text;
        while (text.size() < length) {
            text += oneOf(alphabet);
        }
        return text;
    }

    std::string digits(std::size_t count) { return from("0123456789", count); }

    std::vector<unsigned char> bytes(std::size_t count) {
        std::vector<unsigned char> bytes(count);
        for (unsigned char& byte : bytes) {
            byte = static_cast<unsigned char>(this->bits());
        }
        return bytes;
    }

private:
    std::mt19937_64 m_engine;
};

}  // namespace test
