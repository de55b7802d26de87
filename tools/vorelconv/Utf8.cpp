#include "Utf8.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "Filter.h"

namespace conv {

namespace {

/// What may follow a lead byte: so many trailing bytes, the first of them within these bounds.
struct Tail {
    unsigned int count;  // 0: no lead byte of a longer sequence
    unsigned char first;
    unsigned char last;
};

Tail tailOf(unsigned char lead) noexcept {
    if (lead < 0xC2 || lead > 0xF4) {
        return {};
    }
    if (lead < 0xE0) {
        return {1, 0x80, 0xBF};
    }
    const auto first = static_cast<unsigned char>(lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80);
    const auto last = static_cast<unsigned char>(lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF);
    return {lead < 0xF0 ? 2U : 3U, first, last};
}

/// How many of the trailing bytes that `tail` asks for are there.
unsigned int matching(const Tail& tail, std::string_view bytes) noexcept {
    unsigned int count = 0;
    while (count < tail.count && count < bytes.size()) {
        const auto byte = static_cast<unsigned char>(bytes[count]);
        const bool fits = count == 0 ? byte >= tail.first && byte <= tail.last : byte >= 0x80 && byte <= 0xBF;
        if (!fits) {
            break;
        }
        ++count;
    }
    return count;
}

std::size_t asciiRun(std::string_view text) noexcept {
    std::size_t count = 0;
    for (std::uint64_t eight = 0; text.size() - count >= sizeof eight; count += sizeof eight) {
        std::memcpy(&eight, text.data() + count, sizeof eight);
        if ((eight & 0x8080808080808080U) != 0) {
            break;
        }
    }
    while (count < text.size() && static_cast<unsigned char>(text[count]) < 0x80) {
        ++count;
    }
    return count;
}

}  // namespace

Utf8Scan scanUtf8(std::string_view text) noexcept {
    std::size_t index = 0;
    while (true) {
        index += asciiRun(text.substr(index));
        if (index == text.size()) {
            return {index, false};
        }
        const Tail tail = tailOf(static_cast<unsigned char>(text[index]));
        const std::string_view behind = text.substr(index + 1);
        const unsigned int found = matching(tail, behind);
        if (tail.count == 0 || found != tail.count) {
            return {index, tail.count != 0 && found == behind.size()};
        }
        index += 1 + std::size_t{tail.count};
    }
}

std::string_view wholeUtf8(std::string_view block, bool last) {
    const Utf8Scan scan = scanUtf8(block);
    if (scan.valid == block.size() || (scan.isCut && !last)) {
        return block.substr(0, scan.valid);
    }
    const auto lead = static_cast<unsigned char>(block[scan.valid]);
    const unsigned int expected = tailOf(lead).count;
    std::wstring message = expected == 0
                               ? L"a UTF-8 sequence is expected, which cannot begin with " + shown(block[scan.valid])
                               : L"a UTF-8 sequence of " + std::to_wstring(expected + 1) + L" bytes begins with " +
                                     shown(block[scan.valid]);
    if (expected != 0) {
        const std::string_view behind = block.substr(scan.valid + 1);
        const unsigned int found = matching(tailOf(lead), behind);
        message += found == behind.size() ? L", but the text ends within it"
                                          : L", but " + shown(behind[found]) + L" cannot follow there";
    }
    throw BadInput{scan.valid, message};
}

}  // namespace conv
