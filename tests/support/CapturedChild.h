/// \file
/// Runs a program and captures its output.
///
///     const test::Captured hex = test::capture(L"vorelconv", {L"hex"}, "A");
///     EXPECT_EQ(hex.output, "41");
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/ChildProcess.h"

namespace test {

/// The exit code and the output of a program.
struct Captured {
    /// Nullopt if the program still ran `kGenerousMs` after it closed its output. The program is then terminated.
    std::optional<DWORD> exitCode;
    std::string output;
    std::string error;
};

/// Runs a program from the folder of the test program until it exits, with `input` as its standard input. The standard
/// streams in `options` are ignored.
/// \throws std::runtime_error if a pipe cannot be created or inherited, or if the program cannot be started.
Captured capture(const std::wstring& program, const std::vector<std::wstring>& arguments, std::string_view input = {},
                 ChildOptions options = {});

}  // namespace test
