// Writes doubles as text of both widths, and compares the text with the reference, which computes the exact digits.
// Also normalises arbitrary texts as if they were texts of doubles.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "algorithms/NumberText.h"
#include "support/DoubleTextReference.h"
#include "support/Input.h"
#include "values/DoubleFormat.h"

namespace {

using vorel::algorithms::DoubleForm;
using vorel::algorithms::kDoubleCapacity;
using vorel::algorithms::Rest;
using vorel::algorithms::writeDouble;
using vorel::baseutil::makeDoubleFormatConsistent;

template <class T>
void write(double value, DoubleForm form, const std::string& expected, const fuzz::Placement& target) {
    T* const out = fuzz::outputPages().allocate<T>(kDoubleCapacity, target);
    const std::basic_string<T> before(out, kDoubleCapacity);
    const T* const end = writeDouble<Rest::Unchanged>(value, form, out);
    fuzz::check(fuzz::isText<T>(out, end, expected) && *end == 0, "the text is as expected");
    fuzz::check(std::equal(end + 1, static_cast<const T*>(out + kDoubleCapacity), before.data() + (end + 1 - out)),
                "the units after the terminator are unchanged");
    T* const local = fuzz::outputPages().allocate<T>(kDoubleCapacity, target);
    const T* const localEnd = writeDouble<Rest::Unspecified>(value, form, local);
    fuzz::check(fuzz::isText<T>(local, localEnd, expected) && *localEnd == 0,
                "the text is as expected with Rest::Unspecified");
}

template <class T>
void writeInAllForms(fuzz::Input& input) {
    const fuzz::Placement target = input.placement();
    const auto value = std::bit_cast<double>(input.bits<std::uint64_t>());
    if (!std::isfinite(value) || value == 0.0) {
        return;
    }
    const bool json = input.flag();
    const std::string expected = test::textOfDouble(value, json);
    write<T>(value, json ? DoubleForm::Json : DoubleForm::Plain, expected, target);

    // `DoubleForm::Raw` gives the text before normalisation. Its exponent may have only two digits, and its point may
    // have no digit after it. Normalising the text must give the expected text.
    constexpr std::size_t kCapacity = 64;
    char* const text = fuzz::outputPages().allocate<char>(kCapacity, target);
    writeDouble<Rest::Unspecified>(value, DoubleForm::Raw, text);
    makeDoubleFormatConsistent(text, kCapacity, json ? vorel::util::FO_JSON : vorel::util::FO_Default);
    fuzz::check(text == expected, "normalising the raw text gives the expected text");
}

/// Normalises any text in a buffer that has space for up to four more characters. Nothing may be written past the
/// buffer, and the result must have a terminator.
void bringIntoForm(fuzz::Input& input) {
    const fuzz::Placement target = input.placement();
    const auto options = input.flag() ? vorel::util::FO_JSON : vorel::util::FO_Default;
    const std::size_t spare = input.upTo(4);
    const std::string text = fuzz::upToZero(input.rest());
    const std::size_t capacity = text.size() + 1 + spare;
    char* const buffer = fuzz::outputPages().allocate<char>(capacity, target);
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    fuzz::check(makeDoubleFormatConsistent(buffer, capacity, options) == buffer, "the function returns the buffer");
    const std::string_view formed(buffer, strnlen(buffer, capacity));
    fuzz::check(formed.size() < capacity, "the terminator is in the buffer");
    const bool hasExponent = text.find_first_of("eE") != std::string::npos;
    fuzz::check(hasExponent || formed == text, "text without an exponent is unchanged");
    fuzz::check(formed.substr(0, formed.find('e')).find_first_of("eE") == std::string_view::npos,
                "the first exponent marker is in lower case");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    if (input.flag()) {
        bringIntoForm(input);
    } else {
        input.flag() ? writeInAllForms<char16_t>(input) : writeInAllForms<char>(input);
    }
    return 0;
}
