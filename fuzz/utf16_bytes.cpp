// Counts the UTF-16 units before the first zero unit, in bytes at any address, and writes units as bytes in either byte
// order.

#include <cstdint>
#include <string>
#include <string_view>

#include "algorithms/Utf16.h"
#include "support/Input.h"

namespace {

void count(const std::string& bytes, const fuzz::Placement& around) {
    std::size_t expected = 0;
    while (2 * expected + 1 < bytes.size() && (bytes[2 * expected] != 0 || bytes[2 * expected + 1] != 0)) {
        ++expected;
    }
    const std::string_view all = bytes;
    const char* const placed = fuzz::inputPages().copy(all, around);
    const auto* const from = reinterpret_cast<const unsigned char*>(placed);
    fuzz::check(vorel::algorithms::unitsBeforeZero(from, bytes.size()) == expected,
                "unitsBeforeZero returns the number of units before the first zero");
}

void write(const std::u16string& units, bool littleEndian, const fuzz::Placement& source,
           const fuzz::Placement& target) {
    const std::u16string_view all = units;
    const char16_t* const from = fuzz::inputPages().copy(all, source);
    auto* const out = fuzz::outputPages().allocate<unsigned char>(2 * units.size(), target);
    vorel::algorithms::writeUtf16Bytes(from, units.size(), littleEndian, out);
    for (std::size_t at = 0; at != units.size(); ++at) {
        const unsigned int first = out[2 * at];
        const unsigned int second = out[2 * at + 1];
        fuzz::check(units[at] == (littleEndian ? second << 8 | first : first << 8 | second),
                    "each unit has the value of its two bytes");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const fuzz::Placement source = input.placement();
    const fuzz::Placement target = input.placement();
    if (input.flag()) {
        count(input.rest(), source);
    } else {
        const bool littleEndian = input.flag();
        write(input.restAsText<char16_t>(), littleEndian, source, target);
    }
    return 0;
}
