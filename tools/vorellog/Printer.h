/// \file
/// Formats records and trails. A printer appends to a string; the caller writes the string to the output.
#pragma once

#include <string>

#include "vorellog/Record.h"
#include "vorellog/TrailAssembler.h"

namespace vorellog {

class Printer {
public:
    Printer() = default;
    virtual ~Printer() = default;
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;

    virtual void print(const Record& record, std::string& out) const = 0;

    /// Prints the trail of an exception as one entry.
    virtual void print(const Trail& trail, std::string& out) const = 0;
};

/// Prints readable lines in the format of the log:
///
///     [Mon Nov 16 01:43:08 2026] host7.4312.9876: Vorel Error: line 7 is not a number
///         > Parser::run: Vorel exception rethrown
///         > Import::main: Vorel exception caught
///     [Mon Nov 16 01:43:09 2026] host7.4312.9876: WARN: two lines:
///         | the second one
///     (cut) [Mon Nov 16 01:43:0
///
/// Bytes of invalid UTF-8, and of characters that a terminal might interpret, are printed as escapes such as "\x1B".
class TextPrinter : public Printer {
public:
    explicit TextPrinter(bool withColours) noexcept : m_withColours(withColours) {}

    void print(const Record& record, std::string& out) const override;
    void print(const Trail& trail, std::string& out) const override;

private:
    void printDamage(const Record& record, std::string& out) const;
    void printLine(const Record& record, std::string_view line, std::string& out) const;
    void paint(std::string_view colour, std::string_view text, std::string& out) const;

    bool m_withColours;
};

/// Prints each record or trail as a JSON object on its own line:
///
///     {"type":"record","time":"2026-11-16T01:43:08.045","host":"host7","process":4312,"thread":9876,"prefix":"WARN",
///      "message":"text"}
///     {"type":"exception","time":…,"host":…,"process":…,"thread":…,"end":"caught","records":[
///      {"time":…,"prefix":"Vorel Error","message":"text"},…]}
///     {"type":"damaged","damage":"no header","message":"text"}
///
/// "truncated":true marks a message that the library truncated, and "damage" marks a damaged record. The message has
/// U+FFFD for each byte that is not valid UTF-8. If the record has such a byte, "bytes" is the whole text of the record
/// in Base64.
class JsonPrinter : public Printer {
public:
    void print(const Record& record, std::string& out) const override;
    void print(const Trail& trail, std::string& out) const override;
};

}  // namespace vorellog
