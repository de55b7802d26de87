/// \file
/// A manual page and completion scripts, made of the tables that describe the command line (CommandLine.h).
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "support/CommandLine.h"

namespace tools {

/// What a program can do. Everything that it refers to must outlive it.
struct Guide {
    std::wstring_view program;
    std::wstring_view summary;         ///< one line, no full stop
    std::span<const Syntax> commands;  ///< of a program without commands: one, with the name of the program
    std::wstring_view details{};       ///< of a program with commands: a text for all of them
};

/// The manual page, in the format of man(7).
std::wstring manualPage(const Guide& guide);

/// A script that completes commands, options and names of files.
/// \throws UsageError unless `shell` is "bash" or "powershell".
std::wstring completionScript(const Guide& guide, std::wstring_view shell);

}  // namespace tools
