/// \file
/// How records and trails are shown. A printer appends to a text; whoever owns the text writes it out.
#pragma once

#include <string>

#include "vorellog/Folder.h"
#include "vorellog/Record.h"

namespace vorellog {

class Printer {
public:
    Printer() = default;
    virtual ~Printer() = default;
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;

    virtual void print(const Record& record, std::string& out) const = 0;

    /// A trail of an exception, as one entry.
    virtual void print(const Trail& trail, std::string& out) const = 0;
};

/// Lines for people, in the form of the log:
///
///     [Mon Nov 16 01:43:08 2026] host7.4312.9876: Vorel Error: line 7 is no number
///         > Parser::run: Vorel exception rethrown
///         > Import::main: Vorel exception caught
///     [Mon Nov 16 01:43:09 2026] host7.4312.9876: WARN: two lines:
///         | the second one
///     (cut) [Mon Nov 16 01:43:0
///
/// Characters that a terminal might interpret, and bytes that are not UTF-8, are shown as "\x1B".
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

/// One JSON object for each record or trail, in a line of its own:
///
///     {"type":"record","time":"2026-11-16T01:43:08.045","host":"host7","process":4312,"thread":9876,"prefix":"WARN",
///      "message":"text"}
///     {"type":"exception","time":…,"host":…,"process":…,"thread":…,"end":"caught","records":[
///      {"time":…,"prefix":"Vorel Error","message":"text"},…]}
///     {"type":"damaged","damage":"no header","message":"text"}
///
/// "truncated":true marks a message that the library had to cut, "damage" a damaged record. Where bytes are no UTF-8,
/// the message has U+FFFD instead, and "bytes" has all of the record's text in Base64.
class JsonPrinter : public Printer {
public:
    void print(const Record& record, std::string& out) const override;
    void print(const Trail& trail, std::string& out) const override;
};

}  // namespace vorellog
