#include "values/DoubleFormat.h"

#include <cstddef>
#include <cstring>

namespace vorel::baseutil {

namespace {

/// Moves the characters from `position` on, including the terminator, by `distance`.
void moveTail(char* position, std::ptrdiff_t distance) noexcept {
    std::memmove(position + distance, position, std::strlen(position) + 1);
}

}  // namespace

char* makeDoubleFormatConsistent(char* text, unsigned long long capacity, util::FormattingOptions options) noexcept {
    const bool json = (options & util::FO_JSON) != 0;
    char* point = nullptr;
    std::ptrdiff_t zeros = 0;  // consecutive zeros after the point, directly before the exponent
    char* exponent = text;
    for (; *exponent && *exponent != 'e' && *exponent != 'E'; ++exponent) {
        if (*exponent == '.') {
            point = exponent;
            zeros = 0;
        } else {
            zeros = point && *exponent == '0' ? zeros + 1 : 0;
        }
    }
    if (!*exponent) {
        return text;
    }
    *exponent = 'e';
    const auto available = [&] {
        const std::size_t length = std::strlen(text);
        return capacity > length ? capacity - length : 0;
    };
    if (zeros > 0) {
        if (json && zeros == exponent - point - 1) {
            --zeros;
        }
        moveTail(exponent, -zeros);
        exponent -= zeros;
    } else if (json && point && point + 1 == exponent && available() >= 2) {
        moveTail(exponent, 1);
        *exponent++ = '0';
    } else if (json && !point && available() >= 3) {
        moveTail(exponent, 2);
        *exponent++ = '.';
        *exponent++ = '0';
    }
    constexpr std::size_t kShortExponent = 4;  // 'e', a sign, two digits
    if (std::strlen(exponent) == kShortExponent && available() >= 2) {
        moveTail(exponent + 2, 1);
        exponent[2] = '0';
    }
    return text;
}

}  // namespace vorel::baseutil
