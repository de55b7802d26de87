/// \file
/// The commands that compare: sort, compare and version.

#include <algorithm>

#include "Vorelconv.h"

namespace {

using test::Conversion;
using test::vorelconv;
using test::Words;

TEST(CompareCommandsTest, Sort) {
    const Conversion conversions[] = {
        {"empty input", {L"sort"}, "", ""},
        {"numbers by value", {L"sort"}, "file10\nfile9\nFile1\nfile1\n", "File1\nfile1\nfile9\nfile10\n"},
        {"lines that compare equal keep their order", {L"sort"}, "b\n007\n7\n07\na", "007\n7\n07\na\nb\n"},
        {"digits compared as characters", {L"sort", L"--plain"}, "file10\nfile9\n", "file10\nfile9\n"},
        {"ignoring case", {L"sort", L"-i"}, "b\nA\na\nB\n", "A\na\nb\nB\n"},
        {"reverse", {L"sort", L"--reverse"}, "1\n10\n9\n", "10\n9\n1\n"},
        {"reverse, lines that compare equal keep their order", {L"sort", L"-r"}, "7\n007\n8\n", "8\n7\n007\n"},
        {"characters outside ASCII, compared by code units",
         {L"sort"},
         "\xC3\xA9\nz\n\xF0\x9F\x98\x80\n\xEF\xBF\xBD\n",
         "z\n\xC3\xA9\n\xF0\x9F\x98\x80\n\xEF\xBF\xBD\n"},
        {"empty lines first", {L"sort"}, "a\n\n", "\na\n"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

struct Answer {
    Words arguments;
    std::string output;
    DWORD exitCode;
};

void expectAnswers(const std::vector<Answer>& answers) {
    for (const Answer& answer : answers) {
        SCOPED_TRACE(::testing::PrintToString(answer.arguments));
        const test::Captured run = vorelconv(answer.arguments);
        EXPECT_EQ(run.output, answer.output);
        EXPECT_EQ(run.error, "");
        EXPECT_EQ(run.exitCode, answer.exitCode);
    }
}

TEST(CompareCommandsTest, Compare) {
    expectAnswers({
        {{L"compare", L"file9", L"file10"}, "less\n", 1},
        {{L"compare", L"--plain", L"file9", L"file10"}, "greater\n", 1},
        {{L"compare", L"007", L"7"}, "equal\n", 0},
        {{L"compare", L"a", L"A"}, "greater\n", 1},
        {{L"compare", L"-i", L"a", L"A"}, "equal\n", 0},
        {{L"compare", L"a/b", L"a\\b"}, "less\n", 1},
        {{L"compare", L"-s", L"a/b", L"a\\b"}, "equal\n", 0},
        {{L"compare", L"-r", L"1", L"2"}, "greater\n", 1},
        {{L"compare", L"", L"a"}, "less\n", 1},
        {{L"compare", L"-5", L"-5"}, "equal\n", 0},
    });
}

TEST(CompareCommandsTest, Version) {
    expectAnswers({
        {{L"version", L"10.2", L"9.9"}, "true\n", 0},
        {{L"version", L"1.2.3", L"1.2"}, "true\n", 0},
        {{L"version", L"1.2", L"1.2"}, "true\n", 0},
        {{L"version", L"1-2_4", L"1.2.3"}, "true\n", 0},
        {{L"version", L"9.9", L"10.2"}, "false\n", 1},
        {{L"version", L"1.2", L"1.2.0"}, "false\n", 1},
        {{L"version", L"1.2", L""}, "false\n", 1},
        {{L"version", L"", L"1.2"}, "false\n", 1},
        {{L"version", L"", L""}, "false\n", 1},
    });
}

}  // namespace
