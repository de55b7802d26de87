#include "vorellog/Summary.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools_log/Records.h"
#include "vorellog/TrailAssembler.h"

namespace {

using test::header;
using test::recordsOf;
using ::testing::HasSubstr;
using ::testing::Not;
using vorellog::Record;
using vorellog::Summary;

Summary summaryOf(const std::vector<std::string>& lines) {
    Summary summary;
    for (const Record& record : recordsOf(lines)) {
        summary.add(record);
    }
    return summary;
}

TEST(SummaryTest, TextContainsTotalsGroupsProcessesAndSteps) {
    const Summary summary = summaryOf({
        "garbage",
        header(1, 77, "01:43:08") + "WARN: order 7 is late",
        header(1, 77, "01:43:10") + "WARN: order 12 is late",
        header(2, 77, "01:43:09") + "WARN Truncated: order 8 is late",
        "[Mon Nov 16" + header(1, 4312, "01:43:08") + "Vorel Error: ha" + header(1, 4312, "01:43:08") + "no prefix",
    });
    EXPECT_EQ(summary.text(), "5 records of 2 processes from 2026-11-16 01:43:08 to 2026-11-16 01:43:10, "
                              "and 2 lines without a header; 4 damaged: 1 cut, 2 mid-line, 1 no header\n"
                              "\n"
                              "   Entries  Message\n"
                              "         3  WARN: order # is late\n"
                              "            2026-11-16 01:43:08 to 2026-11-16 01:43:10, 1 process\n"
                              "            first: host7.77.1: order 7 is late\n"
                              "         1  no prefix\n"
                              "            2026-11-16 01:43:08, 1 process\n"
                              "            first: host7.4312.1: no prefix\n"
                              "         1  Vorel Error: ha\n"
                              "            2026-11-16 01:43:08, 1 process\n"
                              "            first: host7.4312.1: ha\n"
                              "\n"
                              "Process     Prefix        Records  First                Last\n"
                              "host7.77    WARN                3  2026-11-16 01:43:08  2026-11-16 01:43:10\n"
                              "host7.4312                      1  2026-11-16 01:43:08  2026-11-16 01:43:08\n"
                              "host7.4312  Vorel Error         1  2026-11-16 01:43:08  2026-11-16 01:43:08\n"
                              "\n"
                              "Steps of 1 s          Records\n"
                              "2026-11-16 01:43:08         3  ########################################\n"
                              "2026-11-16 01:43:09         1  ##############\n"
                              "2026-11-16 01:43:10         1  ##############\n");
}

TEST(SummaryTest, TopLimitsGroupsAndRows) {
    const Summary summary = summaryOf({header(1, 1) + "WARN: a", header(1, 2) + "WARN: a", header(1, 3) + "WARN: b"});
    EXPECT_THAT(summary.text(1), HasSubstr("\n   Entries  Message (1 of 2; --top shows more)\n         2  WARN: a\n"));
    EXPECT_THAT(summary.text(1), Not(HasSubstr("WARN: b")));
    EXPECT_THAT(summary.text(1), HasSubstr("\nhost7.1  WARN           1  2026-11-16 01:43:08  2026-11-16 01:43:08\n"
                                           "(1 of 3 rows; --top shows more)\n"));
    EXPECT_THAT(summary.text(2), Not(HasSubstr("of 2; --top")));
    EXPECT_THAT(summary.text(3), Not(HasSubstr("--top")));
    EXPECT_THAT(summary.json(1), HasSubstr(R"(,"groups":2,"ungrouped":0})"));
    EXPECT_THAT(summary.json(1), Not(HasSubstr(R"("message":"b")")));
    EXPECT_THAT(summary.json(1), Not(HasSubstr("host7.3")));
}

TEST(SummaryTest, GroupsAreInJson) {
    const Summary summary =
        summaryOf({header(1, 77, "01:43:08") + "WARN: order 7", header(1, 78, "01:44:08") + "WARN: order 8\xE9"});
    EXPECT_THAT(
        summary.json(),
        HasSubstr("\n"
                  R"({"type":"group","entries":1,"first":"2026-11-16T01:43:08","last":"2026-11-16T01:43:08",)"
                  R"("processes":1,"prefix":"WARN","message":"order #","writer":"host7.77.1","example":"order 7"})"
                  "\n"));
}

TEST(SummaryTest, ExceptionsAreGroupedByTheirTrails) {
    Summary summary;
    vorellog::TrailAssembler assembler([&](const vorellog::Trail& trail) {
        trail.isException ? summary.add(trail) : summary.add(trail.records.front());
    });
    for (const unsigned long thread : {1UL, 2UL}) {
        for (const char* const text : {"Vorel Error: line 7 is\nbad", "Vorel Error: f: Vorel exception rethrown",
                                       "Vorel Error: main: Vorel exception caught", "WARN: line 7 is\nbad"}) {
            assembler.add(test::recordOf(header(thread, 4312) + text));
        }
        assembler.add(test::recordOf(header(thread, 4312) + "Vorel Error: line 8 is\nbad"));
        assembler.add(test::recordOf(header(thread, 4312) + "Vorel Error: main: Vorel exception caught"));
    }
    assembler.flush();
    EXPECT_THAT(summary.text(),
                ::testing::StartsWith("6 entries with 12 records of 1 process at 2026-11-16 01:43:08\n"));
    EXPECT_THAT(summary.text(), HasSubstr("\n         2  Vorel Error: line # is bad\n"
                                          "              > f: Vorel exception rethrown\n"
                                          "              > main: Vorel exception caught\n"
                                          "            2026-11-16 01:43:08, 1 process\n"
                                          "            first: host7.4312.1: line 7 is bad\n"));
    EXPECT_THAT(summary.text(), HasSubstr("\n         2  Vorel Error: line # is bad\n"
                                          "              > main: Vorel exception caught\n"));
    EXPECT_THAT(summary.json(), HasSubstr(R"("message":"line # is\nbad","trail":["f: Vorel exception rethrown",)"
                                          R"("main: Vorel exception caught"],"writer":"host7.4312.1",)"
                                          R"("example":"line 7 is\nbad"})"));
    EXPECT_THAT(summary.json(), HasSubstr(R"("groups":3,)"));
}

TEST(SummaryTest, LogWithoutRecordsHasNoTable) {
    EXPECT_EQ(Summary().text(), "0 records\n");
    EXPECT_EQ(summaryOf({"garbage"}).text(), "0 records, and 1 line without a header; 1 damaged: 1 no header\n");
}

TEST(SummaryTest, JsonContainsTotalsCountsAndSteps) {
    const Summary summary = summaryOf({header(1, 77, "01:43:08") + "W\"ARN: a", header(1, 77, "01:44:08") + "caf\xE9"});
    EXPECT_THAT(
        summary.json(),
        ::testing::StartsWith(
            R"({"type":"summary","entries":2,"records":2,"processes":1,"from":"2026-11-16T01:43:08","to":"2026-11-16T01:44:08","cut":0,"midLine":0,"noHeader":0,"badUtf8":1,"groups":2,"ungrouped":0})"
            "\n"));
    EXPECT_THAT(
        summary.json(),
        HasSubstr(
            R"({"type":"count","process":"host7.77","prefix":"","records":1,"first":"2026-11-16T01:44:08","last":"2026-11-16T01:44:08"})"
            "\n"
            R"({"type":"count","process":"host7.77","prefix":"W\"ARN","records":1,"first":"2026-11-16T01:43:08","last":"2026-11-16T01:43:08"})"
            "\n"));
    EXPECT_THAT(summary.json(), HasSubstr(R"({"type":"step","from":"2026-11-16T01:43:05","seconds":5,"records":1})"
                                          "\n"
                                          R"({"type":"step","from":"2026-11-16T01:43:10","seconds":5,"records":0})"
                                          "\n"));
    EXPECT_EQ(
        Summary().json(),
        R"({"type":"summary","entries":0,"records":0,"processes":0,"cut":0,"midLine":0,"noHeader":0,"badUtf8":0,"groups":0,"ungrouped":0})"
        "\n");
}

TEST(SummaryTest, RowsAboveTheLimitAreCountedAsOthers) {
    Summary summary;
    const std::size_t processes = Summary::kMaxRows + 50;
    for (std::size_t process = 1; process <= processes; ++process) {
        summary.add(test::recordOf(header(1, static_cast<unsigned long>(process)) + "WARN: a"));
        summary.add(test::recordOf(header(1, 1) + "WARN: a"));
    }
    EXPECT_THAT(summary.json(), HasSubstr(R"x({"type":"count","process":"(others)","prefix":"","records":50,)x"));
    EXPECT_THAT(summary.json(),
                HasSubstr(R"("process":"host7.1","prefix":"WARN","records":)" + std::to_string(processes + 1)));
    EXPECT_THAT(
        summary.text(),
        HasSubstr("\n(10 of 20000 rows; --top shows more)\n(others: processes and prefixes beyond 20000 rows)\n"));
}

TEST(SummaryTest, ProcessThatAppearsLateIsListedFirstIfItHasMostRecords) {
    Summary summary;
    for (unsigned long process = 1; process <= 3000; ++process) {
        for (const char* const prefix : {"WARN: a", "DEBUG: a", "Vorel Error: a"}) {
            summary.add(test::recordOf(header(1, process) + prefix));
        }
    }
    for (int record = 0; record != 2; ++record) {
        summary.add(test::recordOf(header(1, 3000) + "Vorel Error: a"));
    }
    EXPECT_THAT(summary.text(1), HasSubstr("\nhost7.3000  Vorel Error         3  "));
    EXPECT_THAT(summary.text(), Not(HasSubstr("others")));
}

TEST(SummaryTest, FoldedTrailIsCountedAsOneEntry) {
    Summary summary;
    vorellog::TrailAssembler assembler([&](const vorellog::Trail& trail) {
        trail.isException ? summary.add(trail) : summary.add(trail.records.front());
    });
    for (const Record& record :
         recordsOf({"garbage", header(1, 1) + "Vorel Error: a", header(1, 1) + "Vorel Error: f: Vorel exception caught",
                    header(1, 2) + "WARN: b"})) {
        assembler.add(record);
    }
    assembler.flush();
    EXPECT_THAT(summary.text(), ::testing::StartsWith("2 entries with 3 records of 2 processes at 2026-11-16 01:43:08, "
                                                      "and 1 line without a header; 1 damaged: 1 no header\n"));
    // In JSON, "entries" includes the line without a header.
    EXPECT_THAT(summary.json(), ::testing::StartsWith(R"({"type":"summary","entries":3,"records":3,"processes":2,)"));
}

TEST(SummaryTest, FirstAndLastTimesHaveMillisecondsIfTheirLinesHaveThem) {
    const auto at = [](const std::string& clock) {
        return "[Mon Nov 16 " + clock.substr(0, 8) + " 2026]" + clock.substr(8) + " host7.1.1: WARN: a";
    };
    struct Case {
        const char* why;
        std::vector<std::string> clocks;
        std::string first;
        std::string last;
    };
    const Case cases[] = {
        {"no line has milliseconds", {"01:00:00", "01:00:02"}, "01:00:00", "01:00:02"},
        {"both lines have milliseconds", {"01:00:00.045", "01:00:02.000"}, "01:00:00.045", "01:00:02.000"},
        {"only the first line has milliseconds", {"01:00:00.000", "01:00:02"}, "01:00:00.000", "01:00:02"},
        {"only the last line has milliseconds", {"01:00:00", "01:00:02.120"}, "01:00:00", "01:00:02.120"},
        {"lines that are not in the order of their times",
         {"01:00:02", "01:00:03.120", "01:00:00.045"},
         "01:00:00.045",
         "01:00:03.120"},
    };
    for (const Case& c : cases) {
        std::vector<std::string> lines;
        std::transform(c.clocks.begin(), c.clocks.end(), std::back_inserter(lines), at);
        const std::string json = summaryOf(lines).json();
        const std::string day = "2026-11-16T";
        const std::string span = R"("first":")" + day + c.first + R"(","last":")" + day + c.last + '"';
        EXPECT_THAT(json, HasSubstr(R"("from":")" + day + c.first + R"(","to":")" + day + c.last + '"')) << c.why;
        EXPECT_EQ(json.find(span), json.find(R"("first":)")) << c.why;    // the row of the message
        EXPECT_EQ(json.rfind(span), json.rfind(R"("first":)")) << c.why;  // the row of the process
    }
}

TEST(SummaryTest, SummaryOfOneRecordShowsOneTime) {
    EXPECT_THAT(summaryOf({header() + "WARN: a"}).text(),
                ::testing::StartsWith("1 record of 1 process at 2026-11-16 01:43:08\n"));
}

TEST(SummaryTest, MessagesAreEscaped) {
    const std::string text = summaryOf({header() + "WARN: \x1B[2J\n\xE2" + "\x80\xAE \xE9"}).text();
    EXPECT_THAT(text, HasSubstr("WARN: \\x1B[#J \\xE2\\x80\\xAE \\xE9\n"));
    EXPECT_THAT(text, Not(HasSubstr("\x1B")));
}

TEST(SummaryTest, HostIsEscaped) {
    const Summary summary = summaryOf({"[Mon Nov 16 01:43:08 2026] \x1B\xC2\x9B.1.2: WARN: a"});
    EXPECT_THAT(summary.text(), HasSubstr("\n\\x1B\\xC2\\x9B.1  WARN"));
    EXPECT_THAT(summary.json(), HasSubstr(R"("process":"\u001b\u009b.1")"));
}

TEST(SummaryTest, LongPrefixIsShortened) {
    const std::string text = summaryOf({header() + std::string(3000, 'x') + ": a"}).text();
    EXPECT_THAT(text, HasSubstr(std::string(48, 'x') + "... "));
    EXPECT_THAT(text, Not(HasSubstr(std::string(49, 'x'))));
}

}  // namespace
