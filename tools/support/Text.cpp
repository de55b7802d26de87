#include "support/Text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "support/Utf8.h"
#include "vorel/text/Unicode.h"

namespace tools {

namespace {

/// The library's decoder rejects sequences that begin with F1 or F3, that is U+40000 to U+7FFFF and U+C0000 to U+FFFFF.
bool isUnsupportedLead(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xFDU) == 0xF1U;
}

/// The end of the piece that begins at `from` and is passed to the library's decoder. A piece ends before a zero,
/// before a valid sequence that the decoder rejects, or at the end of `text`.
std::size_t endOfPiece(std::string_view text, std::size_t from) noexcept {
    const auto stops = [](char byte) { return byte == '\0' || isUnsupportedLead(byte); };
    for (const auto* position = text.begin() + static_cast<std::ptrdiff_t>(from);; ++position) {
        position = std::find_if(position, text.end(), stops);
        const auto index = static_cast<std::size_t>(position - text.begin());
        if (position == text.end() || *position == '\0' || utf8SequenceSize(text.substr(index)) != 0) {
            return index;
        }
    }
}

/// The surrogate pair for a UTF-8 sequence of four bytes.
std::wstring decodedPair(std::string_view sequence) {
    const std::uint32_t offset = utf8CodePoint(sequence) - 0x10000;
    return {static_cast<wchar_t>(0xD800 + (offset >> 10)), static_cast<wchar_t>(0xDC00 + (offset & 0x3FF))};
}

}  // namespace

std::string toUtf8(std::wstring_view text) {
    const std::wstring terminated(text);  // the library's conversion may read the unit after the text
    std::string result;
    vorel::BaseString<char> piece;
    for (std::size_t start = 0;; ++start) {
        const std::size_t end = std::min(terminated.find(L'\0', start), text.size());  // a conversion stops at a zero
        if (end > start) {
            vorel::util::ConvertStringtoUTF8(terminated.data() + start, piece, static_cast<int>(end - start));
            result += piece.view();
        }
        if (end == text.size()) {
            return result;
        }
        result += '\0';
        start = end;
    }
}

std::optional<std::wstring> fromUtf8(std::string_view text) {
    constexpr std::size_t kPaddingBytes = 5;  // the decoder may read this number of bytes after a lead byte
    std::string padded(text);
    padded.append(kPaddingBytes, '\0');
    std::wstring result;
    vorel::BaseString<wchar_t> piece;
    for (std::size_t start = 0;;) {
        const std::size_t end = endOfPiece(text, start);
        if (end > start) {
            if (!vorel::util::ConvertUTF8toString(piece, padded.data() + start, static_cast<int>(end - start), false)) {
                return std::nullopt;
            }
            result += piece.view();
        }
        if (end == text.size()) {
            return result;
        }
        if (text[end] == '\0') {
            result += L'\0';
            start = end + 1;
        } else {
            result += decodedPair(text.substr(end, 4));
            start = end + 4;
        }
    }
}

}  // namespace tools
