/// \file
/// The stack protector, and the guard value that it stores on the stack. In every configuration, this file is compiled
/// with -fstack-protector-strong. Release builds of the library use the same option for most of its sources.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

extern "C" std::uintptr_t __stack_chk_guard;  // NOLINT: the compiler's name

namespace {

constexpr int kStackBufferOverrun = static_cast<int>(0xC0000409);

volatile std::size_t tooMany = 64;

[[gnu::noinline]] void writePastABuffer() {
    char text[8];
    char* volatile start = text;
    for (std::size_t unit = 0; unit < tooMany; ++unit) {
        start[unit] = 'x';
    }
}

TEST(StackGuard, OverrunEndsTheProcessWithStatusStackBufferOverrun) {
    EXPECT_EXIT(writePastABuffer(), testing::ExitedWithCode(kStackBufferOverrun), "");
}

TEST(StackGuard, ValueIsSetAtLoadAndItsLowByteIsZero) {
    EXPECT_NE(__stack_chk_guard, 0x2B992DDFA232F300u);  // the initial value, in StackGuard.cpp
    EXPECT_NE(__stack_chk_guard, 0u);
    EXPECT_EQ(__stack_chk_guard & 0xFF, 0u);
}

void printGuardAndExit() {
    (void)std::fprintf(stderr, "guard %llx.\n", static_cast<unsigned long long>(__stack_chk_guard));
    (void)std::fflush(stderr);
    std::_Exit(0);
}

TEST(StackGuard, ValueDiffersBetweenProcesses) {
    char own[32];
    (void)std::snprintf(own, sizeof own, "guard %llx.", static_cast<unsigned long long>(__stack_chk_guard));
    const auto isAnother = testing::Truly([&own](const std::string& output) {
        return output.find("guard ") != std::string::npos && output.find(own) == std::string::npos;
    });
    EXPECT_EXIT(printGuardAndExit(), testing::ExitedWithCode(0), isAnother);
}

}  // namespace
