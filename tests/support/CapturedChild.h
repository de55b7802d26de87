/// \file
/// Programs that a test starts for what they write.
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

/// What a program left behind.
struct Captured {
    std::optional<DWORD> exitCode;  ///< empty: it did not end in time
    std::string output;
    std::string error;
};

/// Runs a program of the test program's folder to its end, with `input` as its standard input.
/// \throws std::runtime_error when it cannot be started.
Captured capture(const std::wstring& program, const std::vector<std::wstring>& arguments, std::string_view input = {},
                 ChildOptions options = {});

}  // namespace test
