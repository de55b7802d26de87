#include "vorellog/Json.h"

#include <cstdint>
#include <cstdio>

#include "support/Utf8.h"
#include "support/Visible.h"

namespace vorellog {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

/// Every code point that must be escaped has at most 16 bits.
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

bool isEscaped(std::uint32_t codePoint) noexcept {
    return codePoint == '"' || codePoint == '\\' || tools::needsEscape(codePoint);
}

}  // namespace

void appendJson(std::string& out, std::string_view text) {
    out += '"';
    while (!text.empty()) {
        std::size_t plain = 0;
        while (plain != text.size() && static_cast<unsigned char>(text[plain]) < 0x80 &&
               !isEscaped(static_cast<unsigned char>(text[plain]))) {
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

void JsonObject::add(std::string_view name, std::string_view value) {
    addName(name);
    appendJson(m_out, value);
}

void JsonObject::add(std::string_view name, unsigned long long value) {
    addName(name);
    m_out += std::to_string(value);
}

}  // namespace vorellog
