#include "vorel/text/Daylight.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kernels/SixBits.h"
#include "text/SixBitText.h"
#include "vorel/exceptions/Exception.h"

namespace vorel::util {

namespace {

/// The value of a character; 0 for one that the table does not know.
unsigned int valueOf(wchar_t unit) noexcept {
    using kernels::kDaylightValues;
    const bool isKnown =
        unit < std::size(kDaylightValues.values) && kDaylightValues.values[unit] != kernels::SixBitValues::kNone;
    return isKnown ? kDaylightValues.values[unit] : 0;
}

void decodeGroups(std::wstring_view text, Array<unsigned char>& bytes) noexcept {
    constexpr std::size_t kGroupsBetweenBlocks = 8;
    unsigned char* out = bytes.data();
    while (!text.empty()) {
        const std::size_t blocks = text::decodeWholeBlocks(text.data(), kernels::kDaylightRows,
                                                           kernels::Strangers::Zeros, out, text.size() / 4 * 3);
        text.remove_prefix(blocks * text::kBlockCharacters);
        out += blocks * text::kBlockBytes;
        for (std::size_t group = 0; group < kGroupsBetweenBlocks && !text.empty(); ++group, out += 3) {
            kernels::decodeFour(valueOf(text[0]), valueOf(text[1]), valueOf(text[2]), valueOf(text[3]), out);
            text.remove_prefix(4);
        }
    }
}

}  // namespace

Daylight& Daylight::operator=(const Daylight&) = default;

void Daylight::Encode(const Array<unsigned char>& bytes, BaseString<wchar_t>& text) {
    const char* const alphabet = kernels::kDaylightAlphabet.data();
    const std::size_t count = bytes.size();
    const std::size_t rest = count % 3;
    wchar_t* out = text::roomFor((std::uint64_t{count} + 2) / 3 * 4 + 1, text);
    out = text::encodeWholeGroups(bytes.data(), count, alphabet, out);
    if (rest != 0) {
        const unsigned char* const tail = bytes.data() + (count - rest);
        kernels::encodeThree(tail[0], rest == 2 ? tail[1] : 0u, 0u, alphabet, out);
        out += 4;
    }
    *out++ = static_cast<wchar_t>(rest == 0 ? '3' : '0' + rest);
    text::endAt(out, text);
}

int Daylight::Decode(const BaseString<wchar_t>& text, Array<unsigned char>& bytes) {
    const std::wstring_view whole = text.view();
    if (whole.size() % 4 != 1) {
        throw Exception(L"Daylight64::Decode: Invalid ASCII string (length wrong)");
    }
    const auto most = static_cast<unsigned int>(whole.size() / 4 * 3);
    bytes.setCount(most);
    decodeGroups(whole.substr(0, whole.size() - 1), bytes);
    const unsigned int last = whole.back() - static_cast<unsigned int>('0');
    if (last == 0 || last > 3 || most + last < 3) {
        throw Exception(L"Daylight64::Decode: Invalid ASCII string (unexepected charater at end)");
    }
    bytes.setCount(most + last - 3);
    return 0;
}

}  // namespace vorel::util
