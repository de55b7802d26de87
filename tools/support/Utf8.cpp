#include "support/Utf8.h"

#include <cstdint>
#include <cstring>

namespace tools {

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
        const Utf8Sequence sequence = utf8SequenceAt(rest);
        if (!sequence.isWhole()) {
            return {index, sequence.size != 0 && sequence.found == rest.size()};
        }
        index += sequence.size;
    }
}

bool isUtf8(std::string_view text) noexcept {
    return scanUtf8(text).valid == text.size();
}

}  // namespace tools
