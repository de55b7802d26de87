// Encodes bytes as hexadecimal text of both widths, and compares the text with the reference. Decodes text of both
// widths, and compares the bytes with the documented values of the characters.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "algorithms/HexText.h"
#include "support/BitTextReference.h"
#include "support/Input.h"

namespace {

using vorel::algorithms::decodeHexLenient;
using vorel::algorithms::decodeHexWithStatus;
using vorel::algorithms::encodeHex;
using vorel::algorithms::HexCase;

template <class T>
void encode(const std::string& bytes, HexCase letters, const fuzz::Placement& source, const fuzz::Placement& target) {
    const std::string expected = test::hexOf(test::Bytes(bytes.begin(), bytes.end()), letters == HexCase::Upper);
    const std::string_view all = bytes;
    const auto* const from = reinterpret_cast<const unsigned char*>(fuzz::inputPages().copy(all, source));
    fuzz::withEachKernel([&] {
        T* const out = fuzz::outputPages().allocate<T>(expected.size(), target);
        const T* const end = encodeHex(from, bytes.size(), letters, out);
        fuzz::check(fuzz::isText<T>(out, end, expected), "the text is as expected");
    });
}

/// The value of a digit, or the documented value of any other unit. Returns -1 if the decoder rejects the unit.
template <class T>
int valueOf(T unit, bool withStatus) {
    const auto number = static_cast<unsigned int>(static_cast<std::make_unsigned_t<T>>(unit));
    const std::size_t digit = std::string_view("0123456789abcdefABCDEF").find(static_cast<char>(number));
    if (number < 128 && digit != std::string_view::npos) {
        return static_cast<int>(digit < 16 ? digit : digit - 6);
    }
    if (!withStatus) {
        return 0;
    }
    // The decoder with a status uses the lower byte of a unit, but a unit above 0xFF never counts as a lower-case
    // letter. The decoder gives the characters from ':' to '@' the values 3 to 9.
    const std::size_t position = std::string_view(":;<=>?@ABCDEF").find(static_cast<char>(number & 0xFF));
    const std::size_t decimal = std::string_view("0123456789").find(static_cast<char>(number & 0xFF));
    if (decimal != std::string_view::npos) {
        return static_cast<int>(decimal);
    }
    return position == std::string_view::npos ? -1 : static_cast<int>(position) + 3;
}

/// Decodes a text. For the decoder that returns a status, the number of characters may be odd. This decoder then reads
/// the terminator as the second character of the last pair, so the decoding fails.
template <class T>
void decode(const std::basic_string<T>& text, bool withStatus, const fuzz::Placement& source,
            const fuzz::Placement& target) {
    const T* const from = fuzz::inputPages().copyText(text, source);
    fuzz::withEachKernel([&] {
        auto* const out = fuzz::outputPages().allocate<unsigned char>(text.size() / 2, target);
        bool decoded = true;
        if (withStatus) {
            decoded = decodeHexWithStatus(from, text.size(), out);
        } else {
            decodeHexLenient(from, text.size(), out);
        }
        for (std::size_t at = 0; at < text.size(); at += 2) {
            const int high = valueOf(text[at], withStatus);
            const int low = valueOf(text.c_str()[at + 1], withStatus);
            if (high < 0 || low < 0) {
                fuzz::check(!decoded, "the decoding of a text with an invalid pair fails");
                return;
            }
            fuzz::check(out[at / 2] == high * 16 + low, "each byte has the value of its two digits");
        }
        fuzz::check(decoded, "the decoding of a text without an invalid pair succeeds");
    });
}

template <class T>
void run(fuzz::Input& input) {
    const fuzz::Placement source = input.placement();
    const fuzz::Placement target = input.placement();
    if (input.flag()) {
        const HexCase letters = input.flag() ? HexCase::Upper : HexCase::Lower;
        encode<T>(input.rest(), letters, source, target);
        return;
    }
    const bool withStatus = input.flag();
    std::basic_string<T> text = input.restAsText<T>();
    if (!withStatus) {
        text.resize(text.size() / 2 * 2);
    }
    decode(text, withStatus, source, target);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    input.flag() ? run<char16_t>(input) : run<char>(input);
    return 0;
}
