// Parses texts of both widths as decimal numbers, in blocks and step by step, and compares the results with the
// reference.

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
    fuzz::check(fuzz::isSame(readDecimal<T>(text.position, &end), expected.value),
                "the value from readDecimal is as expected");
    fuzz::check(end == text.position + expected.end, "readDecimal ends at the expected position");
    fuzz::check(fuzz::isSame(readDecimalStepByStep<T>(text.position, &end), expected.value),
                "the value from readDecimalStepByStep is as expected");
    fuzz::check(end == text.position + expected.end, "readDecimalStepByStep ends at the expected position");

    constexpr double kUntouched = -12345.0;
    double value = kUntouched;
    const auto result = test::tryDouble(text.shape);
    fuzz::check(tryReadDouble(text.position, value) == result.result, "the result of tryReadDouble is as expected");
    fuzz::check(fuzz::isSame(value, result.value.value_or(kUntouched)),
                "the value that tryReadDouble stores is as expected");
    fuzz::check(coercesToDouble(text.position, allowLeadingZeros) == test::canBeDouble(text.shape, allowLeadingZeros),
                "the result of coercesToDouble is as expected");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    input.flag() ? run<char16_t>(input) : run<char>(input);
    return 0;
}
