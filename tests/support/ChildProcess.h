/// \file
/// Programs that a test starts. They are in the folder of the test program. Most of them are built from
/// tests/children; the others are tools and test programs.
///
///     test::ChildProcess child(L"never_configured", {L"first line"});
///     ASSERT_TRUE(child.wait());
///     EXPECT_EQ(child.exitCode(), 0u);
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "support/Handle.h"
#include "support/NamedEvent.h"

namespace test {

/// How a child is started.
struct ChildOptions {
    std::wstring directory;  ///< the current directory of the child; if empty, the directory of the test
    /// Whether the child inherits the inheritable handles of the test. If a standard stream is set, it always does.
    bool inheritHandles = false;
    // The standard streams of the child; the handles must be inheritable. If all are null, the child uses the
    // streams of the test. If at least one is set, the child does not have the streams whose handles are null.
    HANDLE input = nullptr;
    HANDLE output = nullptr;
    HANDLE error = nullptr;
    HANDLE token = nullptr;  ///< the primary token of the child; if null, the token of the test
};

/// A running program. The destructor terminates it if it still runs.
class ChildProcess {
public:
    /// Starts `program` (without ".exe") from the folder of the test program.
    /// \throws std::runtime_error if the program cannot be started.
    explicit ChildProcess(const std::wstring& program, const std::vector<std::wstring>& arguments = {},
                          const ChildOptions& options = {});
    ~ChildProcess();

    ChildProcess(ChildProcess&&) noexcept = default;
    ChildProcess& operator=(ChildProcess&&) = delete;

    /// Waits until the program exits. Returns false if the program still runs after `limitMs`.
    [[nodiscard]] bool wait(DWORD limitMs = kGenerousMs) const;

    /// Terminates the program if it still runs, and waits up to `kGenerousMs` until it has ended.
    void terminate();

    /// The exit code; nullopt while the program runs.
    [[nodiscard]] std::optional<DWORD> exitCode() const;

    [[nodiscard]] DWORD processId() const { return m_processId; }
    [[nodiscard]] HANDLE handle() const { return m_process.get(); }

private:
    Handle m_process;
    DWORD m_processId = 0;
};

/// Runs a program until it exits, and returns its exit code. A program that still runs after `kGenerousMs` is
/// terminated, and the result is nullopt.
/// \throws std::runtime_error if the program cannot be started.
std::optional<DWORD> runChild(const std::wstring& program, const std::vector<std::wstring>& arguments = {},
                              const ChildOptions& options = {});

/// The folder of the test program, with a trailing backslash.
std::wstring programFolder();

}  // namespace test
