/// \file
/// The cases of the text family, one function per file, and their common inputs. Results are nanoseconds per input; the
/// inputs have 24 bytes to 16 MiB.
#pragma once

#include <cstdint>
#include <random>
#include <string>

#include "support/Frame.h"

namespace bench {

void binaryToText(Family& family);
void urls(Family& family);
void unicode(Family& family);

inline constexpr std::size_t kLarge = 1 << 20;
inline constexpr std::size_t kSmall = 24;

inline std::string sizeName(std::size_t size) {
    return size == kLarge ? "1 MiB" : std::to_string(size) + " bytes";
}

/// Random bytes with a fixed seed.
inline std::string randomBytes(std::size_t count) {
    std::mt19937_64 random(20261121);
    std::string bytes(count, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
    return bytes;
}

}  // namespace bench
