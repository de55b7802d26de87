#include "support/Guide.h"

#include <algorithm>
#include <cwctype>
#include <utility>
#include <vector>

#include "support/Tool.h"

namespace tools {

namespace {

constexpr Option kHelp = {L"help", L'h', {}, L"show the help text"};
constexpr std::wstring_view kFileValue = L"file";

/// The options of a command, --help included.
std::vector<Option> optionsOf(const Syntax& command) {
    std::vector<Option> options(command.options.begin(), command.options.end());
    options.push_back(kHelp);
    return options;
}

bool hasCommands(const Guide& guide) {
    return guide.commands.size() != 1 || guide.commands.front().command != guide.program;
}

/// "base64" for "vorelconv base64"; empty for a program without commands.
std::wstring_view nameOf(const Guide& guide, const Syntax& command) {
    return command.command.substr(std::min(command.command.size(), guide.program.size() + 1));
}

// ---- Manual page ----------------------------------------------------------------------------------------------------

/// Escapes the characters that the formatter of manual pages would interpret: backslashes, hyphens, and a period or an
/// apostrophe at the start of a line.
std::wstring roff(std::wstring_view text) {
    std::wstring out;
    bool begins = true;
    for (const wchar_t c : text) {
        if (begins && (c == L'.' || c == L'\'')) {
            out += L"\\&";
        }
        begins = c == L'\n';
        if (c == L'\\') {
            out += L"\\e";
        } else if (c == L'-') {
            out += L"\\-";
        } else {
            out += c;
        }
    }
    return out;
}

void appendSyntax(std::wstring& out, const Syntax& command) {
    out += L"\\fB" + roff(command.command) + L"\\fR [options]";
    out += command.operands.empty() ? L"\n" : L" " + roff(command.operands) + L"\n";
}

void appendOptions(std::wstring& out, const Syntax& command) {
    for (const Option& option : optionsOf(command)) {
        out += L".TP\n";
        if (option.letter) {
            out += std::wstring(L"\\fB\\-") + option.letter + L"\\fR, ";
        }
        out += L"\\fB\\-\\-" + roff(option.name) + L"\\fR";
        out += option.value.empty() ? L"\n" : L" \\fI" + roff(option.value) + L"\\fR\n";
        out += roff(option.help) + L"\n";
    }
}

/// Appends a text without changing its line breaks, because the text may contain tables.
void appendText(std::wstring& out, std::wstring_view text) {
    if (!text.empty()) {
        out += L".nf\n" + roff(text) + L"\n.fi\n";
    }
}

// ---- Completion -----------------------------------------------------------------------------------------------------

/// The spellings of all options that `isChosen` accepts, such as "--output -o", with `separator` between them.
template <class IsChosen>
std::wstring spellings(const Syntax& command, std::wstring_view separator, IsChosen&& isChosen) {
    std::wstring out;
    for (const Option& option : optionsOf(command)) {
        if (!isChosen(option)) {
            continue;
        }
        out.append(out.empty() ? L"" : separator).append(L"--").append(option.name);
        if (option.letter) {
            out.append(separator).append(L"-") += option.letter;
        }
    }
    return out;
}

std::wstring longNames(const Syntax& command) {
    std::wstring out;
    for (const Option& option : optionsOf(command)) {
        out.append(out.empty() ? L"--" : L" --").append(option.name);
    }
    return out;
}

/// The part of the bash function that completes one command. It suggests files after an option whose value is a file,
/// nothing after an option with another value, and options or files at all other places.
std::wstring bashCommand(const Syntax& command, const std::wstring& indent) {
    const std::wstring files = spellings(command, L"|", [](const Option& each) { return each.value == kFileValue; });
    const std::wstring values =
        spellings(command, L"|", [](const Option& each) { return !each.value.empty() && each.value != kFileValue; });
    std::wstring out;
    if (!values.empty()) {
        out += indent + L"case $previous in " + values + L") return ;; esac\n";
    }
    if (!files.empty()) {
        out += indent + L"case $previous in " + files + L") words= ;; *) words='" + longNames(command) + L"' ;; esac\n";
    } else {
        out += indent + L"words='" + longNames(command) + L"'\n";
    }
    return out;
}

std::wstring bashScript(const Guide& guide) {
    const std::wstring program(guide.program);
    std::wstring out = L"# Completion for bash: source this file, or put it into the folder of completions.\n_" +
                       program +
                       L"() {\n"
                       L"    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} words=\n"
                       L"    COMPREPLY=()\n";
    if (!hasCommands(guide)) {
        out += bashCommand(guide.commands.front(), L"    ");
    } else {
        out += L"    if ((COMP_CWORD == 1)); then\n        COMPREPLY=($(compgen -W '";
        for (const Syntax& command : guide.commands) {
            out.append(nameOf(guide, command)) += L' ';
        }
        out += L"--help --version' -- \"$current\"))\n        return\n    fi\n    case ${COMP_WORDS[1]} in\n";
        for (const Syntax& command : guide.commands) {
            out.append(L"    ").append(nameOf(guide, command)).append(L")\n");
            out += bashCommand(command, L"        ") + L"        ;;\n";
        }
        out += L"    esac\n";
    }
    return out +
           L"    if [[ $current == -* ]]; then\n"
           L"        COMPREPLY=($(compgen -W \"$words\" -- \"$current\"))\n"
           L"    else\n"
           L"        compopt -o filenames\n"
           L"        COMPREPLY=($(compgen -f -- \"$current\"))\n"
           L"    fi\n"
           L"}\n"
           L"complete -F _" +
           program + L" " + program + L" " + program + L".exe\n";
}

/// A string literal of PowerShell: the text in single quotes. Single quotes within the text are doubled.
std::wstring powerShellText(std::wstring_view text) {
    std::wstring out = L"'";
    for (const wchar_t c : text) {
        out.append(c == L'\'' ? 2 : 1, c);
    }
    return out + L"'";
}

/// A word that the script completes, and its description.
std::wstring powerShellEntry(std::wstring_view word, std::wstring_view description) {
    return L"            , @(" + powerShellText(word) + L", " + powerShellText(description) + L")\n";
}

std::wstring powerShellScript(const Guide& guide) {
    const std::wstring program(guide.program);
    std::wstring out = L"# Completion for PowerShell: add this to the profile, or run it.\n"
                       L"Register-ArgumentCompleter -Native -CommandName " +
                       program + L", " + program +
                       L".exe -ScriptBlock {\n"
                       L"    param($word, $ast, $position)\n"
                       L"    $known = @{\n";
    if (hasCommands(guide)) {
        out += L"        '' = @(\n";
        for (const Syntax& command : guide.commands) {
            out += powerShellEntry(nameOf(guide, command), command.summary);
        }
        out += powerShellEntry(L"--help", kHelp.help) + powerShellEntry(L"--version", L"show the version");
        out += L"        )\n";
    }
    for (const Syntax& command : guide.commands) {
        out += L"        " + powerShellText(nameOf(guide, command)) + L" = @(\n";
        for (const Option& option : optionsOf(command)) {
            out += powerShellEntry(L"--" + std::wstring(option.name), option.help);
        }
        out += L"        )\n";
    }
    out += L"    }\n";
    out += hasCommands(guide) ? L"    $elements = @($ast.CommandElements | ForEach-Object { \"$_\" })\n"
                                L"    $command = ''\n"
                                L"    if ($elements.Count -gt 2 -or ($elements.Count -eq 2 -and $word -eq '')) {\n"
                                L"        $command = $elements[1]\n"
                                L"    }\n"
                              : L"    $command = ''\n";
    return out +
           L"    @($known[$command]) | Where-Object { $_ -and $_[0] -like \"$word*\" } | ForEach-Object {\n"
           L"        [System.Management.Automation.CompletionResult]::new($_[0], $_[0], 'ParameterValue', $_[1])\n"
           L"    }\n"
           L"}\n";
}

}  // namespace

std::wstring manualPage(const Guide& guide) {
    std::wstring title(guide.program);
    std::transform(title.begin(), title.end(), title.begin(), [](wchar_t c) { return std::towupper(c); });
    std::wstring version = versionText(guide.program);
    version.pop_back();
    std::wstring out = L".TH " + title + L" 1 \"\" \"" + version + L"\"\n.SH NAME\n" + std::wstring(guide.program) +
                       L" \\- " + roff(guide.summary) + L"\n.SH SYNOPSIS\n";
    for (const Syntax& command : guide.commands) {
        out += &command == guide.commands.data() ? L"" : L".br\n";
        appendSyntax(out, command);
    }
    if (!hasCommands(guide)) {
        out += L".SH OPTIONS\n";
        appendOptions(out, guide.commands.front());
        out += L".SH DESCRIPTION\n";
        appendText(out, guide.commands.front().details);
        return out;
    }
    out += L".SH DESCRIPTION\n";
    appendText(out, guide.details);
    out += L".SH COMMANDS\n";
    for (const Syntax& command : guide.commands) {
        out += L".SS " + roff(command.command) + L"\n" + roff(command.summary) + L".\n";
        appendOptions(out, command);
        out += L".PP\n";
        appendText(out, command.details);
    }
    return out;
}

std::wstring completionScript(const Guide& guide, std::wstring_view shell) {
    if (shell == L"bash") {
        return bashScript(guide);
    }
    if (shell == L"powershell") {
        return powerShellScript(guide);
    }
    throw UsageError(L"--completion \"" + std::wstring(shell) + L"\": expected bash or powershell");
}

}  // namespace tools
