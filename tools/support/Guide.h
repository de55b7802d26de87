/// \file
/// A manual page and completion scripts, generated from the tables that describe the command line (CommandLine.h).
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "support/CommandLine.h"

namespace tools {

/// The description of a program. The texts and tables that it refers to must outlive it.
struct Guide {
    std::wstring_view program;
    std::wstring_view summary;         ///< one line, no full stop
    std::span<const Syntax> commands;  ///< one element with the program's name, if the program has no commands
    std::wstring_view details{};       ///< a text about all commands; not used if the program has no commands
};

/// The manual page, in the format of man(7).
std::wstring manualPage(const Guide& guide);

/// A script that completes commands, options and names of files.
/// \throws UsageError unless `shell` is "bash" or "powershell".
std::wstring completionScript(const Guide& guide, std::wstring_view shell);

}  // namespace tools
