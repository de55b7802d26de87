// Compares the encoding and decoding of Daylight text of both widths with the reference.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "algorithms/DaylightText.h"
#include "support/BitTextReference.h"
#include "support/Input.h"

namespace {

using vorel::algorithms::bytesOfLastGroup;
using vorel::algorithms::daylightLength;
using vorel::algorithms::decodeDaylightGroups;
using vorel::algorithms::encodeDaylight;

template <class T>
void encode(const std::string& bytes, const fuzz::Placement& source, const fuzz::Placement& target) {
    const std::string expected = test::daylightOf(test::Bytes(bytes.begin(), bytes.end()));
    fuzz::check(daylightLength(bytes.size()) == expected.size(), "the computed length is the length of the text");
    const std::string_view all = bytes;
    const auto* const from = reinterpret_cast<const unsigned char*>(fuzz::inputPages().copy(all, source));
    fuzz::withEachKernel([&] {
        T* const out = fuzz::outputPages().allocate<T>(expected.size(), target);
        const T* const end = encodeDaylight(from, bytes.size(), out);
        fuzz::check(fuzz::isText<T>(out, end, expected), "the text is as expected");
    });
}

/// Decodes the complete groups of four characters of a text. The text may contain zeros, and a terminator follows it.
template <class T>
void decode(const std::basic_string<T>& text, const fuzz::Placement& source, const fuzz::Placement& target) {
    const std::size_t count = text.size() / 4 * 4;
    std::vector<unsigned int> units;
    for (std::size_t at = 0; at != count; ++at) {
        units.push_back(static_cast<std::make_unsigned_t<T>>(text[at]));
    }
    const test::Bytes expected = test::bytesOfCharacters(units, test::kDaylightCharacters);
    const T* const from = fuzz::inputPages().copyText(text, source);
    fuzz::withEachKernel([&] {
        auto* const out = fuzz::outputPages().allocate<unsigned char>(expected.size(), target);
        decodeDaylightGroups(from, count, out);
        fuzz::check(std::equal(expected.begin(), expected.end(), out), "the bytes are as expected");
    });
}

template <class T>
void run(fuzz::Input& input) {
    const fuzz::Placement source = input.placement();
    const fuzz::Placement target = input.placement();
    if (input.flag()) {
        encode<T>(input.rest(), source, target);
        return;
    }
    const T last = static_cast<T>(input.bits<std::uint16_t>());
    const std::size_t bytes = bytesOfLastGroup(last);
    fuzz::check(bytes == (last == '1'   ? 1u
                          : last == '2' ? 2u
                          : last == '3' ? 3u
                                        : 0u),
                "bytesOfLastGroup returns the value of the digits 1 to 3, and 0 for other units");
    decode(input.restAsText<T>(), source, target);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    input.flag() ? run<char16_t>(input) : run<char>(input);
    return 0;
}
