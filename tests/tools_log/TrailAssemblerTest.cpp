#include "vorellog/TrailAssembler.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/WideText.h"
#include "tools_log/Records.h"
#include "vorel/exceptions/RecordFormats.h"

namespace {

using test::header;
using test::recordOf;
using test::recordsOf;
using ::testing::ElementsAre;
using vorellog::Record;
using vorellog::stepOf;
using vorellog::Trail;
using vorellog::TrailAssembler;
using vorellog::TrailStep;

TEST(TrailAssemblerTest, StepsOfATrail) {
    struct Case {
        std::string body;
        TrailStep step;
    };
    const Case cases[] = {
        {"Vorel Error: line 7 is not a number", TrailStep::Message},
        {"Vorel Error Truncated: line 7 is not a number", TrailStep::Message},
        {"Vorel Error: ", TrailStep::Message},
        {"Vorel Error: Vorel exception caught by main", TrailStep::Message},
        {"Vorel Error: load: Vorel exception rethrown", TrailStep::Rethrown},
        {"Vorel Error: Parser::run: Vorel exception rethrown", TrailStep::Rethrown},
        {"Vorel Error: Parser::~Parser: Vorel exception rethrown", TrailStep::Rethrown},
        {"Vorel Error: Parser::run: Vorel exception caught", TrailStep::Caught},
        {"Vorel Error: Parser::run: Severe error caught", TrailStep::SevereCaught},
        {"Vorel Error: Parser::run: Severe error thrown", TrailStep::SevereThrown},
        {"Vorel Error: Parser::~Parser: Vorel exception suppressed", TrailStep::Suppressed},
        {"Vorel Error: Parser::~Parser: Severe error suppressed", TrailStep::Suppressed},
        {"Vorel Error: check: TestAndThrow test failed", TrailStep::TestFailed},
        {"AddHRESULTErrorToStack: HRESULT: 80070005 - Access denied.", TrailStep::SystemText},
        {"AddHRESULTErrorToStack: ", TrailStep::SystemText},
        {"WARN: Parser::run: Vorel exception caught", TrailStep::None},
        {"text", TrailStep::None},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(stepOf(recordOf(header() + c.body)), c.step) << c.body;
    }
    EXPECT_EQ(stepOf(recordOf("Vorel Error: text")), TrailStep::None);
}

TEST(TrailAssemblerTest, StepsOfTheRecordFormats) {
    struct Case {
        const wchar_t* format;
        TrailStep step;
    };
    const Case cases[] = {
        {vorel::vexCatchVorel, TrailStep::Caught},
        {vorel::vexCatchClassVorel, TrailStep::Caught},
        {vorel::vexCatchSevere, TrailStep::SevereCaught},
        {vorel::vexCatchClassSevere, TrailStep::SevereCaught},
        {vorel::vexCatchAndThrowVorel, TrailStep::Rethrown},
        {vorel::vexCatchAndThrowClassVorel, TrailStep::Rethrown},
        {vorel::vexCatchAndThrowSevere, TrailStep::SevereThrown},
        {vorel::vexCatchAndThrowClassSevere, TrailStep::SevereThrown},
        {vorel::vexDestructorCaught, TrailStep::Suppressed},
        {vorel::vexDestructorThrown, TrailStep::Rethrown},
        {vorel::vexDestructorSevereCaught, TrailStep::Suppressed},
        {vorel::vexDestructorSevereThrown, TrailStep::SevereThrown},
        {vorel::vexTestFailed, TrailStep::TestFailed},
    };
    for (const Case& c : cases) {
        const std::string message = test::narrowed(c.format);
        EXPECT_EQ(stepOf(recordOf(header() + "Vorel Error: " + message)), c.step) << message;
    }
}

TEST(TrailAssemblerTest, FormIgnoresTheValuesOfNumbers) {
    using vorellog::haveSameForm;
    EXPECT_TRUE(haveSameForm("", ""));
    EXPECT_TRUE(haveSameForm("row 7 of t", "row 1234 of t"));
    EXPECT_TRUE(haveSameForm("7", "8"));
    EXPECT_FALSE(haveSameForm("row 7", "row "));
    EXPECT_FALSE(haveSameForm("row 7", "row 7 of t"));
    EXPECT_FALSE(haveSameForm("row 7", "row x"));
    EXPECT_FALSE(haveSameForm("a1", "1a"));
}

/// Assembles lines into trails, and returns a text for each trail: the messages of its records, separated by " > ". The
/// text of an exception also says how the trail ended: "caught", "suppressed" or "open".
std::vector<std::string> fold(const std::vector<std::string>& lines) {
    std::vector<std::string> shown;
    TrailAssembler assembler([&](const Trail& trail) {
        std::string text;
        for (const Record& record : trail.records) {
            text += (text.empty() ? "" : " > ") + std::string(record.parsedBody().message);
        }
        shown.push_back(text + (trail.isException ? " " + std::string(nameOf(trail.end)) : ""));
    });
    for (const Record& record : recordsOf(lines)) {
        assembler.add(record);
    }
    assembler.flush();
    return shown;
}

/// Exception records of one thread.
std::vector<std::string> errors(const std::vector<std::string>& messages) {
    std::vector<std::string> lines;
    for (const std::string& message : messages) {
        lines.push_back(header() + "Vorel Error: " + message);
    }
    return lines;
}

TEST(TrailAssemblerTest, TrailsOfOneThread) {
    const std::string passed = "f: Vorel exception rethrown";
    const std::string passedG = "g: Vorel exception rethrown";
    const std::string caught = "h: Vorel exception caught";
    const std::string suppressed = "A::~A: Vorel exception suppressed";
    struct Case {
        const char* why;
        std::vector<std::string> messages;
        std::vector<std::string> trails;
    };
    const Case cases[] = {
        {"failure, rethrown, caught", {"a", passed, caught}, {"a > " + passed + " > " + caught + " caught"}},
        {"caught at once", {"a", caught}, {"a > " + caught + " caught"}},
        {"two trails", {"a", caught, "a", caught}, {"a > " + caught + " caught", "a > " + caught + " caught"}},
        {"message added after the exception was rethrown",
         {"a", passed, "b", passedG, caught},
         {"a > " + passed + " > b > " + passedG + " > " + caught + " caught"}},
        {"two exceptions caught without a record, then one with a message of the same form",
         {"row 7", "row 8", "row 9", caught},
         {"row 7 open", "row 8 open", "row 9 > " + caught + " caught"}},
        {"caught without a record, then the same function again",
         {"a", passed, "b", passed, caught},
         {"a > " + passed + " open", "b > " + passed + " > " + caught + " caught"}},
        {"the same function twice, by recursion",
         {"a", passed, passed, caught},
         {"a > " + passed + " > " + passed + " > " + caught + " caught"}},
        {"severe error converted to an exception",
         {"a", passed, "f: Severe error thrown", caught},
         {"a > " + passed + " open", "f: Severe error thrown > " + caught + " caught"}},
        {"failed TestAndThrow test",
         {"a", "f: TestAndThrow test failed", caught},
         {"a open", "f: TestAndThrow test failed > " + caught + " caught"}},
        {"caught severe error is a separate entry",
         {"a", "f: Severe error caught", passed},
         {"a > " + passed + " open", "f: Severe error caught caught"}},
        {"exception suppressed by a destructor during the trail of another exception",
         {"a", passed, "b", suppressed, passedG, caught},
         {"a > " + passed + " > b > " + suppressed + " > " + passedG + " > " + caught + " caught"}},
        {"suppressed by a destructor", {"a", suppressed}, {"a > " + suppressed + " suppressed"}},
        {"severe error in a destructor",
         {"A::~A: Severe error suppressed"},
         {"A::~A: Severe error suppressed suppressed"}},
        {"the start is not in the log", {passed, caught}, {passed + " > " + caught + " caught"}},
        {"the end is not in the log", {"a", passed}, {"a > " + passed + " open"}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(fold(errors(c.messages)), c.trails) << c.why;
    }
}

TEST(TrailAssemblerTest, WritersHaveSeparateTrails) {
    const std::vector<std::string> lines = {
        header(1, 1) + "Vorel Error: a",
        header(2, 1) + "Vorel Error: b",
        header(1, 2) + "Vorel Error: c",
        "[Mon Nov 16 01:43:08 2026] host8.1.1: Vorel Error: d",
        header(2, 1) + "Vorel Error: f: Vorel exception caught",
        header(1, 2) + "Vorel Error: f: Vorel exception caught",
        header(1, 1) + "WARN: w",
        header(1, 1) + "Vorel Error: f: Vorel exception caught",
        "[Mon Nov 16 01:43:08 2026] host8.1.1: Vorel Error: f: Vorel exception caught",
    };
    EXPECT_THAT(fold(lines),
                ElementsAre("a > f: Vorel exception caught caught", "b > f: Vorel exception caught caught",
                            "c > f: Vorel exception caught caught", "d > f: Vorel exception caught caught", "w"));
}

TEST(TrailAssemblerTest, PartsOfASplitTrailAreOrderedByTheirFirstRecords) {
    const std::vector<std::string> lines = {
        header(1) + "Vorel Error: a", header(1) + "Vorel Error: f: Vorel exception rethrown",
        header(2) + "WARN: before",   header(1) + "Vorel Error: b",
        header(2) + "WARN: after",    header(1) + "Vorel Error: f: Vorel exception rethrown"};
    EXPECT_THAT(fold(lines), ElementsAre("a > f: Vorel exception rethrown open", "before",
                                         "b > f: Vorel exception rethrown open", "after"));
}

TEST(TrailAssemblerTest, DeliveredTrailsDoNotAffectLaterTrails) {
    std::vector<std::string> lines;
    for (const char* const message : {"x", "g: Vorel exception rethrown", "main: Vorel exception caught", "y",
                                      "g: Vorel exception rethrown", "main: Vorel exception caught"}) {
        lines.push_back(header(3) + "Vorel Error: " + message);
    }
    const std::vector<std::string> split = {
        header(1) + "Vorel Error: a", header(1) + "Vorel Error: f: Vorel exception rethrown",
        header(2) + "WARN: before",   header(1) + "Vorel Error: b",
        header(2) + "WARN: after",    header(1) + "Vorel Error: f: Vorel exception rethrown"};
    lines.insert(lines.end(), split.begin(), split.end());
    EXPECT_THAT(fold(lines), ElementsAre("x > g: Vorel exception rethrown > main: Vorel exception caught caught",
                                         "y > g: Vorel exception rethrown > main: Vorel exception caught caught",
                                         "a > f: Vorel exception rethrown open", "before",
                                         "b > f: Vorel exception rethrown open", "after"));
}

TEST(TrailAssemblerTest, SystemTextsBelongToTheTrailOfTheirFailure) {
    EXPECT_THAT(fold({header() + "Vorel Error: a", header() + "AddHRESULTErrorToStack: HRESULT: 80070005 - No.",
                      header() + "AddHRESULTErrorToStack: ", header() + "Vorel Error: f: Vorel exception caught"}),
                ElementsAre("a > HRESULT: 80070005 - No. >  > f: Vorel exception caught caught"));
}

TEST(TrailAssemblerTest, RecordAfterALongGapStartsANewTrail) {
    // A record on 2026-11-16 at `clock`, which may have milliseconds after a period.
    const auto at = [](const std::string& clock, const std::string& body) {
        return "[Mon Nov 16 " + clock.substr(0, 8) + " 2026]" + clock.substr(8) + " host7.1.1: " + body;
    };
    const std::string passed = "Vorel Error: f: Vorel exception rethrown";
    const std::string caught = "Vorel Error: f: Vorel exception caught";
    const std::string suppressed = "Vorel Error: A::~A: Vorel exception suppressed";
    const std::string system = "AddHRESULTErrorToStack: HRESULT: 80070005 - No.";
    struct Case {
        const char* why;
        std::string first;
        std::string second;
        std::string body;
        bool isSameTrail;
    };
    const Case cases[] = {
        {"message", "01:00:00", "01:00:02", "Vorel Error: b", true},
        {"message of a later failure", "01:00:00", "01:00:03", "Vorel Error: b", false},
        {"message minutes later", "01:00:00", "01:04:00", "Vorel Error: b", false},
        {"milliseconds are ignored", "01:00:00.001", "01:00:02.999", "Vorel Error: b", true},
        {"only the first has milliseconds", "01:00:00.999", "01:00:03", "Vorel Error: b", false},
        {"only the second has milliseconds", "01:00:00", "01:00:02.999", "Vorel Error: b", true},
        {"system text", "01:00:00", "01:00:02", system, true},
        {"system text of a later failure", "01:00:00", "01:00:03", system, false},
        {"rethrown", "01:00:00", "01:00:05", passed, true},
        {"rethrown later", "01:00:00", "01:00:06", passed, false},
        {"caught", "01:00:00", "01:00:05", caught, true},
        {"caught later", "01:00:00", "01:00:06", caught, false},
        {"suppressed", "01:00:00", "01:00:05", suppressed, true},
        {"suppressed later", "01:00:00", "01:00:06", suppressed, false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(fold({at(c.first, "Vorel Error: a"), at(c.second, c.body)}).size(), c.isSameTrail ? 1u : 2u) << c.why;
    }
    // The gap is measured from the last record of the trail, not from its first record.
    EXPECT_THAT(fold({at("01:00:00", "Vorel Error: a"), at("01:00:02", "Vorel Error: b"),
                      at("01:00:06", "Vorel Error: f: Vorel exception caught"), at("01:00:06", "Vorel Error: c")}),
                ElementsAre("a > b > f: Vorel exception caught caught", "c open"));
}

TEST(TrailAssemblerTest, CutRecordEndsItsTrail) {
    EXPECT_THAT(fold({header(1) + "Vorel Error: a", header(1) + "Vorel Error: half" + header(2) + "WARN: w",
                      header(1) + "Vorel Error: f: Vorel exception rethrown"}),
                ElementsAre("a > half open", "w", "f: Vorel exception rethrown open"));
}

TEST(TrailAssemblerTest, MidLineRecordsDoNotAffectTrails) {
    const std::string passed = "f: Vorel exception rethrown";
    const std::string caught = "g: Vorel exception caught";
    struct Case {
        const char* why;
        std::vector<std::string> lines;
        std::vector<std::string> trails;
    };
    const Case cases[] = {
        {"forged end of the trail of another thread",
         {header(1) + "Vorel Error: a", header(2) + "WARN: x" + header(1) + "Vorel Error: " + caught,
          header(1) + "Vorel Error: " + passed},
         {"a > " + passed + " open", "x", caught}},
        {"forged start of a trail",
         {header(2) + "WARN: x" + header(1) + "Vorel Error: forged", header(1) + "Vorel Error: " + passed},
         {"x", "forged", passed + " open"}},
        {"forged severe error",
         {header(2) + "WARN: x" + header(1) + "Vorel Error: f: Severe error caught"},
         {"x", "f: Severe error caught"}},
        {"forged time does not end a trail",
         {header(1, 1) + "Vorel Error: a", header(2) + "WARN: x" + header(1, 1, "23:00:00") + "WARN: y",
          header(1, 1) + "Vorel Error: " + passed},
         {"a > " + passed + " open", "x", "y"}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(fold(c.lines), c.trails) << c.why;
    }
}

TEST(TrailAssemblerTest, OpenTrailDelaysRecordsOfOtherWritersForFiveSeconds) {
    std::vector<std::string> shown;
    TrailAssembler assembler(
        [&](const Trail& trail) { shown.emplace_back(trail.records.front().parsedBody().message); });
    assembler.add(recordOf(header(1, 1, "01:00:00") + "Vorel Error: a"));
    assembler.add(recordOf(header(2, 1, "01:00:05") + "WARN: b"));
    EXPECT_TRUE(shown.empty());
    assembler.add(recordOf(header(2, 1, "01:00:06") + "WARN: c"));
    EXPECT_THAT(shown, ElementsAre("a", "b", "c"));
}

TEST(TrailAssemblerTest, WaitingRecordsAreBounded) {
    std::size_t shown = 0;
    TrailAssembler assembler([&](const Trail& trail) { shown += trail.records.size(); });
    std::size_t added = 0;
    const auto add = [&](const std::string& line) {
        assembler.add(recordOf(line));
        ++added;
    };
    add(header(1) + "Vorel Error: a");
    while (added != 3 * TrailAssembler::kMaxWaitingRecords) {
        add(header(2) + "WARN: b");
        ASSERT_LE(added - shown, TrailAssembler::kMaxWaitingRecords);
    }
    const std::string large(TrailAssembler::kMaxWaitingBytes / 8, 'x');
    for (std::size_t count = 0; count != 12; ++count) {
        add(header(3) + "Vorel Error: " + large + std::string(count, 'y'));
        ASSERT_LE(added - shown, 8u);
    }
    assembler.flush();
    EXPECT_EQ(shown, added);
}

TEST(TrailAssemblerTest, TrailLengthIsBounded) {
    std::vector<std::size_t> sizes;
    TrailAssembler assembler([&](const Trail& trail) { sizes.push_back(trail.records.size()); });
    for (std::size_t count = 0; count != 2 * TrailAssembler::kMaxRecords + 1; ++count) {
        assembler.add(recordOf(header() + "Vorel Error: f: Vorel exception rethrown"));
    }
    assembler.flush();
    EXPECT_THAT(sizes, ElementsAre(TrailAssembler::kMaxRecords, TrailAssembler::kMaxRecords, 1u));
}

}  // namespace
