#include "vorellog/Printer.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tools_log/Records.h"

namespace {

using test::header;
using test::recordsOf;
using vorellog::JsonPrinter;
using vorellog::Printer;
using vorellog::Record;
using vorellog::TextPrinter;
using vorellog::Trail;
using vorellog::TrailEnd;

std::string printed(const Printer& printer, const std::vector<std::string>& lines) {
    std::string out;
    for (const Record& record : recordsOf(lines)) {
        printer.print(record, out);
    }
    return out;
}

std::string printedTrail(const Printer& printer, const std::vector<std::string>& lines, TrailEnd end) {
    std::string out;
    printer.print(Trail{recordsOf(lines), true, end}, out);
    return out;
}

TEST(PrinterTest, TextShowsTheLogAndMarksDamage) {
    const std::string h = header();
    const TextPrinter printer(false);
    EXPECT_EQ(printed(printer, {h + "WARN: text"}), h + "WARN: text\n");
    EXPECT_EQ(printed(printer, {h + "WARN: one", "two", "", "\x1B[2J"}),
              h + "WARN: one\n    | two\n    | \n    | \\x1B[2J\n");
    EXPECT_EQ(printed(printer, {"garbage"}), "(no header) garbage\n");
    EXPECT_EQ(printed(printer, {h + "ha" + h + "b"}), "(cut) " + h + "ha\n(mid-line) " + h + "b\n");
    EXPECT_EQ(printed(printer, {h + "caf\xE9"}), "(bad UTF-8) " + h + "caf\\xE9\n");
    EXPECT_EQ(printed(printer, {h}), h + "\n");
}

TEST(PrinterTest, TextOfATrail) {
    const std::string h = header();
    EXPECT_EQ(printedTrail(TextPrinter(false),
                           {h + "Vorel Error: a", "b", h + "Vorel Error: f: Vorel exception rethrown",
                            h + "Vorel Error: two", "lines", h + "Vorel Error: caf\xE9"},
                           TrailEnd::Open),
              h + "Vorel Error: a\n    | b\n    > f: Vorel exception rethrown\n    > two\n    | lines\n"
                  "    > (bad UTF-8) caf\\xE9\n");
}

TEST(PrinterTest, ColoursOfTimeWriterAndPrefix) {
    const std::string time = "\x1B[90m[Mon Nov 16 01:43:08 2026] \x1B[0m";
    const std::string writer = "\x1B[36mhost7.4312.9876: \x1B[0m";
    const TextPrinter printer(true);
    struct Case {
        std::string body;
        std::string shown;
    };
    const Case cases[] = {{"Vorel Error: a", "\x1B[31mVorel Error: \x1B[0ma"},
                          {"Vorel Error Truncated: a", "\x1B[31mVorel Error Truncated: \x1B[0ma"},
                          {"AddHRESULTErrorToStack: a", "\x1B[31mAddHRESULTErrorToStack: \x1B[0ma"},
                          {"WARN: a", "\x1B[33mWARN: \x1B[0ma"},
                          {"DEBUG: a", "\x1B[90mDEBUG: \x1B[0ma"},
                          {"Own: a", "\x1B[32mOwn: \x1B[0ma"},
                          {"a", "a"}};
    for (const Case& c : cases) {
        EXPECT_EQ(printed(printer, {header() + c.body}), time + writer + c.shown + "\n") << c.body;
    }
    EXPECT_EQ(printed(printer, {"garbage"}), "\x1B[35m(no header)\x1B[0m garbage\n");
}

/// Removes the escape sequences.
std::string withoutColours(std::string text) {
    for (std::size_t at = text.find('\x1B'); at != std::string::npos; at = text.find('\x1B')) {
        text.erase(at, text.find('m', at) - at + 1);
    }
    return text;
}

TEST(PrinterTest, ColoursDoNotChangeTheText) {
    const std::vector<std::string> lines = {"garbage",
                                            header() + "WARN: one",
                                            "two",
                                            header() + "cut" + header(1),
                                            header() + "own: caf\xE9",
                                            header() + "no prefix"};
    EXPECT_EQ(withoutColours(printed(TextPrinter(true), lines)), printed(TextPrinter(false), lines));
    EXPECT_EQ(withoutColours(printedTrail(TextPrinter(true), lines, TrailEnd::Caught)),
              printedTrail(TextPrinter(false), lines, TrailEnd::Caught));
}

TEST(PrinterTest, JsonOfRecords) {
    const JsonPrinter printer;
    const std::string origin = R"("time":"2026-11-16T01:43:08","host":"host7","process":4312,"thread":9876)";
    EXPECT_EQ(printed(printer, {header() + "WARN: text"}),
              R"({"type":"record",)" + origin + R"(,"prefix":"WARN","message":"text"})" + "\n");
    EXPECT_EQ(printed(printer, {"[Mon Nov 16 01:43:08 2026].045 host7.1.2: a", "b"}),
              R"({"type":"record","time":"2026-11-16T01:43:08.045","host":"host7","process":1,"thread":2,)"
              R"("prefix":"","message":"a\nb"})"
              "\n");
    EXPECT_EQ(printed(printer, {header() + "WARN Truncated: text"}),
              R"({"type":"record",)" + origin + R"(,"prefix":"WARN","truncated":true,"message":"text"})" + "\n");
    EXPECT_EQ(printed(printer, {"garbage"}), R"({"type":"damaged","damage":"no header","message":"garbage"})"
                                             "\n");
    EXPECT_EQ(printed(printer, {"[Mon" + header() + "a"}),
              R"({"type":"damaged","damage":"cut","message":"[Mon"})"
              "\n"
              R"({"type":"record",)" +
                  origin + R"(,"prefix":"","damage":"mid-line","message":"a"})" + "\n");
}

TEST(PrinterTest, JsonContainsInvalidUtf8AsBase64) {
    // The expected Base64 text is the output of another program: printf '\xE9A' | base64
    EXPECT_EQ(printed(JsonPrinter(), {"\xE9"
                                      "A"}),
              "{\"type\":\"damaged\",\"damage\":\"no header\",\"message\":\"\xEF\xBF\xBD"
              "A\",\"bytes\":\"6UE=\"}\n");
}

TEST(PrinterTest, JsonOfATrail) {
    EXPECT_EQ(
        printedTrail(
            JsonPrinter(),
            {header(1, 2) + "Vorel Error: a", header(1, 2, "01:43:09") + "Vorel Error: f: Vorel exception caught"},
            TrailEnd::Caught),
        R"({"type":"exception","time":"2026-11-16T01:43:08","host":"host7","process":2,"thread":1,"end":"caught",)"
        R"("records":[{"time":"2026-11-16T01:43:08","prefix":"Vorel Error","message":"a"},)"
        R"({"time":"2026-11-16T01:43:09","prefix":"Vorel Error","message":"f: Vorel exception caught"}]})"
        "\n");
}

}  // namespace
