#include "vorellog/Folder.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools_log/Records.h"

namespace {

using test::header;
using test::recordOf;
using test::recordsOf;
using ::testing::ElementsAre;
using vorellog::Folder;
using vorellog::Record;
using vorellog::stepOf;
using vorellog::Trail;
using vorellog::TrailStep;

TEST(FolderTest, StepsOfATrail) {
    struct Case {
        std::string body;
        TrailStep step;
    };
    const Case cases[] = {
        {"Vorel Error: line 7 is no number", TrailStep::Message},
        {"Vorel Error Truncated: line 7 is no number", TrailStep::Message},
        {"Vorel Error: ", TrailStep::Message},
        {"Vorel Error: Vorel exception caught by nobody", TrailStep::Message},
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

TEST(FolderTest, OfOneFormIsWhatDiffersInDigitsOnly) {
    using vorellog::haveSameForm;
    EXPECT_TRUE(haveSameForm("", ""));
    EXPECT_TRUE(haveSameForm("row 7 of t", "row 1234 of t"));
    EXPECT_TRUE(haveSameForm("7", "8"));
    EXPECT_FALSE(haveSameForm("row 7", "row "));
    EXPECT_FALSE(haveSameForm("row 7", "row 7 of t"));
    EXPECT_FALSE(haveSameForm("row 7", "row x"));
    EXPECT_FALSE(haveSameForm("a1", "1a"));
}

/// What comes out for some lines: the bodies of a trail's records, and how it ended.
std::vector<std::string> fold(const std::vector<std::string>& lines) {
    std::vector<std::string> shown;
    Folder folder([&](const Trail& trail) {
        std::string text;
        for (const Record& record : trail.records) {
            text += (text.empty() ? "" : " > ") + std::string(record.parsedBody().message);
        }
        shown.push_back(text + (trail.isException ? " " + std::string(nameOf(trail.end)) : ""));
    });
    for (const Record& record : recordsOf(lines)) {
        folder.add(record);
    }
    folder.flush();
    return shown;
}

/// Lines of one thread: each a record of an exception.
std::vector<std::string> errors(const std::vector<std::string>& messages) {
    std::vector<std::string> lines;
    for (const std::string& message : messages) {
        lines.push_back(header() + "Vorel Error: " + message);
    }
    return lines;
}

TEST(FolderTest, TrailsOfOneThread) {
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
        {"a failure, where it passed, where it ended",
         {"a", passed, caught},
         {"a > " + passed + " > " + caught + " caught"}},
        {"caught at once", {"a", caught}, {"a > " + caught + " caught"}},
        {"one after the other", {"a", caught, "a", caught}, {"a > " + caught + " caught", "a > " + caught + " caught"}},
        {"a message that was added",
         {"a", passed, "b", passedG, caught},
         {"a > " + passed + " > b > " + passedG + " > " + caught + " caught"}},
        {"caught without a record, of one form",
         {"row 7", "row 8", "row 9", caught},
         {"row 7 open", "row 8 open", "row 9 > " + caught + " caught"}},
        {"caught without a record, and then the same place again",
         {"a", passed, "b", passed, caught},
         {"a > " + passed + " open", "b > " + passed + " > " + caught + " caught"}},
        {"the same place twice in a recursion",
         {"a", passed, passed, caught},
         {"a > " + passed + " > " + passed + " > " + caught + " caught"}},
        {"a severe error that becomes an exception",
         {"a", passed, "f: Severe error thrown", caught},
         {"a > " + passed + " open", "f: Severe error thrown > " + caught + " caught"}},
        {"a failed check",
         {"a", "f: TestAndThrow test failed", caught},
         {"a open", "f: TestAndThrow test failed > " + caught + " caught"}},
        {"a severe error that is caught is an entry of its own",
         {"a", "f: Severe error caught", passed},
         {"a > " + passed + " open", "f: Severe error caught caught"}},
        {"one ended by a destructor on the way of another",
         {"a", passed, "b", suppressed, passedG, caught},
         {"a > " + passed + " > b > " + suppressed + " > " + passedG + " > " + caught + " caught"}},
        {"ended by a destructor", {"a", suppressed}, {"a > " + suppressed + " suppressed"}},
        {"a severe error in a destructor",
         {"A::~A: Severe error suppressed"},
         {"A::~A: Severe error suppressed suppressed"}},
        {"the start is not in the log", {passed, caught}, {passed + " > " + caught + " caught"}},
        {"the end is not in the log", {"a", passed}, {"a > " + passed + " open"}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(fold(errors(c.messages)), c.trails) << c.why;
    }
}

TEST(FolderTest, WritersDoNotMix) {
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

TEST(FolderTest, WhatIsSplitOffHasTheTurnOfItsFirstRecord) {
    const std::vector<std::string> lines = {
        header(1) + "Vorel Error: a", header(1) + "Vorel Error: f: Vorel exception rethrown",
        header(2) + "WARN: before",   header(1) + "Vorel Error: b",
        header(2) + "WARN: after",    header(1) + "Vorel Error: f: Vorel exception rethrown"};
    EXPECT_THAT(fold(lines), ElementsAre("a > f: Vorel exception rethrown open", "before",
                                         "b > f: Vorel exception rethrown open", "after"));
}

TEST(FolderTest, SystemTextsBelongToTheFailure) {
    EXPECT_THAT(fold({header() + "Vorel Error: a", header() + "AddHRESULTErrorToStack: HRESULT: 80070005 - No.",
                      header() + "AddHRESULTErrorToStack: ", header() + "Vorel Error: f: Vorel exception caught"}),
                ElementsAre("a > HRESULT: 80070005 - No. >  > f: Vorel exception caught caught"));
}

TEST(FolderTest, AfterSilenceNothingBelongsToATrail) {
    const auto at = [](const char* clock, const char* message) {
        return header(1, 1, clock) + "Vorel Error: " + message;
    };
    EXPECT_THAT(fold({at("01:00:00", "a"), at("01:00:05", "b"), at("01:00:11", "c")}),
                ElementsAre("a > b open", "c open"));
}

TEST(FolderTest, ATrailEndsWhereItsThreadWasEnded) {
    EXPECT_THAT(fold({header(1) + "Vorel Error: a", header(1) + "Vorel Error: half" + header(2) + "WARN: w",
                      header(1) + "Vorel Error: f: Vorel exception rethrown"}),
                ElementsAre("a > half open", "w", "f: Vorel exception rethrown open"));
}

TEST(FolderTest, AHeaderInTheMiddleOfALineJoinsNoTrail) {
    const std::string passed = "f: Vorel exception rethrown";
    const std::string caught = "g: Vorel exception caught";
    struct Case {
        const char* why;
        std::vector<std::string> lines;
        std::vector<std::string> trails;
    };
    const Case cases[] = {
        {"a forged end of another thread's trail",
         {header(1) + "Vorel Error: a", header(2) + "WARN: x" + header(1) + "Vorel Error: " + caught,
          header(1) + "Vorel Error: " + passed},
         {"a > " + passed + " open", "x", caught}},
        {"a forged start of a trail",
         {header(2) + "WARN: x" + header(1) + "Vorel Error: forged", header(1) + "Vorel Error: " + passed},
         {"x", "forged", passed + " open"}},
        {"a forged severe error",
         {header(2) + "WARN: x" + header(1) + "Vorel Error: f: Severe error caught"},
         {"x", "f: Severe error caught"}},
        {"a forged time does not end a trail",
         {header(1, 1) + "Vorel Error: a", header(2) + "WARN: x" + header(1, 1, "23:00:00") + "WARN: y",
          header(1, 1) + "Vorel Error: " + passed},
         {"a > " + passed + " open", "x", "y"}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(fold(c.lines), c.trails) << c.why;
    }
}

TEST(FolderTest, AnOpenTrailHoldsOthersBackForAWhileOnly) {
    std::vector<std::string> shown;
    Folder folder([&](const Trail& trail) { shown.emplace_back(trail.records.front().parsedBody().message); });
    folder.add(recordOf(header(1, 1, "01:00:00") + "Vorel Error: a"));
    folder.add(recordOf(header(2, 1, "01:00:05") + "WARN: b"));
    EXPECT_TRUE(shown.empty());
    folder.add(recordOf(header(2, 1, "01:00:06") + "WARN: c"));
    EXPECT_THAT(shown, ElementsAre("a", "b", "c"));
}

TEST(FolderTest, WhatWaitsIsBounded) {
    std::size_t shown = 0;
    Folder folder([&](const Trail& trail) { shown += trail.records.size(); });
    std::size_t added = 0;
    const auto add = [&](const std::string& line) {
        folder.add(recordOf(line));
        ++added;
    };
    add(header(1) + "Vorel Error: a");
    while (added != 3 * Folder::kMostWaiting) {
        add(header(2) + "WARN: b");
        ASSERT_LE(added - shown, Folder::kMostWaiting);
    }
    const std::string large(Folder::kMostBytesWaiting / 8, 'x');
    for (std::size_t count = 0; count != 12; ++count) {
        add(header(3) + "Vorel Error: " + large + std::string(count, 'y'));
        ASSERT_LE(added - shown, 8u);
    }
    folder.flush();
    EXPECT_EQ(shown, added);
}

TEST(FolderTest, ATrailIsBounded) {
    std::vector<std::size_t> sizes;
    Folder folder([&](const Trail& trail) { sizes.push_back(trail.records.size()); });
    for (std::size_t count = 0; count != 2 * Folder::kMostRecords + 1; ++count) {
        folder.add(recordOf(header() + "Vorel Error: f: Vorel exception rethrown"));
    }
    folder.flush();
    EXPECT_THAT(sizes, ElementsAre(Folder::kMostRecords, Folder::kMostRecords, 1u));
}

}  // namespace
