/// \file
/// The commands of vorelconv.
#pragma once

#include "support/CommandLine.h"

namespace conv {

struct Command {
    tools::Syntax syntax;

    /// Runs the command and returns the exit code.
    int (*run)(const tools::Arguments& arguments);
};

/// \name The commands. Each command is in the file with its name; sort, compare and version are in CompareCommands.cpp
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

/// \name Options and the operand that are shared by the commands whose input is a file or a text
/// \{
constexpr tools::Option kDecodeOption = {L"decode", L'd', {}, L"decode instead of encode"};
constexpr tools::Option kTextOption = {L"text", L't', L"text", L"convert this text instead of a file"};
constexpr tools::Option kOutputOption = {L"output", L'o', L"file",
                                         L"write to this file; it is replaced only if the conversion succeeds"};
constexpr std::wstring_view kInputOperand = L"[input]";
/// \}

}  // namespace conv
