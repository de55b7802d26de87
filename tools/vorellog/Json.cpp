#include "vorellog/Json.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>

#include "support/Utf8.h"
#include "support/Visible.h"

namespace vorellog {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

/// Appends the escape of a code point. No code point that must be escaped needs a surrogate pair.
void appendEscape(std::string& out, std::uint32_t codePoint) {
    switch (codePoint) {
    case '"': out += "\\\""; return;
    case '\\': out += "\\\\"; return;
    case '\n': out += "\\n"; return;
    case '\r': out += "\\r"; return;
    case '\t': out += "\\t"; return;
    default: break;
    }
    char text[8];
    const int size = std::snprintf(text, sizeof text, "\\u%04x", static_cast<unsigned int>(codePoint));
    out.append(text, static_cast<std::size_t>(size));
}

constexpr bool isEscaped(std::uint32_t codePoint) noexcept {
    return codePoint == '"' || codePoint == '\\' || tools::needsEscape(codePoint);
}

/// For each byte, whether it is a character that is written unchanged.
constexpr std::array<bool, 256> kIsPlain = [] {
    std::array<bool, 256> table{};
    for (std::uint32_t byte = 0; byte < 0x80; ++byte) {
        table[byte] = !isEscaped(byte);
    }
    return table;
}();

}  // namespace

void appendJson(std::string& out, std::string_view text) {
    // Most texts are plain, so they are copied and checked in one pass.
    const std::size_t start = out.size();
    out.resize(start + text.size() + 2);
    char* const quoted = out.data() + start;
    quoted[0] = '"';
    std::size_t copied = 0;
    while (copied != text.size() && kIsPlain[static_cast<unsigned char>(text[copied])]) {
        quoted[copied + 1] = text[copied];
        ++copied;
    }
    if (copied == text.size()) {
        quoted[copied + 1] = '"';
        return;
    }
    out.resize(start + copied + 1);
    text.remove_prefix(copied);
    while (!text.empty()) {
        std::size_t plain = 0;
        while (plain != text.size() && kIsPlain[static_cast<unsigned char>(text[plain])]) {
            ++plain;
        }
        out.append(text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty()) {
            break;
        }
        const std::size_t size = tools::utf8SequenceSize(text);
        if (size == 0) {
            out += kReplacement;
        } else if (const std::uint32_t codePoint = tools::utf8CodePoint(text.substr(0, size)); isEscaped(codePoint)) {
            appendEscape(out, codePoint);
        } else {
            out.append(text.substr(0, size));
        }
        text.remove_prefix(size == 0 ? 1 : size);
    }
    out += '"';
}

void JsonObject::addName(std::string_view name) {
    m_out += m_isEmpty ? "\"" : ",\"";
    m_out += name;
    m_out += "\":";
    m_isEmpty = false;
}

void JsonObject::appendNumber(unsigned long long value) {
    char digits[20];
    m_out.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

}  // namespace vorellog
