/// \file
/// The commands of vorelconv: what each takes, and what it does.
#pragma once

#include "support/CommandLine.h"

namespace conv {

struct Command {
    tools::Syntax syntax;

    /// Does the work and returns the exit code.
    int (*run)(const tools::Arguments& arguments);
};

/// \name One for each command, in the file of its name
/// \{
const Command& base64Command();
const Command& daylightCommand();
const Command& hexCommand();
const Command& urlCommand();
const Command& utf16Command();
const Command& codePageCommand();
const Command& integerCommand();
const Command& doubleCommand();
const Command& booleanCommand();
const Command& listCommand();
const Command& rangeCommand();
const Command& sortCommand();
const Command& compareCommand();
const Command& versionCommand();
/// \}

/// \name What all commands that convert a stream have in common
/// \{
constexpr tools::Option kDecodeOption = {L"decode", L'd', {}, L"convert back"};
constexpr tools::Option kTextOption = {L"text", L't', L"text", L"convert this text instead of a file"};
constexpr tools::Option kOutputOption = {L"output", L'o', L"file",
                                         L"write to this file; it is replaced when the conversion has succeeded"};
constexpr std::wstring_view kInputOperand = L"[input]";
/// \}

}  // namespace conv
