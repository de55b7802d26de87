// Parses numbers with a fraction and an exponent in text of both widths, in blocks and step by step, and compares the
// results with the reference.

#include <cstdint>
#include <string>

#include "algorithms/NumberReading.h"
#include "support/NumberReference.h"
#include "support/Scans.h"

namespace {

using vorel::algorithms::coercesToDouble;
using vorel::algorithms::readDecimal;
using vorel::algorithms::readDecimalStepByStep;
using vorel::algorithms::tryReadDouble;

template <class T>
void run(fuzz::Input& input) {
    const bool allowLeadingZeros = input.flag();
    const fuzz::ScannedText<T> text(input);
    const auto expected = test::readDouble(text.shape);
    T* end = nullptr;
    fuzz::check(fuzz::isSame(readDecimal<T>(text.position, &end), expected.value), "the value is as expected");
    fuzz::check(end == text.position + expected.end, "the number ends where it should");
    fuzz::check(fuzz::isSame(readDecimalStepByStep<T>(text.position, &end), expected.value),
                "the value read step by step is as expected");
    fuzz::check(end == text.position + expected.end, "the number ends where it should");

    constexpr double kUntouched = -12345.0;
    double value = kUntouched;
    const auto result = test::tryDouble(text.shape);
    fuzz::check(tryReadDouble(text.position, value) == result.result, "a text is a number if the reference says so");
    fuzz::check(fuzz::isSame(value, result.value.value_or(kUntouched)), "the value of the number is as expected");
    fuzz::check(coercesToDouble(text.position, allowLeadingZeros) == test::canBeDouble(text.shape, allowLeadingZeros),
                "a text is convertible if the reference says so");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    input.flag() ? run<char16_t>(input) : run<char>(input);
    return 0;
}
