/// \file
/// A manual page and completion scripts, generated from the tables that describe the command line (CommandLine.h).
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "support/CommandLine.h"

namespace tools {

/// The description of a program. Everything that it refers to must outlive it.
struct Guide {
    std::wstring_view program;
    std::wstring_view summary;         ///< one line, no full stop
    std::span<const Syntax> commands;  ///< a program without commands has one, with the program's name
    std::wstring_view details{};       ///< for a program with commands: a text about all of them
};

/// The manual page, in the format of man(7).
std::wstring manualPage(const Guide& guide);

/// A script that completes commands, options and names of files.
/// \throws UsageError unless `shell` is "bash" or "powershell".
std::wstring completionScript(const Guide& guide, std::wstring_view shell);

}  // namespace tools
