/// \file
/// vorelconv: the library's conversions on the command line. The first argument is the command.

#include <span>
#include <string>
#include <vector>

#include "Command.h"
#include "support/Console.h"
#include "support/Guide.h"
#include "support/Tool.h"

namespace conv {

namespace {

constexpr std::wstring_view kProgram = L"vorelconv";

constexpr const Command& (*kCommands[])() = {
    base64Command, daylightCommand, hexCommand,  urlCommand,   utf16Command, codePageCommand, integerCommand,
    doubleCommand, booleanCommand,  listCommand, rangeCommand, sortCommand,  compareCommand,  versionCommand,
};

constexpr std::wstring_view kSummary = L"convert files and streams with the vorelCore library";

constexpr std::wstring_view kDetails =
    L"The input is a file, or standard input if no file is given. --text converts a text given on\n"
    L"the command line. The output is standard output, or the file given with --output. That file\n"
    L"is replaced only if the conversion succeeds. If it is a link, the target is replaced.\n"
    L"Text is UTF-8. Commands that read lines drop a byte-order mark at the start. Commands convert\n"
    L"files of any size in blocks; only sort and list --join collect all lines first.\n"
    L"\n"
    L"Exit codes: 0 success; 1 bad input, a failure, or a false comparison; 2 invalid command line.\n";

std::wstring nameOf(const Command& command) {
    return std::wstring(command.syntax.command.substr(kProgram.size() + 1));
}

std::wstring overview() {
    std::vector<std::pair<std::wstring, std::wstring>> rows;
    for (const auto command : kCommands) {
        rows.emplace_back(nameOf(command()), command().syntax.summary);
    }
    return std::wstring(kProgram) + L": " + std::wstring(kSummary) +
           L"\n\n"
           L"Usage: vorelconv <command> [options] [input]\n"
           L"       vorelconv <command> --help\n"
           L"       vorelconv --version\n"
           L"       vorelconv --completion bash | powershell\n"
           L"       vorelconv --manual\n"
           L"\n"
           L"Commands:\n" +
           tools::columns(rows) + L"\n" + std::wstring(kDetails);
}

/// The output of --completion and --manual; empty for other arguments.
std::wstring guideText(std::span<const std::wstring> arguments) {
    std::vector<tools::Syntax> commands;
    for (const auto command : kCommands) {
        commands.push_back(command().syntax);
    }
    const tools::Guide guide = {.program = kProgram, .summary = kSummary, .commands = commands, .details = kDetails};
    if (arguments.front() == L"--manual") {
        return tools::manualPage(guide);
    }
    if (arguments.front() == L"--completion") {
        return tools::completionScript(guide, arguments.size() > 1 ? arguments[1] : L"");
    }
    return {};
}

int run(std::span<const std::wstring> arguments) {
    if (arguments.empty()) {
        throw tools::UsageError(L"missing command");
    }
    const std::wstring& first = arguments.front();
    if (first == L"--help" || first == L"-h") {
        tools::writeOutput(overview());
        return tools::kDone;
    }
    if (first == L"--version") {
        tools::writeOutput(tools::versionText(kProgram));
        return tools::kDone;
    }
    if (const std::wstring text = guideText(arguments); !text.empty()) {
        tools::writeOutput(text);
        return tools::kDone;
    }
    for (const auto each : kCommands) {
        const Command& command = each();
        if (nameOf(command) == first) {
            const tools::Arguments parsed = tools::parse(command.syntax, arguments.subspan(1));
            if (parsed.has(L"help")) {
                tools::writeOutput(tools::helpText(command.syntax));
                return tools::kDone;
            }
            return command.run(parsed);
        }
    }
    throw tools::UsageError(L"unknown command: \"" + first + L"\"");
}

}  // namespace

}  // namespace conv

int wmain(int count, wchar_t** arguments) {
    return tools::run(conv::kProgram, [&] {
        const std::vector<std::wstring> given(arguments + 1, arguments + count);
        return conv::run(given);
    });
}
