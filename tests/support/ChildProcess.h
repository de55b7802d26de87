/// \file
/// Programs that a test starts: those of tests/children, which stand beside the test program.
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
    std::wstring directory;       ///< its current directory; empty: that of the test
    bool inheritHandles = false;  ///< whether it gets the handles of the test that can be inherited
    HANDLE input = nullptr;   ///< its standard streams, which have to be inheritable; null: those of the test, or, if
    HANDLE output = nullptr;  ///< another one is given, none
    HANDLE error = nullptr;
};

/// A running program. One that still runs at the end of the object is ended.
class ChildProcess {
public:
    /// Starts `program` (without ".exe") of the test program's folder.
    /// \throws std::runtime_error when it cannot be started.
    explicit ChildProcess(const std::wstring& program, const std::vector<std::wstring>& arguments = {},
                          const ChildOptions& options = {});
    ~ChildProcess();

    ChildProcess(ChildProcess&&) noexcept = default;
    ChildProcess& operator=(ChildProcess&&) = delete;

    /// Waits for the end of the program; false when the limit has passed.
    [[nodiscard]] bool wait(DWORD limitMs = kGenerousMs) const;

    /// Ends the program wherever it stands, and waits until it is gone.
    void terminate();

    /// Empty while the program runs.
    [[nodiscard]] std::optional<DWORD> exitCode() const;

    [[nodiscard]] DWORD processId() const { return m_processId; }
    [[nodiscard]] HANDLE handle() const { return m_process.get(); }

private:
    Handle m_process;
    DWORD m_processId = 0;
};

/// Runs a program to its end. Empty when it did not end within the limit, and was ended.
std::optional<DWORD> runChild(const std::wstring& program, const std::vector<std::wstring>& arguments = {},
                              const ChildOptions& options = {});

/// The folder of the test program, with a backslash at its end.
std::wstring programFolder();

}  // namespace test
