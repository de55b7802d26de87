#include "vorellog/Utf8.h"

#include <cstdint>
#include <cstring>

#include "support/Utf8.h"

namespace vorellog {

namespace {

constexpr std::size_t kWord = sizeof(std::uint64_t);
constexpr std::uint64_t kEachByte = 0x0101010101010101;

std::uint64_t wordAt(const char* place) noexcept {
    std::uint64_t word = 0;
    std::memcpy(&word, place, kWord);
    return word;
}

unsigned char byteAt(std::string_view text, std::size_t index) noexcept {
    return static_cast<unsigned char>(text[index]);
}

/// Whether all eight bytes are between the blank and '~'; also says no where a carry between bytes misleads it.
bool isPlain(std::uint64_t word) noexcept {
    constexpr std::uint64_t kHighBits = kEachByte * 0x80;
    return ((word | (word + kEachByte) | (word - kEachByte * 0x20)) & kHighBits) == 0;
}

/// How many bytes of `text` can be copied as they are.
std::size_t plainSize(std::string_view text) noexcept {
    std::size_t size = 0;
    while (text.size() - size >= kWord && isPlain(wordAt(text.data() + size))) {
        size += kWord;
    }
    while (size != text.size() && text[size] >= ' ' && text[size] <= '~') {
        ++size;
    }
    return size;
}

void appendEscape(std::string& out, unsigned char byte) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    out += "\\x";
    out += kDigits[byte / 16];
    out += kDigits[byte % 16];
}

/// DEL, and U+0080 to U+009F, which some terminals obey as they obey ESC.
bool isControl(std::string_view sequence) noexcept {
    const unsigned char first = byteAt(sequence, 0);
    return sequence.size() == 1 ? (first < ' ' && first != '\t') || first == 0x7F
                                : first == 0xC2 && byteAt(sequence, 1) < 0xA0;
}

}  // namespace

bool isUtf8(std::string_view text) noexcept {
    constexpr std::uint64_t kHighBits = kEachByte * 0x80;
    while (!text.empty()) {
        if (text.size() >= kWord && (wordAt(text.data()) & kHighBits) == 0) {
            text.remove_prefix(kWord);
            continue;
        }
        const std::size_t size = tools::utf8SequenceSize(text);
        if (size == 0) {
            return false;
        }
        text.remove_prefix(size);
    }
    return true;
}

void appendVisible(std::string& out, std::string_view text) {
    while (!text.empty()) {
        const std::size_t plain = plainSize(text);
        out.append(text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty()) {
            return;
        }
        const std::size_t size = tools::utf8SequenceSize(text);
        if (size != 0 && !isControl(text.substr(0, size))) {
            out.append(text.substr(0, size));
            text.remove_prefix(size);
            continue;
        }
        const std::size_t escaped = size == 0 ? 1 : size;
        for (std::size_t index = 0; index != escaped; ++index) {
            appendEscape(out, byteAt(text, index));
        }
        text.remove_prefix(escaped);
    }
}

}  // namespace vorellog
