#include "tools/support/Guide.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/support/Tool.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr tools::Option kOptions[] = {
    {L"decode", L'd', {}, L"text's bytes"},
    {L"output", L'o', L"file", L"write there"},
    {L"count", 0, L"number", L"take so many"},
};

constexpr tools::Syntax kViewer[] = {{.command = L"viewer",
                                      .summary = L"views",
                                      .options = kOptions,
                                      .operands = L"[log]...",
                                      .maxOperands = 1,
                                      .details = L".A period\nC:\\a-b"}};
constexpr tools::Syntax kCommands[] = {
    {.command = L"tool one", .summary = L"the first", .options = kOptions, .operands = {}, .details = {}},
    {.command = L"tool two", .summary = L"the second", .options = {}, .operands = {}, .details = L"More."}};

constexpr tools::Guide kSimple = {.program = L"viewer", .summary = L"view it - or not", .commands = kViewer};
constexpr tools::Guide kWithCommands = {
    .program = L"tool", .summary = L"converts", .commands = kCommands, .details = L"Text is UTF-8."};

TEST(GuideTest, ManualPageOfAProgram) {
    const std::wstring page = tools::manualPage(kSimple);
    const std::wstring start = L".TH VIEWER 1 \"\" \"viewer ";
    EXPECT_EQ(page.substr(0, start.size()), start);
    EXPECT_EQ(page.substr(page.find(L".SH NAME")), LR"x(.SH NAME
viewer \- view it \- or not
.SH SYNOPSIS
\fBviewer\fR [options] [log]...
.SH OPTIONS
.TP
\fB\-d\fR, \fB\-\-decode\fR
text's bytes
.TP
\fB\-o\fR, \fB\-\-output\fR \fIfile\fR
write there
.TP
\fB\-\-count\fR \fInumber\fR
take so many
.TP
\fB\-h\fR, \fB\-\-help\fR
show the help text
.SH DESCRIPTION
.nf
\&.A period
C:\ea\-b
.fi
)x");
}

TEST(GuideTest, ManualPageOfAProgramWithCommands) {
    const std::wstring page = tools::manualPage(kWithCommands);
    EXPECT_THAT(page, HasSubstr(L"\\fBtool one\\fR [options]\n.br\n\\fBtool two\\fR [options]\n"));
    EXPECT_THAT(page,
                HasSubstr(L".SH DESCRIPTION\n.nf\nText is UTF\\-8.\n.fi\n.SH COMMANDS\n.SS tool one\nthe first.\n"));
    EXPECT_THAT(page, HasSubstr(L".SS tool two\nthe second.\n.TP\n\\fB\\-h\\fR, \\fB\\-\\-help\\fR\nshow the help "
                                L"text\n.PP\n.nf\nMore.\n.fi\n"));
}

TEST(GuideTest, BashCompletesOptionsAndFiles) {
    const std::wstring script = tools::completionScript(kSimple, L"bash");
    EXPECT_THAT(script, HasSubstr(L"    case $previous in --count) return ;; esac\n"
                                  L"    case $previous in --output|-o) words= ;; "
                                  L"*) words='--decode --output --count --help' ;; esac\n"));
    EXPECT_THAT(script, HasSubstr(L"\ncomplete -F _viewer viewer viewer.exe\n"));
}

TEST(GuideTest, BashCompletesCommands) {
    const std::wstring script = tools::completionScript(kWithCommands, L"bash");
    EXPECT_THAT(script, HasSubstr(L"compgen -W 'one two --help --version' -- \"$current\""));
    EXPECT_THAT(script, HasSubstr(L"    two)\n        words='--help'\n        ;;\n"));
}

TEST(GuideTest, PowerShellCompletesOptionsAndCommands) {
    const std::wstring simple = tools::completionScript(kSimple, L"powershell");
    EXPECT_THAT(simple, HasSubstr(L"-CommandName viewer, viewer.exe "));
    EXPECT_THAT(simple, HasSubstr(L"        '' = @(\n            , @('--decode', 'text''s bytes')\n"));
    EXPECT_THAT(simple, Not(HasSubstr(L"CommandElements")));
    const std::wstring commands = tools::completionScript(kWithCommands, L"powershell");
    EXPECT_THAT(
        commands,
        HasSubstr(L"        '' = @(\n            , @('one', 'the first')\n            , @('two', 'the second')\n"
                  L"            , @('--help', 'show the help text')\n"
                  L"            , @('--version', 'show the version')\n        )\n"));
    EXPECT_THAT(commands,
                HasSubstr(L"        'two' = @(\n            , @('--help', 'show the help text')\n        )\n"));
    EXPECT_THAT(commands, HasSubstr(L"CommandElements"));
}

TEST(GuideTest, UnknownShellIsAUsageError) {
    EXPECT_THROW((void)tools::completionScript(kSimple, L"fish"), tools::UsageError);
    EXPECT_THROW((void)tools::completionScript(kSimple, L""), tools::UsageError);
}

}  // namespace
