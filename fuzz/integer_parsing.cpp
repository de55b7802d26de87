// Parses integers and hexadecimal numbers in text of both widths, and compares the results with the reference.

#include <cstdint>
#include <string>

#include "algorithms/NumberReading.h"
#include "support/NumberReference.h"
#include "support/Scans.h"

namespace {

using vorel::algorithms::coercesToInteger;
using vorel::algorithms::kMaxHexDigits;
using vorel::algorithms::parseHexDigits;
using vorel::algorithms::parseHexDigitsStepByStep;
using vorel::algorithms::readHex;
using vorel::algorithms::readInteger;
using vorel::algorithms::tryReadInteger;

template <class Value, class T>
void checkInteger(const fuzz::ScannedText<T>& text, bool skipTrailing) {
    fuzz::checkScan(text, test::readInteger(text.shape, std::is_signed_v<Value>, skipTrailing),
                    [=](const T* position, const T** end) { return readInteger<Value>(position, end, skipTrailing); });
}

template <class T>
void run(fuzz::Input& input) {
    const bool skipTrailing = input.flag();
    const bool allowLeadingZeros = input.flag();
    const fuzz::ScannedText<T> text(input);
    checkInteger<int>(text, skipTrailing);
    checkInteger<unsigned int>(text, skipTrailing);
    checkInteger<std::int64_t>(text, skipTrailing);
    checkInteger<std::uint64_t>(text, skipTrailing);

    T* end = nullptr;
    const int hex = readHex<T>(text.position, &end);
    const auto expectedHex = test::readHex(text.shape, kMaxHexDigits<T>);
    fuzz::check(hex == static_cast<int>(expectedHex.value), "the value of a hexadecimal number is as expected");
    fuzz::check(end == text.position + expectedHex.end, "a hexadecimal number ends at the expected position");

    const T* inBlock = text.position;
    const T* stepByStep = text.position;
    fuzz::check(parseHexDigits(inBlock) == parseHexDigitsStepByStep(stepByStep),
                "parsing digits in blocks and one by one gives the same value");
    fuzz::check(inBlock == stepByStep, "parsing digits in blocks and one by one ends at the same position");

    int value = 0;
    const auto expected = test::tryInteger(text.shape);
    fuzz::check(tryReadInteger(text.position, value) == expected.result, "the result of tryReadInteger is as expected");
    fuzz::check(value == expected.value, "the value that tryReadInteger stores is as expected");
    fuzz::check(coercesToInteger(text.position, allowLeadingZeros) == test::canBeInteger(text.shape, allowLeadingZeros),
                "the result of coercesToInteger is as expected");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    input.flag() ? run<char16_t>(input) : run<char>(input);
    return 0;
}
