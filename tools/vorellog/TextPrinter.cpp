#include "support/Visible.h"
#include "vorellog/Printer.h"

namespace vorellog {

namespace {

using tools::appendVisible;

constexpr std::string_view kReset = "\x1B[0m";
constexpr std::string_view kDim = "\x1B[90m";
constexpr std::string_view kOrigin = "\x1B[36m";
constexpr std::string_view kError = "\x1B[31m";
constexpr std::string_view kWarning = "\x1B[33m";
constexpr std::string_view kOther = "\x1B[32m";
constexpr std::string_view kDamaged = "\x1B[35m";

constexpr std::string_view kFurtherLine = "    | ";
constexpr std::string_view kFurtherRecord = "    > ";

std::string_view colourOf(std::string_view prefix) noexcept {
    struct Colour {
        std::string_view prefix;
        std::string_view colour;
    };
    constexpr Colour kColours[] = {
        {"Vorel Error", kError}, {"AddHRESULTErrorToStack", kError}, {"WARN", kWarning}, {"DEBUG", kDim}};
    for (const Colour& each : kColours) {
        if (each.prefix == prefix) {
            return each.colour;
        }
    }
    return kOther;
}

/// Removes the first line from `text` and returns it.
std::string_view consumeLine(std::string_view& text) noexcept {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(line.size() == text.size() ? line.size() : line.size() + 1);
    return line;
}

void appendFurtherLines(std::string_view lines, std::string& out) {
    while (!lines.empty()) {
        out += kFurtherLine;
        appendVisible(out, consumeLine(lines));
        out += '\n';
    }
}

}  // namespace

void TextPrinter::paint(std::string_view colour, std::string_view text, std::string& out) const {
    if (!m_withColours || text.empty()) {
        appendVisible(out, text);
        return;
    }
    out += colour;
    appendVisible(out, text);
    out += kReset;
}

void TextPrinter::printDamage(const Record& record, std::string& out) const {
    if (record.damage() != Damage::None) {
        paint(kDamaged, '(' + std::string(nameOf(record.damage())) + ')', out);
        out += ' ';
    }
}

/// Prints the damage of a record, if it has any, and the first line of the record. With colours, the time, the writer
/// and the prefix are coloured.
void TextPrinter::printLine(const Record& record, std::string_view line, std::string& out) const {
    printDamage(record, out);
    const LogHeader* const header = record.header();
    if (!m_withColours || !header) {
        appendVisible(out, line);
        return;
    }
    const std::string_view body = line.substr(header->bodyAt);
    const std::size_t message = body.size() - parseBody(body).message.size();
    paint(kDim, line.substr(0, header->hostAt), out);
    paint(kOrigin, line.substr(header->hostAt, header->bodyAt - header->hostAt), out);
    paint(colourOf(parseBody(body).prefix), body.substr(0, message), out);
    appendVisible(out, body.substr(message));
}

void TextPrinter::print(const Record& record, std::string& out) const {
    std::string_view rest = record.text();
    printLine(record, consumeLine(rest), out);
    out += '\n';
    appendFurtherLines(rest, out);
}

void TextPrinter::print(const Trail& trail, std::string& out) const {
    print(trail.records.front(), out);
    for (std::size_t index = 1; index < trail.records.size(); ++index) {
        const Record& record = trail.records[index];
        std::string_view rest = record.parsedBody().message;
        paint(kDim, kFurtherRecord, out);
        printDamage(record, out);
        appendVisible(out, consumeLine(rest));
        out += '\n';
        appendFurtherLines(rest, out);
    }
}

}  // namespace vorellog
