// Decodes UTF-8 to 16-bit units, in pieces with a capacity of 0 to 600 units, and compares the units with the
// reference.

#include <cstdint>
#include <string>
#include <string_view>

#include "algorithms/Utf8Streams.h"
#include "support/Input.h"
#include "support/Utf8Reference.h"

namespace {

using vorel::algorithms::Overwrite;
using LastPair = vorel::algorithms::Utf8Reader::LastPair;

struct Reading {
    std::basic_string_view<unsigned char> bytes;
    int length;
    std::size_t capacity;  ///< the capacity of a piece, in units
    fuzz::Placement source;
    fuzz::Placement target;
};

/// The number of units of the character that begins at `unit`, or 0 at the end.
std::size_t unitsOfNext(const test::DecodedText& expected, std::size_t unit) {
    for (const std::size_t units : expected.unitsOf) {
        if (unit == 0) {
            return units;
        }
        unit -= units;
    }
    return 0;
}

template <LastPair Rule, Overwrite Rest>
void decode(const Reading& reading, const test::DecodedText& expected) {
    constexpr std::size_t kOverhang = Rule == LastPair::Written ? 1 : 0;
    const unsigned char* const bytes = fuzz::inputPages().copy(reading.bytes, reading.source);
    const std::size_t size = reading.capacity + kOverhang;
    vorel::algorithms::Utf8Reader reader(bytes, reading.length);
    std::size_t done = 0;
    while (!reader.atEnd()) {
        auto* const out = fuzz::outputPages().allocate<char16_t>(size, reading.target);
        const auto noise = static_cast<char16_t>(reading.target.noise * 0x101);
        fuzz::check(reader.unitsLeft() == expected.units.size() - done, "the number of remaining units is correct");
        const std::size_t units = reader.read<Rule, Rest>(out, reading.capacity);
        fuzz::check(units <= size, "the capacity is not exceeded");
        fuzz::check(done + units <= expected.units.size(), "no more units are written than expected");
        for (std::size_t at = 0; at != units; ++at) {
            fuzz::check(out[at] == static_cast<char16_t>(expected.units[done + at]), "every unit is as expected");
        }
        for (std::size_t at = units; Rest == Overwrite::Forbidden && at != size; ++at) {
            fuzz::check(out[at] == noise, "unused capacity is unchanged");
        }
        done += units;
        if (reader.failed()) {
            break;
        }
        if (units == 0) {
            fuzz::check(unitsOfNext(expected, done) > reading.capacity, "a character that fits is read");
            return;
        }
    }
    fuzz::check(reader.failed() == expected.error.has_value(),
                "the decoding fails if, and only if, a failure is expected");
    fuzz::check(done == expected.units.size(), "all units are written");
    const auto position = static_cast<std::size_t>(reader.position() - bytes);
    fuzz::check(!reader.failed() || position == *expected.error,
                "after a failure, the position is the position of the invalid byte");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    Reading reading = {};
    reading.source = input.placement();
    reading.target = input.placement();
    reading.capacity = input.upTo(600);
    const bool isBounded = input.flag();
    const bool isWritten = input.flag();
    const bool isUntouched = input.flag();
    const std::size_t bound = input.upTo(4096);
    std::string text = input.rest();
    reading.length = isBounded ? static_cast<int>(bound) : -1;
    if (isBounded && text.size() < bound) {
        text.resize(bound);
    }
    // The decoder does not check trailing bytes, so a sequence may include the terminator and bytes after it.
    // `reading.bytes` contains only the bytes that the reference has read. The decoder must not read bytes of the next
    // page.
    text.append(vorel::algorithms::kLongestUtf8Sequence + 1, '\0');
    const test::DecodedText expected = test::decodeUtf8(text, reading.length);
    reading.bytes = {reinterpret_cast<const unsigned char*>(text.data()), expected.bytesRead};
    fuzz::withEachKernel([&] {
        if (isWritten) {
            decode<LastPair::Written, Overwrite::Allowed>(reading, expected);
        } else if (isUntouched) {
            decode<LastPair::Left, Overwrite::Forbidden>(reading, expected);
        } else {
            decode<LastPair::Left, Overwrite::Allowed>(reading, expected);
        }
    });
    return 0;
}
