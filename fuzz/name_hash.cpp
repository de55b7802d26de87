// Compares the hash of a name of either width with the documented rule. Here the rule is computed with 64-bit numbers
// modulo 2^32, instead of relying on 32-bit overflow.

#include <cstdint>
#include <string>
#include <string_view>

#include "algorithms/Ascii.h"
#include "support/Input.h"

namespace {

template <class T>
void run(fuzz::Input& input) {
    const fuzz::Placement around = input.placement();
    const std::basic_string<T> name = fuzz::upToZero(input.restAsText<T>());
    std::uint64_t expected = 0;
    std::basic_string<T> other;  // the name with the case of its letters swapped
    for (const T unit : name) {
        const bool isCapital = unit >= 'A' && unit <= 'Z';
        const bool isSmall = unit >= 'a' && unit <= 'z';
        const std::uint64_t number = static_cast<std::make_unsigned_t<T>>(unit);
        expected = (expected * 31 + number + (isCapital ? 'a' - 'A' : 0)) % (std::uint64_t{1} << 32);
        other += static_cast<T>(isCapital ? unit + 32 : isSmall ? unit - 32 : unit);
    }
    fuzz::check(vorel::algorithms::nameHash(fuzz::inputPages().copyText(name, around)) == expected,
                "the hash follows the documented rule");
    fuzz::check(vorel::algorithms::nameHash(fuzz::inputPages().copyText(other, around)) == expected,
                "the hash ignores case");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    input.flag() ? run<char16_t>(input) : run<char>(input);
    return 0;
}
