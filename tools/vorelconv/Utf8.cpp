#include "Utf8.h"

#include <cstdint>
#include <cstring>

#include "Filter.h"
#include "support/Utf8.h"

namespace conv {

namespace {

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
        const std::string_view rest = text.substr(index);
        const tools::Utf8Sequence sequence = tools::utf8SequenceAt(rest);
        if (!sequence.isWhole()) {
            return {index, sequence.size != 0 && sequence.found == rest.size()};
        }
        index += sequence.size;
    }
}

std::string_view wholeUtf8(std::string_view block, bool last) {
    const Utf8Scan scan = scanUtf8(block);
    if (scan.valid == block.size() || (scan.isTruncated && !last)) {
        return block.substr(0, scan.valid);
    }
    const std::string_view rest = block.substr(scan.valid);
    const tools::Utf8Sequence sequence = tools::utf8SequenceAt(rest);
    if (sequence.size == 0) {
        throw BadInput{scan.valid, L"invalid UTF-8: a sequence cannot begin with " + quoted(rest[0])};
    }
    std::wstring message =
        L"invalid UTF-8: a " + std::to_wstring(sequence.size) + L"-byte sequence begins with " + quoted(rest[0]);
    message += sequence.found == rest.size() ? L", but the text ends within it"
                                             : L", but " + quoted(rest[sequence.found]) + L" cannot follow";
    throw BadInput{scan.valid, message};
}

}  // namespace conv
