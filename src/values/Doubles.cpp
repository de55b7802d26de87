#include "vorel/values/Doubles.h"

#include <bit>
#include <cmath>
#include <cstdint>

namespace vorel::util {

double round(double value) noexcept {
    const double below = std::floor(value);
    const double above = std::ceil(value);
    return above - value >= value - below ? below : above;
}

unsigned int doubleHashCode(double value) noexcept {
    constexpr unsigned int kMultiplier = 31;
    unsigned int hash = 0;
    for (auto bytes = std::bit_cast<std::uint64_t>(value), left = std::uint64_t{8}; left != 0; --left, bytes >>= 8) {
        hash = hash * kMultiplier + static_cast<unsigned int>(bytes & 0xFF);
    }
    return hash;
}

}  // namespace vorel::util
