// Parses booleans, and lists of numbers, of booleans and of ranges, in text of both widths, and compares the results
// with the reference.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "algorithms/BooleanReading.h"
#include "algorithms/ListReading.h"
#include "support/ListReference.h"
#include "support/Scans.h"

namespace {

using vorel::algorithms::coercesToBoolean;
using vorel::algorithms::coercesToIntegers;
using vorel::algorithms::readBoolean;
using vorel::algorithms::readBooleanList;
using vorel::algorithms::readDoubleList;
using vorel::algorithms::readIntegerList;
using vorel::algorithms::readRanges;

template <class T>
void readBooleanText(const fuzz::ScannedText<T>& text) {
    constexpr bool kAnyDigit = sizeof(T) > 1;
    const auto expected = test::readBoolean(text.shape, kAnyDigit);
    T* end = nullptr;
    fuzz::check(readBoolean<T>(text.position, &end) == expected.value, "the value of a boolean is as expected");
    fuzz::check(end == text.position + expected.end, "a boolean ends at the expected position");
    fuzz::check(coercesToBoolean(text.position) == test::canBeBoolean(text.shape),
                "the result of coercesToBoolean is as expected");
}

template <class T>
void readInteger(const fuzz::ScannedText<T>& text) {
    std::vector<std::uint32_t> values;
    const bool isWhole = readIntegerList(text.position, [&](unsigned int value) { values.push_back(value); });
    const auto expected = test::readIntegers(text.shape);
    fuzz::check(isWhole == expected.whole && values == expected.values, "the integers are as expected");
    fuzz::check(coercesToIntegers(text.position) == test::canBeIntegers(text.shape),
                "the result of coercesToIntegers is as expected");
}

template <class T>
void readDouble(const fuzz::ScannedText<T>& text) {
    std::vector<double> values;
    const bool isWhole = readDoubleList(text.position, [&](double value) { values.push_back(value); });
    const auto expected = test::readDoubles(text.shape);
    fuzz::check(isWhole == expected.whole, "readDoubleList fails if, and only if, a word is too long");
    fuzz::check(std::equal(values.begin(), values.end(), expected.values.begin(), expected.values.end(), fuzz::isSame),
                "the numbers are as expected");
}

template <class T>
void readBooleans(const fuzz::ScannedText<T>& text) {
    std::vector<bool> values;
    const bool isWhole = readBooleanList(text.position, [&](bool value) { values.push_back(value); });
    const auto expected = test::readBooleans(text.shape);
    fuzz::check(isWhole == expected.whole && values == expected.values, "the booleans are as expected");
}

template <class T>
void readRangeList(const fuzz::ScannedText<T>& text) {
    std::vector<int> starts;
    std::vector<int> ends;
    const std::basic_string_view<T> rejected = readRanges(
        text.position, [&](int start) { starts.push_back(start); }, [&](int end) { ends.push_back(end); });
    const auto expected = test::readRanges(text.shape);
    fuzz::check(starts == expected.starts && ends == expected.ends, "the ranges are as expected");
    fuzz::check(test::shapeOf(rejected) == expected.rejected, "the rejected item is as expected");
}

template <class T>
void run(fuzz::Input& input) {
    const std::size_t kind = input.upTo(4);
    const fuzz::ScannedText<T> text(input);
    switch (kind) {
    case 0: return readBooleanText(text);
    case 1: return readInteger(text);
    case 2: return readDouble(text);
    case 3: return readBooleans(text);
    default: return readRangeList(text);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    input.flag() ? run<char16_t>(input) : run<char>(input);
    return 0;
}
