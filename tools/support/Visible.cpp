#include "support/Visible.h"

#include <algorithm>
#include <cstring>

#include "support/Text.h"
#include "support/Utf8.h"

namespace tools {

namespace {

constexpr std::size_t kWord = sizeof(std::uint64_t);

/// Whether all eight bytes are from ' ' to '~'. The subtraction sets the high bit of a byte below ' '. The addition
/// sets the high bit of the byte 0x7F. The high bit of every other byte outside the range is set already. Only a byte
/// outside the range causes a carry or a borrow.
bool isPlain(std::uint64_t word) noexcept {
    constexpr std::uint64_t kEachByte = 0x0101010101010101;
    constexpr std::uint64_t kHighBits = kEachByte * 0x80;
    return ((word | (word + kEachByte) | (word - kEachByte * 0x20)) & kHighBits) == 0;
}

/// The number of bytes from ' ' to '~' at the start of `text`.
std::size_t plainSize(std::string_view text) noexcept {
    std::size_t size = 0;
    for (std::uint64_t word = 0; text.size() - size >= kWord; size += kWord) {
        std::memcpy(&word, text.data() + size, kWord);
        if (!isPlain(word)) {
            break;
        }
    }
    while (size != text.size() && text[size] >= ' ' && text[size] <= '~') {
        ++size;
    }
    return size;
}

void appendEscape(std::string& out, char c) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    out += "\\x";
    out += kDigits[byte / 16];
    out += kDigits[byte % 16];
}

}  // namespace

void appendVisible(std::string& out, std::string_view text) {
    while (!text.empty()) {
        const std::size_t plain = plainSize(text);
        out.append(text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty()) {
            return;
        }
        const std::size_t size = utf8SequenceSize(text);
        const std::string_view sequence = text.substr(0, std::max<std::size_t>(size, 1));
        if (size != 0 && (sequence == "\t" || !needsEscape(utf8CodePoint(sequence)))) {
            out.append(sequence);
        } else {
            std::for_each(sequence.begin(), sequence.end(), [&out](char c) { appendEscape(out, c); });
        }
        text.remove_prefix(sequence.size());
    }
}

std::wstring visibleLines(std::wstring_view text) {
    std::string rest = toUtf8(text);
    std::string out;
    for (std::size_t start = 0; start <= rest.size();) {
        const std::size_t end = std::min(rest.find('\n', start), rest.size());
        std::string_view line = std::string_view(rest).substr(start, end - start);
        while (end != rest.size() && line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        appendVisible(out, line);
        out.append(end != rest.size() ? "\n" : "");
        start = end + 1;
    }
    return fromUtf8(out).value_or(std::wstring());
}

}  // namespace tools
