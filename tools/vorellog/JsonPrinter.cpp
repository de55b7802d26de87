#include <cstdio>

#include "vorel/text/Base64.h"
#include "vorellog/Printer.h"
#include "vorellog/Utf8.h"

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

void appendWriter(std::string& out, const Record& record) {
    const LogHeader& header = *record.header();
    out += ",\"host\":";
    appendJson(out, record.host());
    out += ",\"process\":" + std::to_string(header.processId) + ",\"thread\":" + std::to_string(header.threadId);
}

void appendTime(std::string& out, const LogHeader& header) {
    out += "\"time\":\"";
    out += isoText(header.timeMs, header.hasMilliseconds);
    out += '"';
}

/// Prefix and message, and what is wrong with them.
void appendBody(std::string& out, const Record& record) {
    const LogBody body = record.parsedBody();
    if (record.header()) {
        out += ",\"prefix\":";
        appendJson(out, body.prefix);
    }
    if (body.truncated) {
        out += ",\"truncated\":true";
    }
    if (record.damage() != Damage::None) {
        out += ",\"damage\":\"";
        out += nameOf(record.damage());
        out += '"';
    }
    out += ",\"message\":";
    appendJson(out, body.message);
    if (!isUtf8(record.text())) {
        vorel::BaseString<char> encoded;
        vorel::util::Base64::EncodeRange(reinterpret_cast<const unsigned char*>(record.text().data()), 0,
                                         static_cast<unsigned int>(record.text().size()), encoded);
        out += ",\"bytes\":\"";
        out += encoded.view();
        out += '"';
    }
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
        const std::size_t size = sequenceSize(text);
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

void JsonPrinter::print(const Record& record, std::string& out) const {
    if (const LogHeader* const header = record.header()) {
        out += "{\"type\":\"record\",";
        appendTime(out, *header);
        appendWriter(out, record);
    } else {
        out += "{\"type\":\"damaged\"";
    }
    appendBody(out, record);
    out += "}\n";
}

void JsonPrinter::print(const Trail& trail, std::string& out) const {
    const Record& first = trail.records.front();
    out += "{\"type\":\"exception\",";
    appendTime(out, *first.header());
    appendWriter(out, first);
    out += ",\"end\":\"";
    out += nameOf(trail.end);
    out += "\",\"records\":[";
    for (const Record& record : trail.records) {
        out += &record == &first ? "{" : ",{";
        appendTime(out, *record.header());
        appendBody(out, record);
        out += '}';
    }
    out += "]}\n";
}

}  // namespace vorellog
