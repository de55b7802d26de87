#include "tools/support/CommandLine.h"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/support/Tool.h"

namespace {

using ::testing::ElementsAreArray;

using Words = std::vector<std::wstring>;

constexpr tools::Option kOptions[] = {
    {L"decode", L'd', {}, L"text to bytes"},
    {L"long-only", 0, {}, L"without a letter"},
    {L"output", L'o', L"file", L"write there"},
    {L"text", L't', L"text", L"take this"},
};

constexpr tools::Syntax kSyntax = {.command = L"tool command",
                                   .summary = L"does something",
                                   .options = kOptions,
                                   .operands = L"<first> [second]",
                                   .minOperands = 1,
                                   .maxOperands = 2,
                                   .details = L"More to say."};

tools::Arguments parsed(const Words& words) {
    return tools::parse(kSyntax, words);
}

TEST(CommandLineTest, SuggestsSimilarOptions) {
    struct Case {
        const wchar_t* given;
        std::wstring text;
        const char* why;
    };
    const Case cases[] = {
        {L"--decod", L"unknown option --decod; did you mean --decode?", "a missing letter"},
        {L"--decoded=x", L"unknown option --decoded; did you mean --decode?", "an additional letter, and a value"},
        {L"--deocde", L"unknown option --deocde; did you mean --decode?", "swapped letters"},
        {L"--ouput", L"unknown option --ouput; did you mean --output?",
         "a missing letter in the name of another option"},
        {L"--out", L"unknown option --out; did you mean --output?", "an abbreviation"},
        {L"--hlep", L"unknown option --hlep; did you mean --help?", "swapped letters of --help"},
        {L"--input", L"unknown option --input", "three edits from --output"},
        {L"--colour", L"unknown option --colour", "nothing similar"},
        {L"--x", L"unknown option --x", "too short"},
    };
    for (const Case& c : cases) {
        try {
            (void)parsed({c.given, L"a"});
            ADD_FAILURE() << "accepted: " << c.why;
        } catch (const tools::UsageError& e) {
            EXPECT_EQ(e.text(), c.text) << c.why;
        }
    }
}

struct GoodLine {
    const char* why;
    Words words;
    bool decode;
    Words outputs;
    Words operands;
};

TEST(CommandLineTest, AcceptsAllFormsOfOptionsAndOperands) {
    const GoodLine lines[] = {
        {"a single operand", {L"a"}, false, {}, {L"a"}},
        {"a long switch", {L"--decode", L"a"}, true, {}, {L"a"}},
        {"a short switch after the operand", {L"a", L"-d"}, true, {}, {L"a"}},
        {"a long option and its value", {L"--output", L"x", L"a"}, false, {L"x"}, {L"a"}},
        {"a long option with '='", {L"--output=x", L"a"}, false, {L"x"}, {L"a"}},
        {"a value may contain '='", {L"--output=x=y", L"a"}, false, {L"x=y"}, {L"a"}},
        {"a value after '=' may be empty", {L"--output=", L"a"}, false, {L""}, {L"a"}},
        {"a value may be an empty argument", {L"-o", L"", L"a"}, false, {L""}, {L"a"}},
        {"a short option and its value", {L"-o", L"x", L"a"}, false, {L"x"}, {L"a"}},
        {"a short option with an attached value", {L"-ox", L"a"}, false, {L"x"}, {L"a"}},
        {"several letters after one dash", {L"-dox", L"a"}, true, {L"x"}, {L"a"}},
        {"several letters and a value", {L"-do", L"x", L"a"}, true, {L"x"}, {L"a"}},
        {"a value may look like an option", {L"-o", L"--decode", L"a"}, false, {L"--decode"}, {L"a"}},
        {"an option more than once", {L"-ox", L"--output", L"y", L"a"}, false, {L"x", L"y"}, {L"a"}},
        {"a dash is an operand", {L"-"}, false, {}, {L"-"}},
        {"negative numbers are operands", {L"-5", L"-.5"}, false, {}, {L"-5", L"-.5"}},
        {"two dashes end the options", {L"--", L"--decode", L"-o"}, false, {}, {L"--decode", L"-o"}},
        {"an empty operand", {L""}, false, {}, {L""}},
    };
    for (const GoodLine& line : lines) {
        SCOPED_TRACE(line.why);
        const tools::Arguments arguments = parsed(line.words);
        EXPECT_EQ(arguments.has(L"decode"), line.decode);
        EXPECT_THAT(arguments.values(L"output"), ElementsAreArray(line.outputs));
        EXPECT_EQ(arguments.has(L"output"), !line.outputs.empty());
        EXPECT_THAT(arguments.operands(), ElementsAreArray(line.operands));
        EXPECT_FALSE(arguments.has(L"help"));
    }
}

TEST(CommandLineTest, Value_IsTheLastGivenValue) {
    EXPECT_EQ(parsed({L"a", L"-o", L"x", L"-o", L"y"}).value(L"output"), L"y");
    EXPECT_EQ(parsed({L"a"}).value(L"output"), std::nullopt);
}

struct WrongLine {
    Words words;
    std::wstring text;
};

TEST(CommandLineTest, UsageErrorNamesTheProblem) {
    const WrongLine lines[] = {
        {{L"a", L"--unknown"}, L"unknown option --unknown"},
        {{L"a", L"--unknown=5"}, L"unknown option --unknown"},
        {{L"a", L"--dec"}, L"unknown option --dec; did you mean --decode?"},
        {{L"a", L"-x"}, L"unknown option -x"},
        {{L"a", L"-dx"}, L"unknown option -x"},
        {{L"a", L"--decode=yes"}, L"option --decode takes no value"},
        {{L"a", L"--output"}, L"option --output needs a value: <file>"},
        {{L"a", L"-do"}, L"option -o needs a value: <file>"},
        {{}, L"too few arguments, expected: <first> [second]"},
        {{L"a", L"b", L"c"}, L"unexpected argument \"c\""},
    };
    for (const WrongLine& line : lines) {
        try {
            (void)parsed(line.words);
            ADD_FAILURE() << "accepted: " << ::testing::PrintToString(line.text);
        } catch (const tools::UsageError& e) {
            EXPECT_EQ(e.text(), line.text);
            EXPECT_EQ(e.command(), L"tool command");
        }
    }
}

TEST(CommandLineTest, Help_AllowsAnyNumberOfOperands) {
    EXPECT_TRUE(parsed({L"--help"}).has(L"help"));
    EXPECT_TRUE(parsed({L"-h"}).has(L"help"));
    EXPECT_TRUE(parsed({L"a", L"b", L"c", L"-dh"}).has(L"help"));
    EXPECT_FALSE(parsed({L"a", L"-o", L"--help"}).has(L"help"));
}

TEST(CommandLineTest, QueryingAnUndeclaredOptionThrowsALogicError) {
    const tools::Arguments arguments = parsed({L"a"});
    EXPECT_THROW((void)arguments.has(L"missing"), std::logic_error);
    EXPECT_THROW((void)arguments.value(L"missing"), std::logic_error);
    EXPECT_THROW((void)arguments.values(L"missing"), std::logic_error);
}

TEST(CommandLineTest, HelpText) {
    EXPECT_EQ(tools::helpText(kSyntax), L"tool command: does something\n"
                                        L"\n"
                                        L"Usage: tool command [options] <first> [second]\n"
                                        L"\n"
                                        L"Options:\n"
                                        L"  -d, --decode         text to bytes\n"
                                        L"      --long-only      without a letter\n"
                                        L"  -o, --output <file>  write there\n"
                                        L"  -t, --text <text>    take this\n"
                                        L"  -h, --help           show this text\n"
                                        L"\n"
                                        L"More to say.\n");
}

}  // namespace
