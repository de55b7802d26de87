/// \file
/// Strict UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF. (The library's decoder accepts such forms by
/// design, so it does not detect all damaged text.)
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tools {

/// The sequence at the start of a text: its size, and how much of it is well-formed.
struct Utf8Sequence {
    std::size_t size = 0;   ///< the size that the lead byte defines, 1 to 4 bytes; 0 without a lead byte
    std::size_t found = 0;  ///< number of valid bytes found, up to `size`

    [[nodiscard]] constexpr bool isWhole() const noexcept { return size != 0 && found == size; }
};

namespace detail {

constexpr std::size_t utf8SizeOfLead(unsigned char lead) noexcept {
    if (lead < 0x80) {
        return 1;
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return 0;
    }
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

/// Whether `second` may follow `lead`. This excludes overlong forms, surrogates and code points above U+10FFFF.
constexpr bool isSecondUtf8Byte(unsigned char lead, unsigned char second) noexcept {
    switch (lead) {
    case 0xE0: return second >= 0xA0 && second <= 0xBF;
    case 0xED: return second >= 0x80 && second <= 0x9F;
    case 0xF0: return second >= 0x90 && second <= 0xBF;
    case 0xF4: return second >= 0x80 && second <= 0x8F;
    default: return second >= 0x80 && second <= 0xBF;
    }
}

}  // namespace detail

constexpr Utf8Sequence utf8SequenceAt(std::string_view text) noexcept {
    if (text.empty()) {
        return {};
    }
    const auto byteAt = [text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const std::size_t size = detail::utf8SizeOfLead(byteAt(0));
    if (size < 2) {
        return {size, size};
    }
    if (text.size() < 2 || !detail::isSecondUtf8Byte(byteAt(0), byteAt(1))) {
        return {size, 1};
    }
    std::size_t found = 2;
    while (found < size && found < text.size() && (byteAt(found) & 0xC0) == 0x80) {
        ++found;
    }
    return {size, found};
}

/// The size of the well-formed sequence at the start of `text`, 1 to 4 bytes; 0 if there is none.
constexpr std::size_t utf8SequenceSize(std::string_view text) noexcept {
    const Utf8Sequence sequence = utf8SequenceAt(text);
    return sequence.isWhole() ? sequence.size : 0;
}

/// The code point of `sequence`, which must be one whole well-formed sequence.
constexpr std::uint32_t utf8CodePoint(std::string_view sequence) noexcept {
    constexpr std::uint32_t kLeadBits[] = {0x7F, 0x1F, 0x0F, 0x07};
    std::uint32_t codePoint = static_cast<unsigned char>(sequence[0]) & kLeadBits[sequence.size() - 1];
    for (const char c : sequence.substr(1)) {
        codePoint = codePoint << 6 | (static_cast<unsigned char>(c) & 0x3FU);
    }
    return codePoint;
}

struct Utf8Scan {
    std::size_t valid = 0;     ///< size in bytes of the well-formed sequences at the start of the text
    bool isTruncated = false;  ///< whether the text ends within the next sequence
};

/// Scans a text up to the first incomplete or invalid sequence.
Utf8Scan scanUtf8(std::string_view text) noexcept;

/// Whether the whole text is well-formed.
bool isUtf8(std::string_view text) noexcept;

}  // namespace tools
