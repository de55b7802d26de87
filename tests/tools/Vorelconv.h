/// \file
/// Runs vorelconv and checks its output.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CapturedChild.h"

namespace test {

using Words = std::vector<std::wstring>;

constexpr DWORD kDone = 0;
constexpr DWORD kFailed = 1;
constexpr DWORD kUsageError = 2;

inline Captured vorelconv(const Words& arguments, std::string_view input = {}) {
    return capture(L"vorelconv", arguments, input);
}

/// A run that succeeds.
struct Conversion {
    const char* why;
    Words arguments;
    std::string input;
    std::string output;
};

inline void expectConversion(const Conversion& conversion) {
    SCOPED_TRACE(conversion.why);
    const Captured run = vorelconv(conversion.arguments, conversion.input);
    EXPECT_EQ(run.output, conversion.output);
    EXPECT_EQ(run.error, "");
    EXPECT_EQ(run.exitCode, kDone);
}

/// A run with invalid input. `message` is the expected message, without the names of the program and the input.
struct BadConversion {
    Words arguments;
    std::string input;
    std::string message;
};

inline void expectBadInput(const BadConversion& conversion) {
    SCOPED_TRACE(conversion.message);
    const Captured run = vorelconv(conversion.arguments, conversion.input);
    EXPECT_THAT(run.error, ::testing::StartsWith("vorelconv: standard input: " + conversion.message + "\n"));
    EXPECT_EQ(run.exitCode, kFailed);
}

}  // namespace test
