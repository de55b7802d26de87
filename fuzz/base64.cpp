// Compares the encoding and decoding of Base64 in text of both widths with the reference.

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "algorithms/Base64Text.h"
#include "support/BitTextReference.h"
#include "support/Input.h"

namespace {

using vorel::algorithms::Base64End;
using vorel::algorithms::Base64Step;
using vorel::algorithms::decodeBase64Step;
using vorel::algorithms::encodeBase64;
using vorel::algorithms::kBase64Alphabet;
using vorel::algorithms::kBase64StepCapacity;
using vorel::algorithms::kInvalidBase64;

const int* table() {
    static const std::vector<int> valuesOfAll = [] {
        std::vector<int> values(256, kInvalidBase64);
        for (std::size_t value = 0; value != kBase64Alphabet.size(); ++value) {
            values[static_cast<unsigned char>(kBase64Alphabet[value])] = static_cast<int>(value);
        }
        values['='] = 0;
        return values;
    }();
    return valuesOfAll.data();
}

template <class T>
void encode(const std::string& bytes, const fuzz::Placement& source, const fuzz::Placement& target) {
    const std::string expected = test::base64Of(test::Bytes(bytes.begin(), bytes.end()));
    const std::string_view all = bytes;
    const auto* const from = reinterpret_cast<const unsigned char*>(fuzz::inputPages().copy(all, source));
    fuzz::withEachKernel([&] {
        T* const out = fuzz::outputPages().allocate<T>(expected.size(), target);
        const T* const end = encodeBase64(from, bytes.size(), kBase64Alphabet.data(), '=', out);
        fuzz::check(fuzz::isText<T>(out, end, expected), "the text is as expected");
    });
}

/// Decodes a text in steps, each into a buffer of `capacity` bytes.
template <class T>
void decode(const std::basic_string<T>& text, std::size_t capacity, const fuzz::Placement& source,
            const fuzz::Placement& target) {
    std::vector<unsigned int> units;
    for (const T unit : text) {
        units.push_back(static_cast<std::make_unsigned_t<T>>(unit));
    }
    const test::Decoding expected = test::fromBase64(units);
    const T* const from = fuzz::inputPages().copyText(text, source);
    fuzz::withEachKernel([&] {
        const T* cursor = from;
        test::Bytes bytes;
        Base64Step step = {0, Base64End::None};
        while (step.end == Base64End::None) {
            auto* const out = fuzz::outputPages().allocate<unsigned char>(capacity, target);
            std::fill_n(out, capacity, static_cast<unsigned char>(0));
            step = decodeBase64Step(cursor, table(), '=', out, capacity);
            fuzz::check(step.written <= capacity, "the capacity is not exceeded");
            fuzz::check(step.end != Base64End::None || step.written % 24 == 0,
                        "every step except the last one writes a multiple of 24 bytes");
            fuzz::check(std::all_of(out + step.written, out + capacity, [](unsigned char value) { return value == 0; }),
                        "the rest of the buffer contains only zeros");
            bytes.insert(bytes.end(), out, out + step.written);
            fuzz::check(bytes.size() <= expected.bytes.size(), "no more bytes are written than expected");
        }
        fuzz::check(bytes == expected.bytes, "the bytes are as expected");
        fuzz::check((step.end == Base64End::NonByteUnit) == expected.threw,
                    "NonByteUnit is reported if, and only if, it is expected");
        fuzz::check(expected.threw || (step.end == Base64End::Invalid) == (expected.result != 0),
                    "Invalid is reported if, and only if, it is expected");
    });
}

template <class T>
void run(fuzz::Input& input) {
    const fuzz::Placement source = input.placement();
    const fuzz::Placement target = input.placement();
    if (input.flag()) {
        encode<T>(input.rest(), source, target);
    } else {
        const std::size_t capacity = kBase64StepCapacity + input.upTo(200);
        decode(fuzz::upToZero(input.restAsText<T>()), capacity, source, target);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    input.flag() ? run<char16_t>(input) : run<char>(input);
    return 0;
}
