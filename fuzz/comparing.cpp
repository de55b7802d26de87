// Tests the comparison of texts of both widths, with all combinations of rules, and the comparison of versions. The
// results must be the results of the reference.

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "algorithms/TextOrder.h"
#include "support/Scans.h"
#include "support/TextReference.h"

namespace {

using vorel::algorithms::compareNonNull;
using vorel::algorithms::compareTexts;
using vorel::algorithms::OrderRules;
using vorel::algorithms::Steps;
using vorel::algorithms::versionAtLeast;

int signOfNumber(int number) noexcept {
    return (number > 0 ? 1 : 0) - (number < 0 ? 1 : 0);
}

template <class T>
void run(fuzz::Input& input) {
    const fuzz::Placement aroundA = input.placement();
    const fuzz::Placement aroundB = input.placement();
    const OrderRules rules = {input.flag(), input.flag(), input.flag()};
    const std::size_t split = input.upTo(512);
    const std::basic_string<T> a = fuzz::upToZero(input.text<T>(split));
    const std::basic_string<T> b = fuzz::upToZero(input.restAsText<T>());
    const T* const first = fuzz::inputPages().copyText(a, aroundA);
    const T* const second = fuzz::outputPages().copyText(b, aroundB);

    // Narrow text is compared as signed numbers.
    using Compared = std::conditional_t<sizeof(T) == 1, signed char, T>;
    const auto* const left = reinterpret_cast<const Compared*>(first);
    const auto* const right = reinterpret_cast<const Compared*>(second);
    const int expected = test::compared<T>(a, b, {rules.ignoreCase, rules.numeric, rules.slashesEqual});
    fuzz::check(signOfNumber(compareTexts(left, right, rules)) == expected, "the order is as expected");
    fuzz::check(signOfNumber(compareTexts(right, left, rules)) == -expected,
                "the order is reversed if the texts are swapped");
    fuzz::check(compareTexts(left, right, rules) == compareNonNull<Steps::Units>(left, right, rules),
                "comparing in blocks and unit by unit gives the same difference");

    const std::string version = test::shapeOf(std::basic_string_view<T>(a));
    const std::string required = test::shapeOf(std::basic_string_view<T>(b));
    fuzz::check(versionAtLeast(first, second) == test::isVersionAtLeast(version, required),
                "the result of versionAtLeast is as expected");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    input.flag() ? run<char16_t>(input) : run<char>(input);
    return 0;
}
