#include "vorellog/Json.h"

#include <cstdio>

#include "support/Utf8.h"

namespace vorellog {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

void appendEscape(std::string& out, char c) {
    switch (c) {
    case '"': out += "\\\""; return;
    case '\\': out += "\\\\"; return;
    case '\n': out += "\\n"; return;
    case '\r': out += "\\r"; return;
    case '\t': out += "\\t"; return;
    default: break;
    }
    char text[8];
    out.append(text, static_cast<std::size_t>(std::snprintf(text, sizeof text, "\\u%04x", static_cast<unsigned>(c))));
}

bool needsEscape(char c) noexcept {
    const auto byte = static_cast<unsigned char>(c);
    return byte < ' ' || byte == 0x7F || c == '"' || c == '\\';
}

}  // namespace

void appendJson(std::string& out, std::string_view text) {
    out += '"';
    while (!text.empty()) {
        std::size_t plain = 0;
        while (plain != text.size() && !needsEscape(text[plain]) && static_cast<unsigned char>(text[plain]) < 0x80) {
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
        } else if (size == 1) {
            appendEscape(out, text.front());
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
