#include "Vorelconv.h"

namespace {

using test::vorelconv;
using test::Words;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

const std::wstring kCommands[] = {L"base64", L"daylight", L"hex",  L"url",   L"utf16", L"codepage", L"integer",
                                  L"double", L"boolean",  L"list", L"range", L"sort",  L"compare",  L"version"};

std::string narrow(const std::wstring& ascii) {
    return {ascii.begin(), ascii.end()};
}

TEST(VorelconvTest, HelpNamesEveryCommand) {
    for (const Words& arguments : {Words{L"--help"}, Words{L"-h"}}) {
        const test::Captured run = vorelconv(arguments);
        EXPECT_EQ(run.exitCode, test::kDone);
        EXPECT_EQ(run.error, "");
        EXPECT_THAT(run.output, HasSubstr("Usage: vorelconv <command> [options] [input]\n"));
        for (const std::wstring& command : kCommands) {
            EXPECT_THAT(run.output, HasSubstr("\n  " + narrow(command) + " "));
        }
    }
}

TEST(VorelconvTest, EveryCommandHasHelp) {
    for (const std::wstring& command : kCommands) {
        SCOPED_TRACE(narrow(command));
        const test::Captured run = vorelconv({command, L"--help"});
        EXPECT_EQ(run.exitCode, test::kDone);
        EXPECT_EQ(run.error, "");
        EXPECT_THAT(run.output, AllOf(StartsWith("vorelconv " + narrow(command) + ": "),
                                      HasSubstr("\nUsage: vorelconv " + narrow(command) + " [options] "),
                                      HasSubstr("  -h, --help")));
    }
}

TEST(VorelconvTest, HelpDescribesSurprisingRules) {
    EXPECT_THAT(vorelconv({L"double", L"--help"}).output, HasSubstr("including leading zeros"));
    EXPECT_THAT(vorelconv({L"version", L"--help"}).output,
                HasSubstr("has more numbers, even zeros, or ends with a separator. If either text is empty, the\n"
                          "result is false."));
    EXPECT_THAT(vorelconv({L"hex", L"--help"}).output, HasSubstr("replaced only if the conversion succeeds"));
}

TEST(VorelconvTest, ManualPageAndCompletion) {
    EXPECT_THAT(vorelconv({L"--manual"}).output,
                AllOf(HasSubstr(".TH VORELCONV 1 "), HasSubstr(".SS vorelconv base64\n"), HasSubstr("Exit codes: 0 ")));
    EXPECT_THAT(vorelconv({L"--completion", L"bash"}).output, HasSubstr("compgen -W 'base64 daylight hex "));
    EXPECT_THAT(vorelconv({L"--completion", L"powershell"}).output, HasSubstr("'base64' = @("));
    EXPECT_EQ(vorelconv({L"--completion"}).exitCode, test::kUsageError);
}

TEST(VorelconvTest, Version) {
    const test::Captured run = vorelconv({L"--version"});
    EXPECT_EQ(run.exitCode, test::kDone);
    EXPECT_THAT(run.output, MatchesRegex("vorelconv \\d+\\.\\d+\\.\\d+\n"));
}

struct UsageError {
    Words arguments;
    std::string message;
    std::string helpCommand;
};

TEST(VorelconvTest, UsageErrorIsReportedWithExitCode2) {
    const UsageError uses[] = {
        {{}, "missing command", "vorelconv"},
        {{L"base65"}, "unknown command: \"base65\"", "vorelconv"},
        {{L"--decode"}, "unknown command: \"--decode\"", "vorelconv"},
        {{L"base64", L"--upper"}, "unknown option --upper", "vorelconv base64"},
        {{L"hex", L"a", L"b"}, "unexpected argument \"b\"", "vorelconv hex"},
        {{L"hex", L"--text", L"x", L"a"}, "--text and the file \"a\" cannot both be the input", "vorelconv"},
        {{L"url", L"--component", L"host"},
         "--component must be path, segment, query or parameter, not \"host\"",
         "vorelconv url"},
        {{L"url", L"-c", L"path", L"--plus"},
         "--component cannot be combined with --reserved or --plus",
         "vorelconv url"},
        {{L"url", L"--decode", L"--reserved"},
         "--decode cannot be combined with --component or --reserved",
         "vorelconv url"},
        {{L"utf16", L"--decode", L"--mark"}, "--mark cannot be combined with --decode", "vorelconv utf16"},
        {{L"codepage", L"--from", L"latin-99"}, "unknown code page: \"latin-99\"", "vorelconv codepage"},
        {{L"codepage", L"--to", L"4294968548"}, "unknown code page: \"4294968548\"", "vorelconv codepage"},
        {{L"integer", L"--type", L"int8"},
         "--type must be int64, uint64, int32, uint32 or hex, not \"int8\"",
         "vorelconv integer"},
        {{L"integer", L"--type", L"hex", L"--strict"},
         "--strict cannot be combined with --type hex",
         "vorelconv integer"},
        {{L"list", L"--type", L"float"},
         "--type must be text, integer, unsigned, double or boolean, not \"float\"",
         "vorelconv list"},
        {{L"list", L"--type", L"double", L"--join"},
         "--join, --delimiter and --trim require --type text",
         "vorelconv list"},
        {{L"list", L"--delimiter", L""}, "--delimiter must have at least one character", "vorelconv list"},
        {{L"compare", L"a"}, "too few arguments, expected: <text> <text>", "vorelconv compare"},
        {{L"version", L"1", L"2", L"3"}, "unexpected argument \"3\"", "vorelconv version"},
    };
    for (const UsageError& use : uses) {
        SCOPED_TRACE(use.message);
        const test::Captured run = vorelconv(use.arguments);
        EXPECT_EQ(run.exitCode, test::kUsageError);
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(run.error, "vorelconv: " + use.message + "\nTry \"" + use.helpCommand + " --help\".\n");
    }
}

}  // namespace
