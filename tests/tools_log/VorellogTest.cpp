/// \file
/// The program vorellog: logs of several processes, damaged and compressed logs, filters, the report, the help and exit
/// codes.

#include <algorithm>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include "support/CapturedChild.h"
#include "support/TemporaryLog.h"
#include "tools_log/LogWriters.h"
#include "tools_log/Records.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"

namespace {

using test::Captured;
using test::header;
using test::linesOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using vorel::Exception;
using Arguments = std::vector<std::wstring>;

class VorellogTest : public ::testing::Test {
protected:
    test::TemporaryLog log{-1};

    /// Writes `bytes` to the file `path`.
    static void write(const std::string& path, std::string_view bytes) {
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
        ASSERT_TRUE(file);
        ASSERT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), file.get()), bytes.size());
    }

    [[nodiscard]] Captured view(Arguments arguments) const {
        arguments.push_back(std::wstring(log.path().begin(), log.path().end()));
        return test::capture(L"vorellog", arguments);
    }
};

TEST_F(VorellogTest, ShowsAllLinesOfSeveralProcesses) {
    constexpr unsigned int kLines = 30;
    test::LogWriters writers(log.path(), log.folder(), -1);
    writers.start(3, kLines);
    ASSERT_TRUE(writers.finish());

    const Captured shown = view({});
    EXPECT_EQ(shown.exitCode, 0u);
    EXPECT_EQ(shown.error, "");
    EXPECT_EQ(test::countStressLines(linesOf(shown.output)), writers.expectedCounts());

    const Captured sums = view({L"--summary", L"--json"});
    for (const DWORD process : writers.processIds()) {
        EXPECT_THAT(sums.output, HasSubstr("." + std::to_string(process) + R"(","prefix":"WARN","records":)" +
                                           std::to_string(kLines * test::LogWriters::kThreads)));
    }

    const DWORD chosen = writers.processIds().front();
    const Captured ofOne = view({L"-p", std::to_wstring(chosen)});
    const std::vector<std::string> lines = linesOf(ofOne.output);
    EXPECT_EQ(lines.size(), kLines * test::LogWriters::kThreads);
    for (const std::string& line : lines) {
        EXPECT_THAT(line, HasSubstr("." + std::to_string(chosen) + "."));
    }
}

TEST_F(VorellogTest, FoldsATrailOfTheLibrary) {
    using vorel::detail::runNoThrow;
    using vorel::detail::runRethrowing;
    const auto fail = [] {
        Exception failure(L"line %d is not a number", 7);
        failure.appendMessage(L"in %ls", L"orders.txt");
        throw failure;  // NOLINT(misc-throw-by-value-catch-by-reference): constructed before the throw
    };
    runNoThrow(L"import", [&] { runRethrowing(L"Parser", L"run", fail); });
    Exception::warn("done");
    runNoThrow(L"again", [] { throw 5; });

    const Captured shown = view({L"--fold"});
    EXPECT_EQ(shown.exitCode, 0u);
    std::vector<std::string> lines = linesOf(shown.output);
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_THAT(lines[0], ::testing::EndsWith(": Vorel Error: line 7 is not a number"));
    EXPECT_THAT(lines[4], ::testing::EndsWith(": WARN: done"));
    EXPECT_THAT(lines[5], ::testing::EndsWith(": Vorel Error: again: Severe error caught"));
    EXPECT_THAT(std::vector(lines.begin() + 1, lines.begin() + 4),
                ElementsAre("    > in orders.txt", "    > Parser::run: Vorel exception rethrown",
                            "    > import: Vorel exception caught"));

    const Captured json = view({L"--fold", L"--json", L"-e", L"orders.txt"});
    EXPECT_EQ(linesOf(json.output).size(), 1u);
    EXPECT_THAT(json.output, HasSubstr(R"("end":"caught","records":[{)"));
    EXPECT_THAT(json.output, HasSubstr(R"("message":"import: Vorel exception caught"}]})"));
}

TEST_F(VorellogTest, ShowsBackupThenLogAndMarksDamage) {
    write(log.backupPath(), "the end of a lost line\r\n" + header(1) + "WARN: one\r\n" + header(1) + "WARN: ha");
    write(log.path(), header(2) + "WARN: two\r\nlines\r\n[Mon Nov 16" + header(3) + "WARN: caf\xE9\r\n" + header(4) +
                          "DEBUG: a" + header(5) + "DEBUG: b\r\n");
    const Captured shown = view({});
    EXPECT_EQ(shown.exitCode, 0u);
    EXPECT_EQ(shown.output, "(no header) the end of a lost line\n" + header(1) + "WARN: one\n(cut) " + header(1) +
                                "WARN: ha\n" + header(2) + "WARN: two\n    | lines\n(cut) [Mon Nov 16\n(mid-line) " +
                                header(3) + "WARN: caf\\xE9\n(cut) " + header(4) + "DEBUG: a\n(mid-line) " + header(5) +
                                "DEBUG: b\n");

    const Captured damaged = view({L"--damaged", L"--prefix", L"warn"});
    EXPECT_EQ(damaged.output, "(cut) " + header(1) + "WARN: ha\n(mid-line) " + header(3) + "WARN: caf\\xE9\n");
    EXPECT_THAT(damaged.error, HasSubstr("not shown"));
}

TEST_F(VorellogTest, FiltersByTime) {
    write(log.path(),
          header(1, 1, "01:00:00") + "a\r\n" + header(1, 1, "02:00:59") + "b\r\n" + header(1, 1, "02:01:00") + "c\r\n");
    EXPECT_EQ(view({L"--from", L"2026-11-16 01:00:01", L"--to", L"2026-11-16 02:00"}).output,
              header(1, 1, "02:00:59") + "b\n");
}

TEST_F(VorellogTest, MarksTheLineOfAKilledWriter) {
    // The writer is killed in the middle of a line, while it holds the lock.
    const test::NamedEvent held(test::NamedEvent::uniqueName(L"held"));
    const test::NamedEvent release(test::NamedEvent::uniqueName(L"release"));
    Exception::warn("before");
    const std::wstring half = L"[Mon Nov 16 01:43:08 2026] host7.1.2: WARN: ha";
    test::ChildProcess victim(L"lock_holder", {L"log=" + std::wstring(log.path().begin(), log.path().end()),
                                               L"held=" + held.name(), L"release=" + release.name(),
                                               L"holdMs=" + std::to_wstring(test::kGenerousMs), L"text=" + half});
    ASSERT_TRUE(held.wait());
    victim.terminate();
    EXPECT_THAT(linesOf(view({}).output),
                ElementsAre(HasSubstr("WARN: before"), "(cut) " + std::string(half.begin(), half.end())));
    Exception::warn("after");
    EXPECT_THAT(linesOf(view({}).output),
                ElementsAre(HasSubstr("WARN: before"), "(cut) " + std::string(half.begin(), half.end()),
                            AllOf(::testing::StartsWith("(mid-line) ["), ::testing::EndsWith("WARN: after"))));
}

TEST_F(VorellogTest, MarksForgedRecords) {
    const std::string forged = header(7) + "Vorel Error: g: Vorel exception caught";
    const Exception failure(L"line %hs is not a number", forged.c_str());
    vorel::detail::runNoThrow(L"import", [&] { throw Exception(failure); });
    const Captured damaged = view({L"--damaged"});
    EXPECT_THAT(linesOf(damaged.output),
                ElementsAre(AllOf(::testing::StartsWith("(cut) ["), ::testing::EndsWith("Vorel Error: line ")),
                            "(mid-line) " + forged + " is not a number"));
    const Captured folded = view({L"--fold"});
    EXPECT_THAT(folded.output, HasSubstr("(mid-line) " + forged + " is not a number\n"));
    EXPECT_THAT(folded.output, HasSubstr("import: Vorel exception caught"));
}

TEST_F(VorellogTest, LinesOfKilledWritersAreCompleteOrMarked) {
    test::LogWriters writers(log.path(), log.folder(), -1);
    writers.start(2, test::LogWriters::kWithoutEnd);
    ASSERT_TRUE(writers.waitForProgress());
    writers.kill();
    unsigned int whole = 0;
    for (const std::string& line : linesOf(view({}).output)) {
        if (!line.starts_with("(cut) ")) {
            EXPECT_TRUE(test::stressLineIn(line)) << line.substr(0, 200);
            ++whole;
        }
    }
    EXPECT_GE(whole, 2 * test::LogWriters::kThreads * 10);
}

TEST_F(VorellogTest, DoesNotChangeTheLog) {
    write(log.path(), "garbage\xE9\r\n" + header() + "WARN: a\r\n");
    const auto before = test::readFileBytes(log.path());
    (void)view({L"--json"});
    (void)view({L"--from", L"nonsense"});
    EXPECT_EQ(test::readFileBytes(log.path()), before);
    EXPECT_FALSE(test::readFileBytes(log.backupPath()));
}

TEST_F(VorellogTest, MaxCountAppliesToAllLogsTogether) {
    write(log.path(), header(1) + "WARN: one\r\n" + header(2) + "WARN: two\r\n");
    const std::wstring second = log.folder().widePath() + L"\\second.log";
    write(std::string(second.begin(), second.end()), header(3) + "WARN: three\r\n");
    const std::wstring first(log.path().begin(), log.path().end());
    for (const wchar_t* const count : {L"1", L"2", L"3"}) {
        const Captured shown = test::capture(L"vorellog", {L"-m", count, first, second});
        EXPECT_EQ(shown.exitCode, 0u) << count;
        EXPECT_EQ(shown.error, "") << count;
        EXPECT_EQ(std::to_wstring(linesOf(shown.output).size()), count);
    }
}

TEST_F(VorellogTest, ExitCodes) {
    write(log.path(), header() + "WARN: text\r\n");
    EXPECT_EQ(view({}).exitCode, 0u);
    EXPECT_EQ(view({L"-e", L"text"}).exitCode, 0u);
    EXPECT_EQ(view({L"-e", L"other"}).exitCode, 1u);
    EXPECT_EQ(view({L"--summary", L"-e", L"other"}).exitCode, 1u);
    EXPECT_EQ(view({L"--unknown"}).exitCode, 2u);
    EXPECT_EQ(view({L"-p", L"x"}).exitCode, 2u);
    EXPECT_EQ(view({L"-m", L"0"}).exitCode, 2u);
    EXPECT_EQ(view({L"another.log"}).exitCode, 3u);  // another.log does not exist, but the existing log is shown
    const std::wstring folder = log.folder().widePath();
    EXPECT_EQ(test::capture(L"vorellog", {folder}).exitCode, 3u);
    const Captured missing = test::capture(L"vorellog", {folder + L"\\no.log"});
    EXPECT_EQ(missing.exitCode, 3u);
    EXPECT_THAT(missing.error, HasSubstr("no.log: log not found"));
    write(log.path(), "");
    EXPECT_EQ(view({}).exitCode, 1u);
}

TEST_F(VorellogTest, ReadsSeveralLogsInTheGivenOrder) {
    write(log.path(), header(2) + "WARN: two\r\n");
    const std::string first = log.folder().path() + "\\first.log";
    write(first, header(1) + "WARN: one\r\n");
    const std::wstring missing = log.folder().widePath() + L"\\no.log";
    const Captured shown = view({std::wstring(first.begin(), first.end()), missing});
    EXPECT_EQ(shown.output, header(1) + "WARN: one\n" + header(2) + "WARN: two\n");
    EXPECT_THAT(shown.error, HasSubstr("no.log: log not found"));
    EXPECT_EQ(shown.exitCode, 3u);
}

TEST_F(VorellogTest, ReadsStandardInput) {
    const Captured shown = test::capture(L"vorellog", {L"-"}, "\xEF\xBB\xBF" + header() + "WARN: piped\r\n");
    EXPECT_EQ(shown.output, header() + "WARN: piped\n");
    EXPECT_EQ(shown.exitCode, 0u);
    EXPECT_EQ(test::capture(L"vorellog", {L"-"}).exitCode, 1u);
}

TEST_F(VorellogTest, ReadsUtf16AsPowerShellWritesIt) {
    const std::string line = header() + "WARN: a\r\n";
    std::string wide = "\xFF\xFE";
    for (const char c : line) {
        wide += c;
        wide += '\0';
    }
    write(log.path(), wide);
    EXPECT_EQ(view({}).output, header() + "WARN: a\n");
    EXPECT_EQ(view({L"--tail", L"1"}).output, header() + "WARN: a\n");
}

TEST_F(VorellogTest, CompressedLogThatEndsEarlyIsAFailure) {
    write(log.path(), std::string("\x1F\x8B\x08\x00\x00\x00\x00\x00\x00\x03\x4B", 11));
    const Captured shown = view({});
    EXPECT_EQ(shown.exitCode, 3u);
    EXPECT_THAT(shown.error, HasSubstr("the compressed data ends early"));
}

TEST_F(VorellogTest, RestOfACompressedLogIsNotReadAfterMaxCount) {
    const std::string lines = header(1) + "WARN: one\r\n" + header(2) + "WARN: two\r\n";
    // The header of this stored block says that another block follows, but there is none.
    std::string bytes("\x1F\x8B\x08\x00\x00\x00\x00\x00\x00\x03\x00", 11);
    for (const std::size_t size : {lines.size(), ~lines.size()}) {
        bytes += static_cast<char>(size & 0xFF);
        bytes += static_cast<char>(size >> 8 & 0xFF);
    }
    bytes += lines;
    write(log.path(), bytes);
    const Captured shown[] = {view({L"-m", L"1"}), test::capture(L"vorellog", {L"-m", L"1", L"-"}, bytes)};
    for (const Captured& each : shown) {
        EXPECT_EQ(each.output, header(1) + "WARN: one\n");
        EXPECT_EQ(each.error, "");
        EXPECT_EQ(each.exitCode, 0u);
    }
    const Captured whole[] = {view({L"-m", L"3"}), test::capture(L"vorellog", {L"-m", L"3", L"-"}, bytes)};
    for (const Captured& each : whole) {
        EXPECT_EQ(linesOf(each.output).size(), 2u);
        EXPECT_THAT(each.error, HasSubstr("the compressed data ends early"));
        EXPECT_EQ(each.exitCode, 3u);
    }
}

TEST_F(VorellogTest, ShowsTheEndOfALargeLog) {
    std::string bytes;
    std::string last;
    for (unsigned long thread = 1; thread <= 30000; ++thread) {
        bytes += header(thread) + "WARN: " + (thread % 7 == 0 ? "seventh" : "another") + "\r\n";
        if (thread > 29990) {
            last += header(thread) + "WARN: " + (thread % 7 == 0 ? "seventh" : "another") + "\n";
        }
    }
    write(log.path(), bytes);
    EXPECT_EQ(view({L"--tail", L"10"}).output, last);
    // 29988 and 29995 are multiples of seven.
    EXPECT_EQ(view({L"-n2", L"-E", L"sev.*th"}).output,
              header(29988) + "WARN: seventh\n" + header(29995) + "WARN: seventh\n");
    EXPECT_EQ(linesOf(view({L"-n", L"40000"}).output).size(), 30000u);
    EXPECT_EQ(view({L"-F", L"-n10"}).output, last);
}

TEST_F(VorellogTest, WritesAReport) {
    write(log.path(), header() + "WARN: one\r\n" + header() + "WARN: two\r\n");
    const std::string page = log.folder().path() + "\\report.html";
    const std::wstring wide(page.begin(), page.end());
    const Captured done = view({L"--report", wide, L"-e", L"two"});
    EXPECT_EQ(done.exitCode, 0u);
    EXPECT_EQ(done.output, "");
    EXPECT_EQ(done.error, "");
    EXPECT_THAT(test::readFileBytes(page).value_or(""), HasSubstr(R"("message":"two")"));
    EXPECT_THAT(test::readFileBytes(page).value_or(""), Not(HasSubstr(R"("message":"one")")));
    EXPECT_EQ(view({L"--report", log.folder().widePath()}).exitCode, 3u);
}

TEST_F(VorellogTest, SuggestsTheOptionForAMisspelledName) {
    EXPECT_THAT(view({L"--sumary"}).error, HasSubstr("unknown option --sumary; did you mean --summary?"));
}

TEST_F(VorellogTest, HelpListsOptionsAndExitCodes) {
    const Captured help = test::capture(L"vorellog", {L"--help"});
    EXPECT_EQ(help.exitCode, 0u);
    for (const char* const word :
         {"--follow",      "--process", "--thread",    "--prefix",  "--from",    "--to",   "--text",
          "--ignore-case", "--damaged", "--max-count", "--fold",    "--summary", "--json", "--color",
          "--version",     "--regexp",  "--invert",    "--context", "--tail",    "--top",  "--time-zone",
          "--report",      "0 entries", "1 nothing",   "2 invalid", "3 a log"}) {
        EXPECT_THAT(help.output, HasSubstr(word));
    }
}

TEST_F(VorellogTest, CommonRequestsForHelpShowTheHelp) {
    const std::string help = test::capture(L"vorellog", {L"--help"}).output;
    for (const wchar_t* const question : {L"/?", L"-?", L"help"}) {
        const Captured shown = test::capture(L"vorellog", {question});
        EXPECT_EQ(shown.output, help) << testing::PrintToString(question);
        EXPECT_EQ(shown.exitCode, 0u);
    }
}

TEST_F(VorellogTest, WildcardsAndFoldersAreRejected) {
    const std::wstring folder = log.folder().widePath();
    struct Case {
        std::wstring path;
        std::wstring error;
    };
    const Case cases[] = {
        {folder + L"\\*.log", folder + L"\\*.log: cannot be opened: wildcards are not supported\n"},
        {folder + L"\\error?.log", folder + L"\\error?.log: cannot be opened: wildcards are not supported\n"},
        {folder, folder + L": is a folder\n"},
        {folder + L"\\", folder + L"\\: is a folder\n"},
    };
    for (const Case& c : cases) {
        const Captured shown = test::capture(L"vorellog", {c.path});
        EXPECT_THAT(shown.error, ::testing::EndsWith("vorellog: " + std::string(c.error.begin(), c.error.end())));
        EXPECT_EQ(shown.exitCode, 3u);
    }
    write(log.path(), header() + "WARN: text\r\n");
    EXPECT_EQ(test::capture(L"vorellog", {L"\\\\?\\" + std::wstring(log.path().begin(), log.path().end())}).output,
              header() + "WARN: text\n");
}

TEST_F(VorellogTest, NothingFoundIsNotReportedIfTheOutputIsAPipe) {
    write(log.path(), header() + "WARN: text\r\n");
    EXPECT_EQ(view({L"-e", L"other"}).error, "");
}

TEST_F(VorellogTest, ManualPageAndCompletion) {
    EXPECT_THAT(test::capture(L"vorellog", {L"--manual"}).output,
                ::testing::StartsWith(".TH VORELLOG 1 \"\" \"vorellog "));
    EXPECT_THAT(
        test::capture(L"vorellog", {L"--completion", L"bash"}).output,
        AllOf(HasSubstr("complete -F _vorellog "), HasSubstr("--summary --top "), HasSubstr("--report|-r) words=")));
    EXPECT_THAT(test::capture(L"vorellog", {L"--completion=powershell"}).output,
                HasSubstr(", @('--tail', 'show only this many entries at the end of the log')"));
    EXPECT_EQ(test::capture(L"vorellog", {L"--completion", L"fish"}).exitCode, 2u);
}

TEST_F(VorellogTest, Version) {
    const Captured version = test::capture(L"vorellog", {L"--version"});
    EXPECT_EQ(version.exitCode, 0u);
    EXPECT_THAT(version.output, ::testing::MatchesRegex("vorellog \\d+\\.\\d+\\.\\d+\n"));
    EXPECT_EQ(version.error, "");
}

TEST_F(VorellogTest, ColoursDependOnOptionAndEnvironment) {
    write(log.path(), header() + "WARN: text\r\n");
    EXPECT_THAT(view({}).output, Not(HasSubstr("\x1B")));  // into a pipe
    EXPECT_THAT(view({L"--color=always"}).output, HasSubstr("\x1B[33mWARN: \x1B[0mtext"));
    EXPECT_THAT(view({L"--color=never"}).output, Not(HasSubstr("\x1B")));
    SetEnvironmentVariableW(L"NO_COLOR", L"1");
    EXPECT_THAT(view({}).output, Not(HasSubstr("\x1B")));
    EXPECT_THAT(view({L"--color=always"}).output, HasSubstr("\x1B[33m"));
    SetEnvironmentVariableW(L"NO_COLOR", nullptr);
}

}  // namespace
