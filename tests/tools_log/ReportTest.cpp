#include "vorellog/Report.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools_log/Records.h"

namespace {

using test::header;
using test::recordOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using vorellog::Report;

TEST(ReportTest, DataOfASmallLog) {
    vorellog::Trail trail;
    trail.isException = true;
    trail.end = vorellog::TrailEnd::Caught;
    trail.records = {recordOf(header(1, 77, "01:00:00") + "Vorel Error: line 7 is bad"),
                     recordOf(header(1, 77, "01:00:01") + "Vorel Error: main: Vorel exception caught")};
    Report report;
    report.add(trail);
    report.add(recordOf(header(2, 78, "01:00:03") + "WARN: disk 93% full"));
    // 1794787200000 is 2026-11-16 00:00:00, so 01:00:00 is 1794790800000.
    EXPECT_EQ(
        report.data("a.log"),
        R"({"name":"a.log","records":3,"ungrouped":0,"groupCount":2,"processCount":2,)"
        R"("cut":0,"mid-line":0,"no header":0,"bad UTF-8":0,"first":1794790800000,"last":1794790803000,)"
        R"("stepSeconds":1,"stepCount":4,"start":1794790800000,"prefixes":[)"
        R"({"name":"Vorel Error","records":2,"steps":[0,1,1,1]},{"name":"WARN","records":1,"steps":[3,1]}],)"
        R"("processes":[{"name":"host7.77","records":2,"first":1794790800000,"last":1794790801000},)"
        R"({"name":"host7.78","records":1,"first":1794790803000,"last":1794790803000}],"groups":[)"
        R"({"entries":1,"first":1794790803000,"last":1794790803000,"prefix":"WARN","message":"disk #% full","trail":[],)"
        R"("processCount":1,"processes":[1],"steps":[3,1],"examples":[{"time":1794790803000,"writer":"host7.78.2",)"
        R"("end":"caught","messages":[{"text":"disk 93% full"}]}]},)"
        R"({"entries":1,"first":1794790800000,"last":1794790800000,"prefix":"Vorel Error","message":"line # is bad",)"
        R"("trail":[{"text":"main: Vorel exception caught"}],"processCount":1,"processes":[0],"steps":[0,1],)"
        R"("examples":[{"time":1794790800000,"writer":"host7.77.1","end":"caught","messages":[{"text":"line 7 is bad"},)"
        R"({"text":"main: Vorel exception caught"}]}]}]})");
}

TEST(ReportTest, LogWithoutRecords) {
    EXPECT_THAT(Report().data("a.log"), EndsWith(R"("stepSeconds":1,"stepCount":0})"));
    Report damaged;
    damaged.add(recordOf("garbage"));
    EXPECT_THAT(damaged.data("a.log"), HasSubstr(R"("records":0,)"));
    EXPECT_THAT(damaged.data("a.log"), HasSubstr(R"("no header":1,)"));
}

TEST(ReportTest, TextCannotBecomeMarkup) {
    Report report;
    report.add(recordOf(header() + "<b>: </script><script>alert(1)</script>\x1B[2J \xE2" + "\x80\xAE \xE9"));
    const std::string data = report.data("<i>.log");
    EXPECT_THAT(data, Not(HasSubstr("<")));
    EXPECT_THAT(data, HasSubstr(R"("name":"\u003ci>.log")"));
    EXPECT_THAT(
        data,
        HasSubstr(R"("text":"\u003c/script>\u003cscript>alert(1)\u003c/script>\\x1B[2J \\xE2\\x80\\xAE \\xE9"})"));
    EXPECT_THAT(data, HasSubstr(R"("prefix":"\u003cb>")"));
}

TEST(ReportTest, PageIsCompleteAndLoadsNothing) {
    Report report;
    report.add(recordOf(header() + "WARN: a"));
    const std::string page = report.page("a.log");
    EXPECT_THAT(page, StartsWith("<!DOCTYPE html>"));
    EXPECT_THAT(page, EndsWith("</html>\n"));
    EXPECT_THAT(page, HasSubstr(R"(<script type="application/json" id="data">{"name":"a.log",)"));
    EXPECT_THAT(page, HasSubstr("default-src 'none'"));
    for (const char* const rejected : {"@DATA@", "@UPLOT@", "@STYLE@", " src=", "<link", "@import", "url("}) {
        EXPECT_THAT(page, Not(HasSubstr(rejected)));
    }
}

TEST(ReportTest, GroupListsOnlyItsNewestExamples) {
    Report report;
    for (unsigned long thread = 1; thread <= Report::kMaxExamples + 3; ++thread) {
        report.add(recordOf(header(thread) + "WARN: a"));
    }
    const std::string data = report.data("a.log");
    EXPECT_THAT(data, HasSubstr(R"("examples":[{"time":1794793388000,"writer":"host7.4312.13",)"));
    EXPECT_THAT(data, HasSubstr("host7.4312.4\""));
    EXPECT_THAT(data, Not(HasSubstr("host7.4312.3\"")));
}

TEST(ReportTest, SizeIsBounded) {
    Report report;
    const std::string filler(5000, 'x');
    for (unsigned long process = 1; process <= 3000; ++process) {
        std::string name;  // letters only, because digits are replaced in the message of a group
        for (unsigned long rest = process; rest != 0; rest /= 10) {
            name += static_cast<char>('g' + rest % 10);
        }
        for (int repeat = 0; repeat != 3; ++repeat) {
            report.add(recordOf(header(1, process) + name.substr(0, 2) + ": " + name + ' ' + filler));
        }
    }
    const std::string data = report.data("a.log");
    EXPECT_LT(data.size(), 10000000u);
    EXPECT_THAT(data, HasSubstr(R"("groupCount":3000,"processCount":3000,)"));
    EXPECT_THAT(data, HasSubstr(R"x({"name":"(others)","records":)x"));
    EXPECT_THAT(data, HasSubstr(std::string(Report::kMaxLineBytes - 5, 'x')));
    EXPECT_THAT(data, Not(HasSubstr(std::string(Report::kMaxLineBytes + 1, 'x'))));
}

}  // namespace
