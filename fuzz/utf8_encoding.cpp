// Encodes 16-bit units as UTF-8, in pieces of up to 640 bytes, and compares the bytes with the reference.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "algorithms/Utf8Streams.h"
#include "support/Input.h"
#include "support/Utf8Reference.h"

namespace {

using vorel::algorithms::Surrogates;

struct Writing {
    std::u16string_view units;
    int length;
    std::size_t enough;    ///< a piece ends when it has at least this number of bytes
    std::size_t capacity;  ///< the maximum number of bytes of a piece
    fuzz::Placement source;
    fuzz::Placement target;
};

/// The number of bytes of the sequence at `at`.
std::size_t sequenceAt(const std::string& text, std::size_t at) {
    const auto isTrailing = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
    const auto next = text.begin() + static_cast<std::ptrdiff_t>(at) + 1;
    return static_cast<std::size_t>(std::find_if_not(next, text.end(), isTrailing) - next) + 1;
}

template <Surrogates Rule>
void encode(const Writing& writing, const std::string& expected) {
    const char16_t* const units = fuzz::inputPages().copy(writing.units, writing.source);
    vorel::algorithms::Utf8Writer<Rule, char16_t> writer(units, writing.length);
    std::size_t done = 0;
    while (!writer.atEnd()) {
        auto* const out = fuzz::outputPages().allocate<unsigned char>(writing.capacity, writing.target);
        fuzz::check(writer.bytesLeft() == expected.size() - done, "the number of remaining bytes is correct");
        const std::size_t bytes = writer.write(out, writing.enough, writing.capacity);
        fuzz::check(bytes <= writing.capacity, "the capacity is not exceeded");
        fuzz::check(done + bytes <= expected.size(), "no more bytes are written than expected");
        const std::string_view piece(reinterpret_cast<const char*>(out), bytes);
        fuzz::check(piece == std::string_view(expected).substr(done, bytes), "every byte is as expected");
        done += bytes;
        if (bytes < writing.enough && !writer.atEnd()) {
            fuzz::check(bytes + sequenceAt(expected, done) > writing.capacity, "a sequence that fits is written");
        }
        if (bytes == 0) {
            return;
        }
    }
    fuzz::check(done == expected.size(), "all bytes are written");
}

/// The units up to and including the first zero.
std::wstring upToZero(const std::wstring& units) {
    return units.substr(0, units.find(L'\0') + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    Writing writing = {};
    writing.source = input.placement();
    writing.target = input.placement();
    writing.enough = input.upTo(600);
    writing.capacity = writing.enough + input.upTo(40);
    const bool isBounded = input.flag();
    const bool isPaired = input.flag();
    const std::size_t bound = input.upTo(4096);
    std::u16string text = input.restAsText<char16_t>();
    if (isBounded && isPaired) {
        text.resize(std::max(text.size(), bound));
        writing.length = static_cast<int>(bound);
    } else {
        writing.length = -1;
    }
    // A surrogate pair that begins at the last unit before the bound is read completely, so one unit after the bound
    // may be read.
    text.append(2, u'\0');
    const std::wstring units(text.begin(), text.end());
    if (isPaired) {
        const test::EncodedText expected = test::encodeUtf16(units, writing.length);
        writing.units = std::u16string_view(text).substr(0, expected.unitsRead);
        fuzz::withEachKernel([&] { encode<Surrogates::Paired>(writing, expected.bytes); });
    } else {
        writing.units = std::u16string_view(text).substr(0, upToZero(units).size());
        fuzz::withEachKernel([&] { encode<Surrogates::Single>(writing, test::encodeUnits(units)); });
    }
    return 0;
}
