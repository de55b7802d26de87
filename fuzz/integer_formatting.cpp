// Writes integers as text of both widths to buffers of 0 to 40 units, and compares the digits with the result of
// `std::to_string`.

#include <algorithm>
#include <cstdint>
#include <string>

#include "algorithms/NumberText.h"
#include "support/Input.h"

namespace {

using vorel::algorithms::magnitudeOf;
using vorel::algorithms::writeBoundedInteger;

/// Writes a number to a buffer of `size` units. The text is truncated if necessary. A terminator must follow the
/// text, and the last unit of the buffer must also be zero. The other units must not change.
template <class T>
void write(std::uint64_t magnitude, bool negative, std::size_t size, const fuzz::Placement& target) {
    const std::string all = (negative ? "-" : "") + std::to_string(magnitude);
    T* const out = fuzz::outputPages().allocate<T>(size, target);
    const std::basic_string<T> before(out, size);
    fuzz::check(writeBoundedInteger(magnitude, negative, out, size) == out, "the function returns the buffer");
    if (size != 0) {
        const std::string expected = all.substr(0, size - 1);
        fuzz::check(std::equal(expected.begin(), expected.end(), out), "the digits are as expected");
        fuzz::check(out[expected.size()] == 0 && out[size - 1] == 0,
                    "a zero follows the digits, and the last unit of the buffer is zero");
        for (std::size_t at = expected.size() + 1; at + 1 < size; ++at) {
            fuzz::check(out[at] == before[at], "the other units are unchanged");
        }
    }
}

template <class T>
void run(fuzz::Input& input) {
    const fuzz::Placement target = input.placement();
    const std::size_t size = input.upTo(40);
    const bool isSigned = input.flag();
    // The input also chooses a shift. Without a shift, nearly all numbers would have nineteen or twenty digits.
    const auto bits = input.bits<std::uint64_t>() >> input.upTo(63);
    const bool negative = isSigned && static_cast<std::int64_t>(bits) < 0;
    write<T>(isSigned ? magnitudeOf(static_cast<std::int64_t>(bits)) : bits, negative, size, target);
    if (isSigned && bits >> 63 == 0) {
        write<T>(magnitudeOf(-static_cast<std::int64_t>(bits)), bits != 0, size, target);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    input.flag() ? run<char16_t>(input) : run<char>(input);
    return 0;
}
